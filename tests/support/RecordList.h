#ifndef PREDSEL_TESTS_SUPPORT_RECORDLIST_H
#define PREDSEL_TESTS_SUPPORT_RECORDLIST_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/Records.h"

namespace testsupport {

/// Records from a list of rows, each of its own length.
class RecordList : public MCCommon::MultiPassRecordIter {
 public:
    explicit RecordList(const std::vector<std::vector<double>>& rows) {
        for (const auto& row : rows) fvRecords.emplace_back(row);
    }

    bool HasMore() override { return fNext < fvRecords.size(); }
    const MCCommon::Record* Next() override {
        return fNext == fNullAt || !HasMore() ? nullptr : &fvRecords[fNext++];
    }
    std::int32_t GetFailReason() const override {
        return fNext < fvRecords.size() ? MCCommon::kITER_SUCCESS : MCCommon::kITER_NO_VALID_CASE;
    }
    std::int32_t NewPass() override {
        fNext = 0;
        return GetFailReason();
    }

    /// Next gives null in place of this row, though HasMore promised it.
    void BreakAt(std::size_t row) { fNullAt = row; }
    std::size_t Taken() const { return fNext; }

 private:
    std::vector<MCCommon::Record> fvRecords;
    std::size_t fNext = 0;
    std::size_t fNullAt = static_cast<std::size_t>(-1);
};

}  // namespace testsupport

#endif  // PREDSEL_TESTS_SUPPORT_RECORDLIST_H

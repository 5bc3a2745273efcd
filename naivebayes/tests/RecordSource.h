#ifndef PREDSEL_NAIVEBAYES_TESTS_RECORDSOURCE_H
#define PREDSEL_NAIVEBAYES_TESTS_RECORDSOURCE_H

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "host/Records.h"

/// Records given as vectors; an absent one is delivered as null.
class RecordSource : public MCCommon::MultiPassRecordIter {
 public:
    using Records = std::vector<std::optional<std::vector<double>>>;

    explicit RecordSource(const Records& records) {
        for (const auto& values : records) {
            fvRecords.push_back(values ? std::optional<MCCommon::Record>(*values) : std::nullopt);
        }
    }

    bool HasMore() override { return fPosition < fvRecords.size(); }
    const MCCommon::Record* Next() override {
        const auto& record = fvRecords[fPosition++];
        return record ? &*record : nullptr;
    }
    std::int32_t GetFailReason() const override {
        return fPosition < fvRecords.size() ? MCCommon::kITER_SUCCESS
                                            : MCCommon::kITER_NO_VALID_CASE;
    }
    std::int32_t NewPass() override {
        fPosition = 0;
        return GetFailReason();
    }
    /// Records taken so far.
    std::size_t Taken() const { return fPosition; }

 private:
    std::vector<std::optional<MCCommon::Record>> fvRecords;
    std::size_t fPosition = 0;
};

inline std::vector<double> Values(const MCCommon::Record& record) {
    std::vector<double> values;
    for (std::int32_t i = 0; i < record.Size(); ++i) values.push_back(record[i]);
    return values;
}

/// What an iterator still delivers.
inline std::vector<std::vector<double>> Drain(MCCommon::RecordIterator& records) {
    std::vector<std::vector<double>> all;
    while (records.HasMore()) all.push_back(Values(*records.Next()));
    return all;
}

#endif  // PREDSEL_NAIVEBAYES_TESTS_RECORDSOURCE_H

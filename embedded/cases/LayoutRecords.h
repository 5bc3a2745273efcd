#ifndef PREDSEL_EMBEDDED_CASES_LAYOUTRECORDS_H
#define PREDSEL_EMBEDDED_CASES_LAYOUTRECORDS_H

#include <cstdint>
#include <optional>
#include <vector>

#include "embedded/cases/AdapterState.h"
#include "embedded/cases/RecordLayout.h"
#include "embedded/data/ColumnBuilder.h"
#include "embedded/data/DataError.h"
#include "embedded/data/DataSet.h"
#include "host/Records.h"

namespace embedded {

struct LayoutRecordsOptions {
    /// Record columns whose variable the data need not have, or may have in another type:
    /// delivered as missing.
    std::vector<std::int32_t> fvMayLack;
    /// Every case is delivered, with the weight 1, whatever the data say of weights.
    bool fbIgnoreWeights = false;
};

/// Records of a data set by the layout of an earlier run, without a command. A categorical value
/// arrives as the code that its value has in the layout; a value that the layout does not know as
/// -1, and is counted. Values that the layout or the data declare user-missing are missing unless
/// the layout includes them. Cases whose weight is missing or not above 0 are left out.
class LayoutRecords final : public MCCommon::MultiPassRecordIter {
 public:
    /// Borrows the data. Begins the first pass. Throws DataError of kind kContent, which names all
    /// variables that the data lack or hold in another type. A variable without any valid value
    /// serves for every type.
    LayoutRecords(const DataSet& data, const RecordLayout& layout,
                  const LayoutRecordsOptions& options = {});

    bool HasMore() override { return fRow < fpData->RowCount(); }
    const MCCommon::Record* Next() override;
    std::int32_t GetFailReason() const override;
    std::int32_t NewPass() override;

    /// The data set's row, from 0, of the record that Next gave last.
    std::int64_t Row() const { return fRowGiven; }
    /// By record column: records of this pass, as far as Next has given them, whose value the
    /// layout does not know, and the row of the first.
    const std::vector<Oddity>& UnknownValues() const { return fvUnknown; }

 private:
    void MoveOn();

    const DataSet* fpData;
    std::vector<std::optional<RecordColumn>> fvColumns;  // none where the data lack the variable
    std::vector<double> fvAbsent;                        // what is delivered then
    std::int32_t fWeightColumn;                          // -1 also when weights are ignored
    std::vector<Oddity> fvUnknown;
    MCCommon::Record fRecord;
    std::int64_t fRow = -1;       // the case that Next will give
    std::int64_t fRowGiven = -1;  // the case that it gave
    std::int32_t fChunk = -1;     // the open one
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CASES_LAYOUTRECORDS_H

#ifndef PREDSEL_EMBEDDED_CASES_LAYOUTRECORDS_H
#define PREDSEL_EMBEDDED_CASES_LAYOUTRECORDS_H

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "embedded/cases/AdapterState.h"
#include "embedded/cases/RecordLayout.h"
#include "embedded/cases/TaskExecutor.h"
#include "embedded/data/ColumnBuilder.h"
#include "embedded/data/DataError.h"
#include "embedded/data/DataSet.h"
#include "host/Blocks.h"
#include "host/Records.h"

namespace embedded {

struct LayoutRecordsOptions {
    /// Record columns whose variable the data need not have, or may have in another type:
    /// delivered as missing.
    std::vector<std::int32_t> fvMayLack;
    /// Every case is delivered, with the weight 1, whatever the data say of weights.
    bool fbIgnoreWeights = false;
    /// For blocks. Below 1: as many as are available.
    std::int32_t fThreads = 1;
};

/// Records of a data set by the layout of an earlier run, without a command. A categorical value
/// arrives as the code that its value has in the layout; a value that the layout does not know as
/// -1, and is counted. Values that the layout or the data declare user-missing are missing unless
/// the layout includes them. Cases whose weight is missing or not above 0 are left out. Blocks end
/// where the rows that are open together do: with the chunk, or a part of it where the columns are
/// many and not held as they are delivered.
class LayoutRecords final : public MCCommon::MultiPassRecordIter,
                            public MCCommon::RecordBlockSource {
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
    const MCCommon::RecordBlock* NextBlock(std::int32_t maxRows) override;
    MCCommon::BlockExecutor* GetExecutor() override;

    /// The data set's row, from 0, of the record that Next gave last.
    std::int64_t Row() const { return fRowGiven; }
    /// The same of the records that NextBlock gave last. Valid as long as these.
    std::span<const std::int64_t> BlockRows() const { return fvBlockRows; }
    /// By record column: records of this pass, as far as they have been given, whose value the
    /// layout does not know, and the row of the first.
    const std::vector<Oddity>& UnknownValues() const { return fvUnknown; }

 private:
    // What a column of the records is made from.
    struct Source {
        std::optional<RecordColumn> fMade;  // none where the data lack the variable
        bool fbCategorical = false;
        double fAbsent = 0.0;  // what is delivered then
        std::vector<double> fvAbsentNumbers;
        std::vector<std::uint8_t> fvAbsentEntries;

        MCCommon::BlockColumn Absent(std::size_t rows);
    };
    bool HasWeight(std::int64_t row);
    void MoveOn();
    void SettleOpenRows();
    void OpenRowsOf(std::int64_t row);

    const DataSet* fpData;
    TaskExecutor fExecutor;
    std::vector<Source> fvSources;
    std::int32_t fWeightColumn;            // -1 also when weights are ignored
    std::optional<RecordColumn> fWeights;  // of its own, as it is read ahead of the records
    std::int32_t fWeightChunk = -1;        // its open one
    std::vector<Oddity> fvUnknown;
    MCCommon::Record fRecord;
    MCCommon::RecordBlock fBlock;
    std::vector<std::int64_t> fvBlockRows;
    std::int64_t fRow = -1;               // the case that is next
    std::int64_t fRowGiven = -1;          // the case that Next gave
    std::int32_t fOpenRows = kChunkRows;  // opened together
    std::int64_t fOpenRow = -1;           // the first of the open ones
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CASES_LAYOUTRECORDS_H

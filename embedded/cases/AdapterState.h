#ifndef PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H
#define PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "embedded/cases/RecordLayout.h"
#include "embedded/cases/TaskExecutor.h"
#include "embedded/data/DataSet.h"
#include "host/BlockWriting.h"
#include "host/Blocks.h"
#include "host/CaseDelivery.h"

namespace embedded {

/// User-missing numbers.
struct MissingNumbers {
    explicit MissingNumbers(const KoltMissingSpec& spec);
    bool Contain(double value) const {
        if (value >= fLow && value <= fHigh) return true;
        return std::find(fvDiscrete.begin(), fvDiscrete.end(), value) != fvDiscrete.end();
    }

    double fLow = std::numeric_limits<double>::infinity();  // without a range nothing is in it
    double fHigh = -std::numeric_limits<double>::infinity();
    std::vector<double> fvDiscrete;
};

/// Some rows of the open chunk, in ascending order.
class ChunkRows {
 public:
    /// Cases of the data set, all of what is open from firstRow on, at least one. Borrowed.
    ChunkRows(std::span<const std::int64_t> cases, std::int64_t firstRow)
        : fCases(cases), fFirstRow(firstRow) {}

    std::size_t Count() const { return fCases.size(); }
    /// Rows of the data set.
    std::span<const std::int64_t> Cases() const { return fCases; }
    /// Row of what is open.
    std::size_t operator[](std::size_t place) const {
        return static_cast<std::size_t>(fCases[place] - fFirstRow);
    }
    /// True when none is left out between the first and the last.
    bool IsDense() const {
        return fCases.back() - fCases.front() + 1 == static_cast<std::int64_t>(fCases.size());
    }

 private:
    std::span<const std::int64_t> fCases;
    std::int64_t fFirstRow;
};

/// How one column of a record is made from a column of the data set. Holds what the first pass
/// learns of it.
class RecordColumn {
 public:
    /// All borrowed from the data set.
    RecordColumn(const DataSet& data, std::int32_t variable, bool isCategorical,
                 bool userMissExclude);
    /// The same with the codes of a layout. Its user-missing values count as well.
    RecordColumn(const DataSet& data, std::int32_t variable, const RecordLayoutColumn& layout,
                 bool userMissExclude);

    std::int32_t Variable() const { return fVariable; }
    bool IsCategorical() const { return fbCategorical; }
    /// Opens a chunk or a part of one; the values below are those of its rows, counted from its
    /// first one. A block of the chunk that was open before stays valid until a further one is
    /// opened.
    void Open(const ChunkPart& part);
    void Open(std::int32_t chunk) { Open(ChunkPart{chunk}); }
    /// Bytes that a row takes in the buffers of two Opens.
    std::int64_t OpenBytes() const {
        return std::int64_t{2} * fpColumn->BufferBytes(fbCategorical);
    }
    /// The record's value for a row of the open chunk: a code or -1, a number or the missing value.
    double Value(std::int32_t row) const { return fbCategorical ? CodeValue(row) : Number(row); }
    /// True when the row of the open chunk has a value, but none that has a code.
    bool IsUnknown(std::int32_t row) const { return fbSomeUnknown && Code(row) == kUnknown; }

    /// The column of a block of these rows of the open chunk. Valid until the next one, and as long
    /// as the data set.
    MCCommon::BlockColumn Block(const ChunkRows& rows);
    /// As Learn, of all rows of a block.
    void LearnBlock(const MCCommon::BlockColumn& block);
    /// The cases among these rows for which IsUnknown is true.
    std::vector<std::int64_t> UnknownCases(const ChunkRows& rows) const;

    /// Drops the categories that none of these rows of the data set holds; codes close up.
    /// rows has one bit a row of the data set.
    void KeepCategoriesOf(const std::vector<bool>& rows);
    /// Tells that a record with this value has been delivered.
    void Learn(double value);
    /// From now on categories that no record had are unknown.
    void EndLearning();
    /// Numbers the categories that records had by value, from 0 without gaps. REQUIRES:
    /// EndLearning.
    void Reorder(bool ascending);

    std::int32_t MetCategories() const { return fMetCount; }
    double Min() const { return fMin; }
    double Max() const { return fMax; }
    /// False for a code that does not exist.
    bool Decode(std::int32_t code, KoltObs& valueOut) const;
    /// The values behind all codes.
    std::vector<KoltObs> Values() const;

 private:
    // In the place of a code. Either is delivered as -1.
    static constexpr std::int32_t kMissing = -1;
    static constexpr std::int32_t kUnknown = -2;

    std::int32_t Code(std::int32_t row) const;
    double CodeValue(std::int32_t row) const { return std::max(kMissing, Code(row)); }
    double Number(std::int32_t row) const;
    void AssignCodes(const std::vector<bool>& keep);
    void SettleEntries();
    template <class Entry>
    MCCommon::BlockColumn CodeBlock(const ChunkRows& rows, Cells<Entry>& buffer) const;
    template <class Entry>
    Cells<Entry>& Room();
    MCCommon::BlockColumn NumberBlock(const ChunkRows& rows);
    void HoldAgainst(const KoltMissingSpec& spec);

    const Column* fpColumn;
    std::int32_t fVariable;
    bool fbCategorical;
    std::vector<std::int32_t> fvCodes;       // by the column's category: the record's code
    std::vector<std::int32_t> fvCategories;  // by the record's code: the column's category
    std::uint32_t fEntryEnd = 1;             // one more than there are codes
    std::vector<bool> fvMet;                 // by the record's code
    std::int32_t fMetCount = 0;
    bool fbSomeUnknown = false;
    std::vector<MissingNumbers> fvMissing;  // what a number has to be held against
    double fMin = MCMV::gMissingValue;
    double fMax = MCMV::gMissingValue;
    CodeSpan fChunkCodes;  // of the open chunk
    std::span<const double> fChunkNumbers;
    ColumnBuffer fBuffers[2];  // of the open chunk and the one before
    std::size_t fBuffer = 0;   // the open chunk's

    // Blocks. What a row of the open chunk holds, 0 where it is missing and its category + 1
    // elsewhere, has its entry of a block here; empty until it is asked for.
    std::vector<std::uint32_t> fvEntries;
    bool fbSameEntries = false;  // every entry stands at its own place
    CodeVector fBlockCodes;
    Cells<double> fvBlockNumbers;
};

/// The case that a pass stands on, as the procedure may read and write it, and the cases of the
/// block that was given last.
class CaseReader final : public KOLT_InputCaseIterator, public BlockColumnWriter {
 public:
    explicit CaseReader(const DataSet& data) : fData(data) {}
    void MoveTo(std::int64_t row) { fRow = row; }
    std::int64_t Row() const { return fRow; }
    /// Cases of a block. Borrowed.
    void SetBlock(std::span<const std::int64_t> cases) { fBlock = cases; }

    double GetNumericValue(std::int32_t index) const override;
    void SetColumnValue(std::int32_t column, double value) override;
    void SetColumnValue(std::int32_t column, const std::string& text, std::int32_t type) override;
    void SetColumnValues(std::int32_t column, std::span<const double> values) override;
    void SetColumnTexts(std::int32_t column, std::span<const std::int32_t> places,
                        const std::vector<std::string>& texts, std::int32_t type) override;

 private:
    struct OpenNumbers {
        std::int64_t fChunk = -1;
        std::span<const double> fNumbers;
        ColumnBuffer fBuffer;
    };
    const DataSet& fData;
    std::int64_t fRow = -1;
    std::span<const std::int64_t> fBlock;
    mutable std::map<std::int32_t, OpenNumbers> fNumbers;  // by variable that has been asked for
};

}  // namespace embedded

/// The adapter's insides: shared by all iterators over it. The session knows it while it lives.
struct UAAdapterState {
    UAAdapterState(const UAVarValidSpecs& specs, const embedded::DataSet& data);
    ~UAAdapterState();
    UAAdapterState(const UAAdapterState&) = delete;
    UAAdapterState& operator=(const UAAdapterState&) = delete;

    const embedded::RecordColumn& ColumnOf(std::int32_t variable) const;
    embedded::RecordColumn& ColumnOf(std::int32_t variable);
    /// True when the row's weight makes it a valid case.
    bool IsValidCase(std::int64_t row) const {
        return fvValidCases.empty() || fvValidCases[static_cast<std::size_t>(row)];
    }
    /// True when at least one row is a valid case.
    bool HasValidCase() const;

    /// The reader of the pass that is under way, null between passes.
    embedded::CaseReader* Reader() { return fpUnderWay == nullptr ? nullptr : &fReader; }
    /// A pass begins for its owner; one that is under way comes to its end.
    void BeginPass(const void* owner);
    /// Ends the pass that is under way.
    void EndPass();
    /// The same, wherever it stands; a pass that has read no case has not been one.
    void BreakOffPass();
    /// Tells the session of a case whose value in this record column is unknown.
    void NoteUnknown(std::size_t column, std::int64_t row);
    /// How many rows are opened together: a chunk, or where columns are not held as they are
    /// delivered and there are many, an even part of one.
    std::int32_t OpenRows() const { return fOpenRows; }
    /// Opens OpenRows() rows of all columns, from a multiple of it on.
    void Open(std::int64_t firstRow);
    /// Makes the block of these rows of the open chunk, and learns of it or notes what is unknown,
    /// as the pass demands.
    void MakeBlock(const embedded::ChunkRows& rows, MCCommon::RecordBlock& block);

    embedded::RecordLayout Layout() const;

    const embedded::DataSet& fData;
    std::vector<embedded::RecordColumn> fvColumns;  // by record column
    std::vector<bool> fvValidCases;    // by row; empty when there is no weight: all are valid
    std::int32_t fPassesEnded = 0;     // the first one learns categories and ranges
    std::int64_t fRowEnd;              // behind the last row that passes read
    std::int64_t fCasesRead = 0;       // of the pass that is under way, else of the last one
    const void* fpUnderWay = nullptr;  // whose pass it is
    bool fbLastPass = false;
    embedded::TaskExecutor fExecutor;

 private:
    void PrepareCategories(const UAVarValidSpecs& specs);
    void SettleOpenRows();
    void RunByColumn(std::int64_t rows, const std::function<void(std::size_t)>& task);

    embedded::CaseReader fReader;
    std::int32_t fOpenRows = embedded::kChunkRows;
    std::unordered_map<std::int32_t, std::size_t> fColumnOf;  // the first one of each variable
    std::int32_t fWeightColumn;
    bool fbUserMissExclude;
    std::vector<std::vector<bool>> fvUnknownRows;  // by record column; empty until one is met
};

#endif  // PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H

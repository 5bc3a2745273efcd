#ifndef PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H
#define PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H

#include <cstdint>
#include <vector>

#include "embedded/cases/RecordLayout.h"
#include "embedded/data/DataSet.h"
#include "host/CaseDelivery.h"

namespace embedded {

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
    /// Opens a chunk; the values below are those of its rows.
    void Open(std::int32_t chunk);
    /// The record's value for a row of the open chunk: a code or -1, a number or the missing value.
    double Value(std::int32_t row) const { return fbCategorical ? CodeValue(row) : Number(row); }
    /// True when the row of the open chunk has a value, but none that has a code.
    bool IsUnknown(std::int32_t row) const {
        return fbSomeUnknown && fChunk.IsValid(row) &&
               fvCodes[fChunkCodes[static_cast<std::size_t>(row)]] == kUnknown;
    }

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

    double CodeValue(std::int32_t row) const;
    double Number(std::int32_t row) const;
    void AssignCodes(const std::vector<bool>& keep);
    void HoldAgainst(const KoltMissingSpec& spec);

    const Column* fpColumn;
    std::int32_t fVariable;
    bool fbCategorical;
    std::vector<std::int32_t> fvCodes;       // by the column's category: the record's code
    std::vector<std::int32_t> fvCategories;  // by the record's code: the column's category
    std::vector<bool> fvMet;                 // by the record's code
    std::int32_t fMetCount = 0;
    bool fbSomeUnknown = false;
    std::vector<KoltMissingSpec> fvMissing;  // what a number has to be held against
    double fMin = MCMV::gMissingValue;
    double fMax = MCMV::gMissingValue;
    ColumnChunk fChunk;
    CodeSpan fChunkCodes;
};

/// The case that a pass stands on, as the procedure may read and write it.
class CaseReader final : public KOLT_InputCaseIterator {
 public:
    explicit CaseReader(const DataSet& data) : fData(data) {}
    void MoveTo(std::int64_t row) { fRow = row; }
    std::int64_t Row() const { return fRow; }

    double GetNumericValue(std::int32_t index) const override;
    void SetColumnValue(std::int32_t column, double value) override;
    void SetColumnValue(std::int32_t column, const std::string& text, std::int32_t type) override;

 private:
    const DataSet& fData;
    std::int64_t fRow = -1;
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

    embedded::RecordLayout Layout() const;

    const embedded::DataSet& fData;
    std::vector<embedded::RecordColumn> fvColumns;  // by record column
    std::vector<bool> fvValidCases;    // by row; empty when there is no weight: all are valid
    std::int32_t fPassesEnded = 0;     // the first one learns categories and ranges
    std::int64_t fRowEnd;              // behind the last row that passes read
    std::int64_t fCasesRead = 0;       // of the pass that is under way, else of the last one
    const void* fpUnderWay = nullptr;  // whose pass it is
    bool fbLastPass = false;

 private:
    embedded::CaseReader fReader;
    std::int32_t fWeightColumn;
    bool fbUserMissExclude;
    std::vector<std::vector<bool>> fvUnknownRows;  // by record column; empty until one is met
};

#endif  // PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H

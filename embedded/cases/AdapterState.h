#ifndef PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H
#define PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H

#include <cstdint>
#include <vector>

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

    std::int32_t Variable() const { return fVariable; }
    bool IsCategorical() const { return fbCategorical; }
    /// Opens a chunk; the values below are those of its rows.
    void Open(std::int32_t chunk);
    /// The record's value for a row of the open chunk: a code or -1, a number or the missing value.
    double Value(std::int32_t row) const { return fbCategorical ? CodeValue(row) : Number(row); }

    /// Drops the categories that none of these rows of the data set holds; codes close up.
    /// rows has one bit a row of the data set.
    void KeepCategoriesOf(const std::vector<bool>& rows);
    /// Tells that a record with this value has been delivered.
    void Learn(double value);

    std::int32_t MetCategories() const { return fMetCount; }
    double Min() const { return fMin; }
    double Max() const { return fMax; }
    /// False for a code that does not exist.
    bool Decode(std::int32_t code, KoltObs& valueOut) const;

 private:
    double CodeValue(std::int32_t row) const;
    double Number(std::int32_t row) const;
    void AssignCodes(const std::vector<bool>& keep);

    const Column* fpColumn;
    std::int32_t fVariable;
    bool fbCategorical;
    std::vector<std::int32_t> fvCodes;       // by the column's category: the record's code or -1
    std::vector<std::int32_t> fvCategories;  // by the record's code: the column's category
    std::vector<bool> fvMet;                 // by the record's code
    std::int32_t fMetCount = 0;
    bool fbUserMissing = false;  // a number has to be held against fMissing
    KoltMissingSpec fMissing;
    double fMin = MCMV::gMissingValue;
    double fMax = MCMV::gMissingValue;
    ColumnChunk fChunk;
    CodeSpan fChunkCodes;
};

}  // namespace embedded

/// The adapter's insides: shared by all iterators over it.
struct UAAdapterState {
    UAAdapterState(const UAVarValidSpecs& specs, const embedded::DataSet& data);

    const embedded::RecordColumn& ColumnOf(std::int32_t variable) const;
    /// True when the row's weight makes it a valid case.
    bool IsValidCase(std::int64_t row) const {
        return fvValidCases.empty() || fvValidCases[static_cast<std::size_t>(row)];
    }

    /// True when at least one row is a valid case.
    bool HasValidCase() const;

    const embedded::DataSet& fData;
    std::vector<embedded::RecordColumn> fvColumns;  // by record column
    std::vector<bool> fvValidCases;  // by row; empty when there is no weight: all are valid
    std::int32_t fPassesEnded = 0;   // the first one learns categories and ranges
};

#endif  // PREDSEL_EMBEDDED_CASES_ADAPTERSTATE_H

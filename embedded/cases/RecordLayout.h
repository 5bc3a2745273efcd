#ifndef PREDSEL_EMBEDDED_CASES_RECORDLAYOUT_H
#define PREDSEL_EMBEDDED_CASES_RECORDLAYOUT_H

#include <cstdint>
#include <string>
#include <vector>

#include "embedded/data/DataSet.h"
#include "host/Data.h"

namespace embedded {

/// How one column of an engine's records is made from a variable.
struct RecordLayoutColumn {
    std::string fName;  // of the variable
    ColumnKind fKind = ColumnKind::kNumber;
    std::int32_t fType = 0;  // as KOLT_Variable::GetType
    bool fbCategorical = false;
    std::vector<KoltObs> fvValues;  // a categorical column's, by code; no two are equal
    KoltMissingSpec fMissing;       // the variable's user-missing values
};

/// What the records of a run were: all that is needed to make records of the same meaning from
/// other data. Columns stand in the order of the record.
struct RecordLayout {
    std::vector<RecordLayoutColumn> fvColumns;
    std::int32_t fWeightColumn = -1;  // -1 when cases have no weight
    bool fbUserMissExclude = true;    // false: user-missing values arrive as values
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CASES_RECORDLAYOUT_H

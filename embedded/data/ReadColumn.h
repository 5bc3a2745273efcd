#ifndef PREDSEL_EMBEDDED_DATA_READCOLUMN_H
#define PREDSEL_EMBEDDED_DATA_READCOLUMN_H

#include <cstdint>

#include "embedded/data/ColumnBuilder.h"
#include "embedded/data/DataSet.h"

namespace embedded {

/// 2^53: from here on a double may stand for a whole number that is none.
inline constexpr double kFirstInexactInteger = 9007199254740992.0;

/// A column as it came out of a file, and what was odd about its values.
struct ReadColumn {
    Column fColumn;
    ColumnKind fKind = ColumnKind::kNumber;
    std::int32_t fDecimals = -1;  // digits behind the decimal mark as written; -1 not known
    bool fbOrdered = false;       // the source says that its categories have an order
    Oddity fInfinite{};
    Oddity fInexact{};  // integers of kFirstInexactInteger or more, either sign
    Oddity fUndecodable{};
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_READCOLUMN_H

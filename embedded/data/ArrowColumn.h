#ifndef PREDSEL_EMBEDDED_DATA_ARROWCOLUMN_H
#define PREDSEL_EMBEDDED_DATA_ARROWCOLUMN_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "embedded/data/ArrowCData.h"
#include "embedded/data/ReadColumn.h"

namespace embedded {

/// Turns arrays of one Arrow type into a column. Numbers, booleans and decimals become numbers,
/// dates days, timestamps and times seconds, everything of bytes strings; a dictionary is what its
/// values are. A null in the array or in the dictionary is system-missing.
class ArrowColumn {
 public:
    /// Null for a type that is not supported: nested types, intervals, unions, run ends. Texts that
    /// are system-missing in a string column are borrowed.
    static std::unique_ptr<ArrowColumn> Make(const ArrowSchema& schema,
                                             const TextSet* missingTexts);
    virtual ~ArrowColumn() = default;

    /// Appends `length` elements from the array's logical element `first` on, both counted without
    /// the array's own offset. isRow tells whether an element's row is there at all (the parent
    /// struct may have nulls); it may be empty. Throws std::invalid_argument when the array cannot
    /// be of the type.
    virtual void Append(const ArrowArray& array, std::int64_t first, std::int64_t length,
                        const std::function<bool(std::int64_t)>& isRow) = 0;
    virtual ReadColumn Finish(std::shared_ptr<ColumnMemory> memory) && = 0;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_ARROWCOLUMN_H

#ifndef PREDSEL_EMBEDDED_DATA_RECORDSCANNER_H
#define PREDSEL_EMBEDDED_DATA_RECORDSCANNER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/TextDialect.h"

namespace embedded {

/// Walks over the records of a delimited text and counts fields and lines; takes no cell apart.
/// A record ends at a line feed, a carriage return or both, outside quotes. A quote counts at the
/// start of a field only; within quotes it is doubled; what follows the closing quote up to the
/// delimiter belongs to the field. Lines without a character are no records.
class RecordScanner {
 public:
    /// Borrows the text.
    RecordScanner(std::string_view text, TextDialect dialect) : fText(text), fDialect(dialect) {}

    /// Goes to the next record, false when there is none.
    bool Next();

    // Of the record at hand:
    std::string_view Record() const { return fText.substr(fBegin, fEnd - fBegin); }
    std::int32_t FieldCount() const { return fFieldCount; }
    /// The line of the text on which it starts, from 1.
    std::int64_t Line() const { return fLine; }
    /// True when the text ends within quotes.
    bool IsUnterminated() const { return fbUnterminated; }
    /// Where the next record may start, and its line.
    std::size_t Position() const { return fPosition; }
    std::int64_t NextLine() const { return fNextLine; }

 private:
    std::string_view fText;
    TextDialect fDialect;
    std::size_t fPosition = 0;
    std::size_t fBegin = 0;
    std::size_t fEnd = 0;
    std::int64_t fLine = 0;
    std::int64_t fNextLine = 1;
    std::int32_t fFieldCount = 0;
    bool fbUnterminated = false;
};

/// The cells of one record, without their quotes.
std::vector<std::string> SplitRecord(std::string_view record, TextDialect dialect);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_RECORDSCANNER_H

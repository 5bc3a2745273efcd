#ifndef PREDSEL_EMBEDDED_DATA_TEXTDIALECT_H
#define PREDSEL_EMBEDDED_DATA_TEXTDIALECT_H

namespace embedded {

/// How a delimited text is cut into cells.
struct TextDialect {
    char fDelimiter = ',';
    char fQuote = '"';  // '\0' when quotes have no meaning
    bool operator==(const TextDialect&) const = default;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_TEXTDIALECT_H

#ifndef PREDSEL_EMBEDDED_DATA_CELLTEXT_H
#define PREDSEL_EMBEDDED_DATA_CELLTEXT_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace embedded {

/// A text without the blanks and tabs around it.
std::string_view TrimBlanks(std::string_view text);
/// A text without the blanks at its end. Texts that differ in nothing else are the same value: a
/// string variable has room for its longest text, and blanks fill what another leaves.
std::string_view TrimTrailingBlanks(std::string_view text);

/// A number as it was written.
struct NumberText {
    double fValue = 0;           // NaN or an infinity if it was written as such or is too large
    bool fbInteger = false;      // neither decimal mark nor exponent
    bool fbMark = false;         // has the decimal mark
    std::int32_t fDecimals = 0;  // digits behind the decimal mark
};

/// Reads a number: optional sign, digits with at most one decimal mark, optional exponent; or
/// "nan", "inf", "infinity" in any case. No blanks, no hexadecimal, no grouped digits. Exactly
/// rounded, whatever the locale (fast_float: Lemire 2021, "Number parsing at a gigabyte per
/// second").
std::optional<NumberText> ParseNumber(std::string_view text, char decimalMark);

/// A date YYYY-MM-DD of the Gregorian calendar as days since 1970-01-01.
std::optional<double> ParseDate(std::string_view text);

/// HH:MM with optional :SS and decimals (behind a point or a comma), below 24 hours, as seconds
/// since midnight.
std::optional<double> ParseTime(std::string_view text);

/// A date, a T or a blank, a time and optionally Z or a shift +HH:MM, +HHMM or +HH, as seconds
/// since 1970-01-01 UTC. Without a shift the time is taken as UTC.
std::optional<double> ParseDateTime(std::string_view text);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_CELLTEXT_H

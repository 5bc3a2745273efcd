#include "embedded/data/CellText.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

namespace embedded {
namespace {

bool IsDigit(char letter) { return letter >= '0' && letter <= '9'; }

bool EqualsAnyCase(std::string_view text, std::string_view lower) {
    return text.size() == lower.size() &&
           std::equal(text.begin(), text.end(), lower.begin(), [](char a, char b) {
               return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
           });
}

// Exactly `count` digits at the start of text, which they are taken from.
std::optional<int> TakeDigits(std::string_view& text, std::size_t count) {
    if (text.size() < count) {
        return std::nullopt;
    }
    int number = 0;
    for (std::size_t at = 0; at < count; ++at) {
        if (!IsDigit(text[at])) {
            return std::nullopt;
        }
        number = 10 * number + (text[at] - '0');
    }
    text.remove_prefix(count);
    return number;
}

bool TakeLetter(std::string_view& text, char letter) {
    if (text.empty() || text.front() != letter) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

std::optional<double> TakeDate(std::string_view& text) {
    const auto year = TakeDigits(text, 4);
    if (!year || !TakeLetter(text, '-')) {
        return std::nullopt;
    }
    const auto month = TakeDigits(text, 2);
    if (!month || !TakeLetter(text, '-')) {
        return std::nullopt;
    }
    const auto day = TakeDigits(text, 2);
    if (!day) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(*year),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok()) {
        return std::nullopt;
    }
    return static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count());
}

std::optional<double> TakeTime(std::string_view& text) {
    const auto hours = TakeDigits(text, 2);
    if (!hours || *hours > 23 || !TakeLetter(text, ':')) {
        return std::nullopt;
    }
    const auto minutes = TakeDigits(text, 2);
    if (!minutes || *minutes > 59) {
        return std::nullopt;
    }
    const double start = 3600.0 * *hours + 60.0 * *minutes;
    if (!TakeLetter(text, ':')) {
        return start;
    }
    const auto seconds = TakeDigits(text, 2);
    if (!seconds || *seconds > 59) {
        return std::nullopt;
    }
    if (text.size() < 2 || (text[0] != '.' && text[0] != ',') || !IsDigit(text[1])) {
        return start + *seconds;
    }
    std::size_t length = 1;
    while (length < text.size() && IsDigit(text[length])) {
        ++length;
    }
    // The decimals alone: whole seconds are exact, and the sum is rounded once.
    double decimals = 0;
    double unit = 1;
    for (std::size_t at = 1; at < std::min<std::size_t>(length, 16); ++at) {
        decimals = 10 * decimals + (text[at] - '0');
        unit *= 10;
    }
    text.remove_prefix(length);
    return start + *seconds + decimals / unit;
}

// The shift from UTC in seconds, 0 for Z and for nothing; text must be used up.
std::optional<double> TakeShift(std::string_view text) {
    if (text.empty() || text == "Z" || text == "z") {
        return 0;
    }
    const bool negative = text.front() == '-';
    if (!negative && text.front() != '+') {
        return std::nullopt;
    }
    text.remove_prefix(1);
    const auto hours = TakeDigits(text, 2);
    if (!hours || *hours > 23) {
        return std::nullopt;
    }
    int minutes = 0;
    if (!text.empty()) {
        TakeLetter(text, ':');
        const auto digits = TakeDigits(text, 2);
        if (!digits || *digits > 59 || !text.empty()) {
            return std::nullopt;
        }
        minutes = *digits;
    }
    const double shift = 3600.0 * *hours + 60.0 * minutes;
    return negative ? -shift : shift;
}

}  // namespace

std::string_view TrimBlanks(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

std::string_view TrimTrailingBlanks(std::string_view text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::optional<NumberText> ParseNumber(std::string_view text, char decimalMark) {
    if (text.empty()) {
        return std::nullopt;
    }
    const bool negative = text.front() == '-';
    std::string_view digits = text;
    if (negative || text.front() == '+') {
        digits.remove_prefix(1);
    }
    if (digits.empty()) {
        return std::nullopt;
    }
    NumberText number;
    if (!IsDigit(digits.front()) && digits.front() != decimalMark) {
        if (EqualsAnyCase(digits, "nan")) {
            number.fValue = std::numeric_limits<double>::quiet_NaN();
            return number;
        }
        if (EqualsAnyCase(digits, "inf") || EqualsAnyCase(digits, "infinity")) {
            number.fValue = (negative ? -1 : 1) * std::numeric_limits<double>::infinity();
            return number;
        }
        return std::nullopt;
    }
    const char* const end = digits.data() + digits.size();
    const auto result = fast_float::from_chars_advanced(
        digits.data(), end, number.fValue,
        fast_float::parse_options{fast_float::chars_format::general, decimalMark});
    if (result.ptr != end ||
        (result.ec != std::errc() && result.ec != std::errc::result_out_of_range)) {
        return std::nullopt;
    }
    if (negative) {
        number.fValue = -number.fValue;
    }
    number.fbInteger = true;
    for (const char letter : digits) {
        if (letter == decimalMark) {
            number.fbMark = true;
            number.fbInteger = false;
        } else if (!IsDigit(letter)) {
            number.fbInteger = false;
            break;  // the exponent
        } else if (number.fbMark) {
            ++number.fDecimals;
        }
    }
    return number;
}

std::optional<double> ParseDate(std::string_view text) {
    const auto date = TakeDate(text);
    return text.empty() ? date : std::nullopt;
}

std::optional<double> ParseTime(std::string_view text) {
    const auto time = TakeTime(text);
    return text.empty() ? time : std::nullopt;
}

std::optional<double> ParseDateTime(std::string_view text) {
    const auto date = TakeDate(text);
    if (!date || !(TakeLetter(text, 'T') || TakeLetter(text, ' '))) {
        return std::nullopt;
    }
    const auto time = TakeTime(text);
    if (!time) {
        return std::nullopt;
    }
    const auto shift = TakeShift(text);
    if (!shift) {
        return std::nullopt;
    }
    return *date * 86400 - *shift + *time;
}

}  // namespace embedded

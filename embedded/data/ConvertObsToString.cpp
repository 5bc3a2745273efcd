#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "embedded/data/CellText.h"
#include "host/Data.h"
#include "host/Records.h"

namespace {

// Shortest text that reads back as the same number.
std::string Shortest(double value) {
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), end};
}

// With the format's decimals; all digits when those would show another number, so that different
// values never look alike.
std::string Number(double value, std::int32_t decimals) {
    if (decimals >= 0 && std::abs(value) < 1e15) {
        std::array<char, 64> buffer{};
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                       std::chars_format::fixed, std::min(decimals, 16))
                             .ptr;
        double shown = 0;
        std::from_chars(buffer.data(), end, shown);
        if (shown == value) {
            return {buffer.data(), end};
        }
    }
    return Shortest(value);
}

std::string TwoDigits(std::int64_t number) {
    std::string text = std::to_string(number);
    return text.size() < 2 ? "0" + text : text;
}

// hh:mm:ss with up to six decimals, of seconds below a day.
std::string Clock(double seconds) {
    // Whole microseconds first: a fraction that rounds up must carry.
    const auto micros = static_cast<std::int64_t>(std::llround(seconds * 1e6));
    const std::int64_t whole = micros / 1000000;
    std::string text =
        TwoDigits(whole / 3600) + ":" + TwoDigits(whole / 60 % 60) + ":" + TwoDigits(whole % 60);
    if (micros % 1000000 != 0) {
        std::string decimals = std::to_string(1000000 + micros % 1000000).substr(1);
        decimals.erase(decimals.find_last_not_of('0') + 1);
        text += "." + decimals;
    }
    return text;
}

constexpr double kSecondsPerDay = 86400;
constexpr double kMostDays = 2932896;   // 9999-12-31
constexpr double kLeastDays = -719528;  // 0000-01-01

std::string Date(double days) {
    const std::chrono::year_month_day date{
        std::chrono::sys_days{std::chrono::days{static_cast<std::int32_t>(days)}}};
    std::string year = std::to_string(static_cast<int>(date.year()));
    year.insert(0, 4 - std::min<std::size_t>(4, year.size()), '0');
    return year + "-" + TwoDigits(static_cast<unsigned>(date.month())) + "-" +
           TwoDigits(static_cast<unsigned>(date.day()));
}

bool IsShownAsDate(double days) { return days >= kLeastDays && days <= kMostDays; }

}  // namespace

std::string ConvertObsToString(const KoltObs& value, const KoltFormat& format, bool trim) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return trim ? std::string(embedded::TrimTrailingBlanks(*text)) : *text;
    }
    const double number = std::get<double>(value);
    if (number == MCMV::gMissingValue) {
        return ".";
    }
    // Values without a calendar form (a part of a day in a date, the year 10000) show as numbers.
    switch (format.fCode) {
        case kFormatDate:
            return IsShownAsDate(number) && number == std::floor(number) ? Date(number)
                                                                         : Shortest(number);
        case kFormatDateTime: {
            const double rounded = std::round(number * 1e6) / 1e6;
            const double days = std::floor(rounded / kSecondsPerDay);
            return IsShownAsDate(days) ? Date(days) + " " + Clock(rounded - days * kSecondsPerDay)
                                       : Shortest(number);
        }
        case kFormatTime:
            return number >= 0 && number < kSecondsPerDay ? Clock(number) : Shortest(number);
        default:
            return Number(number, format.fDecimals);
    }
}

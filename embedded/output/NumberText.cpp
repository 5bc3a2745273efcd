#include "embedded/output/NumberText.h"

#include <fmt/format.h>

#include <cmath>

#include "host/Records.h"

namespace embedded {

namespace {

// Beyond these a fixed number of decimals says less than the exponent does.
constexpr double kLargestFixed = 1e10;
constexpr double kLargestFixedCount = 1e15;
constexpr double kSmallestFixed = 0.0005;

std::string Scientific(double value) { return fmt::format("{:.3e}", value); }

/// Fixed decimals; what rounds to zero has no sign.
std::string Fixed(double value, int decimals) {
    std::string text = fmt::format("{:.{}f}", value, decimals);
    if (text.front() == '-' && text.find_first_not_of("-0.") == std::string::npos) text.erase(0, 1);
    return text;
}

std::string SignificanceText(double value) {
    if (value < 0.001) return "<.001";
    std::string text = Fixed(value, 3);
    if (text.front() == '0') text.erase(0, 1);
    return text;
}

}  // namespace

std::string NumberText(double value, BpFormatKind kind, bool decimalCounts) {
    if (value == MCMV::gMissingValue || std::isnan(value)) return {};
    if (std::isinf(value)) return value < 0 ? "-∞" : "∞";
    const double size = std::fabs(value);
    switch (kind) {
        case BpFormatKind::Count:
            if (size >= kLargestFixedCount) return Scientific(value);
            return Fixed(value, decimalCounts ? 2 : 0);
        case BpFormatKind::Percent:
            return size >= kLargestFixed ? Scientific(value) + "%" : Fixed(value, 1) + "%";
        case BpFormatKind::Significance:
            return SignificanceText(value);
        case BpFormatKind::GeneralStat:
        case BpFormatKind::Coefficient:
            break;
    }
    if (size >= kLargestFixed || (size > 0 && size < kSmallestFixed)) return Scientific(value);
    return Fixed(value, 3);
}

}  // namespace embedded

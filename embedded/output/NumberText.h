#ifndef PREDSEL_EMBEDDED_OUTPUT_NUMBERTEXT_H
#define PREDSEL_EMBEDDED_OUTPUT_NUMBERTEXT_H

#include <string>

#include "host/Output.h"

namespace embedded {

/// A number as tables show it. Empty for MCMV::gMissingValue and NaN; never a negative zero.
/// Counts have no decimals, or two when decimalCounts; percents one and a "%"; significances three,
/// no leading zero, "<.001" below that; statistics and coefficients three. Where three decimals
/// would hide a number (below 0.0005) or drown it (1e10 and more; counts from 1e15), it is shown in
/// scientific notation.
std::string NumberText(double value, BpFormatKind kind, bool decimalCounts);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_NUMBERTEXT_H

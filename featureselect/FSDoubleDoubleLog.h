#ifndef PREDSEL_FEATURESELECT_FSDOUBLEDOUBLELOG_H
#define PREDSEL_FEATURESELECT_FSDOUBLEDOUBLELOG_H

#include "featureselect/FSDoubleDouble.h"

// Logarithms to about 31 digits, by additions, products and quotients alone: the bits are the same
// on every machine.

/// log(a / b). REQUIRES: a, b and a / b are above 0 and far from the ends of the range of doubles.
FSDoubleDouble LogOfRatio(const FSDoubleDouble& a, const FSDoubleDouble& b);

/// (1 + s) * atanh(s) - s for a small s, to about 31 digits of its own. With s = (q - 1) / (q + 1)
/// it is (q * log(q) - (q - 1)) / (q + 1), which would cancel next to q = 1.
/// REQUIRES: |s| <= kSmallAtanh.
FSDoubleDouble AtanhExcess(const FSDoubleDouble& s);
inline constexpr double kSmallAtanh = 1.0 / 32.0;

#endif  // PREDSEL_FEATURESELECT_FSDOUBLEDOUBLELOG_H

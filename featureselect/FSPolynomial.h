#ifndef PREDSEL_FEATURESELECT_FSPOLYNOMIAL_H
#define PREDSEL_FEATURESELECT_FSPOLYNOMIAL_H

#include <array>
#include <cstddef>

/// The polynomial with these coefficients, constant term first, at x (Horner's rule).
template <std::size_t N>
constexpr double FSPolynomial(const std::array<double, N>& coefficients, double x) {
    double value = 0.0;
    for (std::size_t i = N; i-- > 0;) value = value * x + coefficients[i];
    return value;
}

#endif  // PREDSEL_FEATURESELECT_FSPOLYNOMIAL_H

#ifndef PREDSEL_FEATURESELECT_FSWEIGHTSUM_H
#define PREDSEL_FEATURESELECT_FSWEIGHTSUM_H

#include <cmath>
#include <cstdint>
#include <memory>

#include "featureselect/FSExactSum.h"

/// A sum of weights without rounding. While all weights are whole it is a double, which holds whole
/// numbers up to 2^53; a fraction, or a sum beyond, makes it an FSExactSum. Reads as the double
/// nearest to it.
class FSWeightSum {
 public:
    FSWeightSum(double weight = 0.0) { *this += weight; }  // implicit: a weight is a sum of one
    FSWeightSum(const FSWeightSum& other) { *this = other; }
    FSWeightSum(FSWeightSum&&) noexcept = default;
    FSWeightSum& operator=(const FSWeightSum& other) {
        if (this == &other) return *this;
        fWhole = other.fWhole;
        fpExact = other.fpExact ? std::make_unique<FSExactSum>(*other.fpExact) : nullptr;
        return *this;
    }
    FSWeightSum& operator=(FSWeightSum&&) noexcept = default;
    ~FSWeightSum() = default;

    /// The nearest double.
    operator double() const { return fpExact ? fpExact->Value() : fWhole; }
    FSExactSum Exact() const { return fpExact ? *fpExact : FSExactSum(fWhole); }
    bool IsWhole() const { return fpExact == nullptr; }

    FSWeightSum& operator+=(double weight) {
        // Of two whole numbers within these bounds the sum is one too, and exact.
        if (fpExact == nullptr && IsSmallWhole(weight) && IsSmallWhole(fWhole + weight)) {
            fWhole += weight;
            return *this;
        }
        Exactly().Add(weight);
        return *this;
    }
    FSWeightSum& operator+=(const FSExactSum& weights) {
        Exactly() += weights;
        return *this;
    }
    FSWeightSum& operator+=(const FSWeightSum& other) {
        if (other.fpExact == nullptr) return *this += other.fWhole;
        return *this += *other.fpExact;
    }
    FSWeightSum& operator-=(const FSWeightSum& other) {
        if (other.fpExact == nullptr) return *this += -other.fWhole;
        Exactly() -= *other.fpExact;
        return *this;
    }
    friend FSWeightSum operator+(FSWeightSum a, const FSWeightSum& b) { return a += b; }
    friend FSWeightSum operator-(FSWeightSum a, const FSWeightSum& b) { return a -= b; }

    /// Saved as the nearest double.
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        double value = self;
        archive.Items(value);
        if constexpr (std::remove_cvref_t<Archive>::kRestores) self = FSWeightSum(value);
    }

 private:
    static bool IsSmallWhole(double weight) {
        constexpr double kBeyond = 9007199254740992.0;
        return std::abs(weight) < kBeyond &&
               weight == static_cast<double>(static_cast<std::int64_t>(weight));
    }
    FSExactSum& Exactly() {
        if (!fpExact) fpExact = std::make_unique<FSExactSum>(fWhole);
        fWhole = 0.0;
        return *fpExact;
    }

    double fWhole = 0.0;
    std::unique_ptr<FSExactSum> fpExact;  // instead of fWhole, where that cannot hold the sum
};

#endif  // PREDSEL_FEATURESELECT_FSWEIGHTSUM_H

#ifndef PREDSEL_FEATURESELECT_TESTS_ACCUMCASES_H
#define PREDSEL_FEATURESELECT_TESTS_ACCUMCASES_H

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "featureselect/IFSPredTargetAccum.h"
#include "host/Records.h"

// Records for the tests of the accumulators, plain reference computations over them, and readers of
// results.

namespace accumcases {

inline constexpr double kMissing = MCMV::gMissingValue;
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Case {
    double fPredictor = 0;  // kMissing goes to AddMissing
    double fTarget = 0;
    double fWeight = 1;

    bool IsValid() const { return fPredictor != kMissing && fWeight > 0.0; }
};

inline void FeedPair(IFSPredTargetAccum& accum, const Case& one) {
    if (one.fPredictor == kMissing) {
        accum.AddMissing(one.fWeight);
    } else {
        accum.AddPair(one.fPredictor, one.fTarget, one.fWeight, true);
    }
}

inline void FeedValue(IFSPredTargetAccum& accum, const Case& one) {
    if (one.fPredictor == kMissing) {
        accum.AddMissing(one.fWeight);
    } else {
        accum.AddValue(one.fPredictor, one.fWeight, true);
    }
}

/// A variable of random cases: categorical with codes -2 and 0 to 4, or normal.
struct Variable {
    bool fbCategorical = true;
    double fMean = 5;
    double fStdDev = 2;
};

/// Some missing predictor values, some weights that count for nothing, and else weights that add
/// exactly. Continuous variables are correlated.
inline std::vector<Case> RandomCases(std::uint32_t seed, std::size_t count,
                                     const Variable& predictor, const Variable& target) {
    std::mt19937 engine(seed);
    std::normal_distribution<double> normal;
    std::discrete_distribution<int> category{1, 4, 3, 2, 4, 2};
    constexpr std::array<double, 8> kWeights{0.25, 0.5, 1.0, 1.0, 1.5, 2.0, 3.0, 0.0};
    std::uniform_int_distribution<std::size_t> weight(0, kWeights.size() - 1);
    std::bernoulli_distribution missing(0.1);
    const auto code = [&](double common) {
        const int drawn = category(engine);
        const int tied = common > 0.5 ? 4 : drawn;  // some association
        return tied == 0 ? -2.0 : tied - 1.0;
    };
    std::vector<Case> cases;
    for (std::size_t i = 0; i < count; ++i) {
        const double common = normal(engine);
        const auto draw = [&](const Variable& variable) {
            if (variable.fbCategorical) return code(common);
            return variable.fMean + variable.fStdDev * (0.8 * common + 0.6 * normal(engine));
        };
        Case one;
        one.fPredictor = draw(predictor);
        one.fTarget = draw(target);
        one.fWeight = kWeights[weight(engine)];
        if (missing(engine)) one.fPredictor = kMissing;
        cases.push_back(one);
    }
    return cases;
}

/// Weighted mean, second moments and cross-product in two passes over the valid cases.
struct TwoPass {
    long double fWeight = 0;
    long double fPredMean = 0;
    long double fTargetMean = 0;
    long double fPredMoment = 0;
    long double fTargetMoment = 0;
    long double fCross = 0;

    explicit TwoPass(const std::vector<Case>& cases) {
        for (const Case& one : cases) {
            if (!one.IsValid()) continue;
            fWeight += one.fWeight;
            fPredMean += static_cast<long double>(one.fWeight) * one.fPredictor;
            fTargetMean += static_cast<long double>(one.fWeight) * one.fTarget;
        }
        fPredMean /= fWeight;
        fTargetMean /= fWeight;
        for (const Case& one : cases) {
            if (!one.IsValid()) continue;
            const long double x = one.fPredictor - fPredMean;
            const long double y = one.fTarget - fTargetMean;
            fPredMoment += one.fWeight * x * x;
            fTargetMoment += one.fWeight * y * y;
            fCross += one.fWeight * x * y;
        }
    }
};

/// The five outputs of ComputeCriterion.
struct Criterion {
    static constexpr double kUntouched = 12345.0;
    double fValue = kUntouched;
    double fTieBreak1 = kUntouched;
    double fTieBreak2 = kUntouched;
    double fExtra1 = kUntouched;
    double fExtra2 = kUntouched;

    bool AllAre(double number) const {
        return fValue == number && fTieBreak1 == number && fTieBreak2 == number &&
               fExtra1 == number && fExtra2 == number;
    }
};

inline Criterion Compute(const IFSPredTargetAccum& accum, std::int32_t criterion) {
    Criterion result;
    accum.ComputeCriterion(criterion, result.fValue, result.fTieBreak1, result.fTieBreak2,
                           result.fExtra1, result.fExtra2);
    return result;
}

/// The result and the four outputs of GetCriterionForDisplay.
struct Displayed {
    bool fbReported = false;
    std::array<double, 4> fValues{12345.0, 12345.0, 12345.0, 12345.0};
};

inline Displayed ForDisplay(const IFSPredTargetAccum& accum, std::int32_t criterion) {
    Displayed result;
    result.fbReported = accum.GetCriterionForDisplay(
        criterion, result.fValues[0], result.fValues[1], result.fValues[2], result.fValues[3]);
    return result;
}

template <class T>
std::string DisplayText(const T& object) {
    std::ostringstream out;
    out.precision(17);
    object.Display(out);
    return out.str();
}

/// The text after a label of the debugging display, up to the end of its line.
template <class T>
std::string Shown(const T& object, const std::string& label) {
    const std::string text = DisplayText(object);
    const std::size_t start = text.find('\n' + label);
    if (start == std::string::npos) throw std::runtime_error("no label " + label);
    const std::size_t value = start + 1 + label.size();
    return text.substr(value, text.find('\n', value) - value);
}

template <class T>
double ShownNumber(const T& object, const std::string& label) {
    return std::stod(Shown(object, label));
}

inline std::vector<std::int32_t> AllReasons(const IFSPredTargetAccum& accum,
                                            const FSSettings& settings) {
    std::vector<std::int32_t> reasons{-7};  // must be emptied
    const std::int32_t count = accum.CheckAllDeletions(settings, reasons);
    EXPECT_EQ(count, static_cast<std::int32_t>(reasons.size()));
    EXPECT_EQ(accum.CheckDeletion(settings), reasons.empty() ? 0 : reasons.front());
    return reasons;
}

}  // namespace accumcases

#endif  // PREDSEL_FEATURESELECT_TESTS_ACCUMCASES_H

#ifndef PREDSEL_FEATURESELECT_FSMOMENTLANES_H
#define PREDSEL_FEATURESELECT_FSMOMENTLANES_H

#include <array>
#include <cstddef>
#include <vector>

#include "featureselect/FSBlockCases.h"

/// Running moments of some continuous predictors at once, a lane each: their recurrences are chains
/// of dependent operations, which a processor can only fill side by side. Every lane does what
/// FSMeanStep says, in its order of operations and for the records in their order, so that the bits
/// are those of one value after the other.
namespace FSMomentLanes {

inline constexpr std::size_t kLanes = 8;

struct alignas(64) Numbers {
    std::array<double, kLanes> fValues{};

    double& operator[](std::size_t lane) { return fValues[lane]; }
    double operator[](std::size_t lane) const { return fValues[lane]; }
};

/// The values of each lane; MCMV::gMissingValue is missing.
using Columns = std::array<const double*, kLanes>;

/// Weight of all records and of those where the lane has no value.
struct Weights {
    Numbers fProcessed;
    Numbers fMissing;
};

/// A predictor on its own.
struct Single {
    Weights fWeights;
    Numbers fMean;
    Numbers fMoment;
};

/// A predictor and a continuous target.
struct Pair {
    Weights fWeights;
    Numbers fPredMean;
    Numbers fPredMoment;
    Numbers fTargetMean;
    Numbers fTargetMoment;
    Numbers fCross;
};

/// A predictor by the classes of a target.
struct ByClass {
    /// Of one class. A weight of 0 says that it has no value yet: the first one then is the mean,
    /// as it stands.
    struct Class {
        Numbers fWeight;
        Numbers fMean;
        Numbers fMoment;
    };
    Weights fWeights;
    Numbers fMean;
    std::vector<Class> fvClasses;
};

/// Instruction sets that the loops are compiled for; all give the same bits.
enum class Form { kPortable, kAvx2, kAvx512 };

/// The best form of this processor.
Form BestForm();
bool IsAvailable(Form form);

// Add the records of a block. REQUIRES: with unit weights, all weights of the lanes are whole.
void Add(Single& lanes, const Columns& columns, const FSBlockCases& cases, Form form = BestForm());
void Add(Pair& lanes, const Columns& columns, const FSBlockCases& cases, Form form = BestForm());
void Add(ByClass& lanes, const Columns& columns, const FSBlockCases& cases, Form form = BestForm());

}  // namespace FSMomentLanes

#endif  // PREDSEL_FEATURESELECT_FSMOMENTLANES_H

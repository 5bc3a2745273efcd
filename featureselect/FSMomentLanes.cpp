#include "featureselect/FSMomentLanes.h"

#include <algorithm>
#include <cstring>

#include "host/Records.h"

#if defined(__x86_64__)
#define FS_X86_FORMS 1
#else
#define FS_X86_FORMS 0
#endif
// Into a form, whose instructions it then has.
#define FS_INLINE inline __attribute__((always_inline))

namespace FSMomentLanes {
namespace {

constexpr std::size_t kTileRows = 64;

/// Some rows of all lanes, row by row.
struct Tile {
    std::array<Numbers, kTileRows> fRows;
    std::size_t fCount = 0;

    FS_INLINE void Load(const Columns& columns, std::size_t first, std::size_t rows) {
        fCount = std::min(kTileRows, rows - first);
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const double* values = columns[lane] + first;
            for (std::size_t row = 0; row < fCount; ++row) fRows[row][lane] = values[row];
        }
    }
};

// As many numbers as a register holds.
using Two = double __attribute__((vector_size(16)));
using Four = double __attribute__((vector_size(32)));
using Eight = double __attribute__((vector_size(64)));

// Numbers of some neighbouring lanes. Never an argument or a result by value: how these are passed
// is not the same for all processors.
template <class Register>
struct Registers {
    using Vector = Register;
    static constexpr std::size_t kWidth = sizeof(Register) / sizeof(double);
    static constexpr std::size_t kParts = kLanes / kWidth;  // that hold all lanes

    FS_INLINE static void Get(const Numbers& numbers, std::size_t part, Vector& vector) {
        std::memcpy(&vector, &numbers.fValues[part * kWidth], sizeof vector);
    }
    FS_INLINE static void Put(const Vector& vector, std::size_t part, Numbers& numbers) {
        std::memcpy(&numbers.fValues[part * kWidth], &vector, sizeof vector);
    }
};

// The operations of FSMeanStep in some lanes. The scale of a unit weight is the new weight.
template <class Vector, bool kUnit>
struct MeanStep {
    FS_INLINE MeanStep(const Vector& before, double weight)
        : fBefore(before), fAfter(before + weight), fShare(weight / fAfter) {
        if constexpr (kUnit) {
            fScale = fAfter;
        } else {
            fScale = fAfter / weight;
        }
    }

    FS_INLINE void Shift(const Vector& values, const Vector& mean, Vector& shift) const {
        shift = (values - mean) * fShare;
    }
    FS_INLINE void AddMoment(const Vector& shift, const Vector& other, Vector& moment) const {
        moment += fScale * shift * fBefore * other;
    }

    Vector fBefore;
    Vector fAfter;
    Vector fShare;
    Vector fScale;
};

/// The weights of some lanes while they change. The valid one is a count of unit weights; else the
/// difference of two sums, which are rounded on their own.
template <class Form, bool kUnit>
struct RunningWeights {
    using Vector = typename Form::Vector;

    FS_INLINE void Load(const Weights& weights, std::size_t part) {
        Form::Get(weights.fProcessed, part, fProcessed);
        Form::Get(weights.fMissing, part, fMissing);
        fValid = fProcessed - fMissing;
    }

    template <class Mask>
    FS_INLINE void Count(const Mask& valid, double weight) {
        if constexpr (kUnit) {
            fValid = valid ? fValid + weight : fValid;
        } else {
            fProcessed += weight;
            fMissing = valid ? fMissing : fMissing + weight;
            fValid = fProcessed - fMissing;
        }
    }

    FS_INLINE void Store(const FSBlockCases& cases, std::size_t part, Weights& weights) {
        if constexpr (kUnit) {
            const double counted = cases.fCounted;
            const Vector before = fProcessed - fMissing;
            fProcessed += counted;
            fMissing += counted - (fValid - before);
        }
        Form::Put(fProcessed, part, weights.fProcessed);
        Form::Put(fMissing, part, weights.fMissing);
    }

    Vector fProcessed;
    Vector fMissing;
    Vector fValid;
};

/// A predictor on its own, some lanes of it.
template <class Form, bool kUnit>
struct RunningSingle {
    using Vector = typename Form::Vector;

    FS_INLINE void Load(const Single& lanes, std::size_t part) {
        fWeights.Load(lanes.fWeights, part);
        Form::Get(lanes.fMean, part, fMean);
        Form::Get(lanes.fMoment, part, fMoment);
    }
    FS_INLINE void Add(const Vector& values, const FSBlockCases&, std::size_t, double weight) {
        const auto valid = values != MCMV::gMissingValue;
        const MeanStep<Vector, kUnit> step(fWeights.fValid, weight);
        Vector shift;
        step.Shift(values, fMean, shift);
        Vector moment = fMoment;
        step.AddMoment(shift, shift, moment);
        fMean = valid ? fMean + shift : fMean;
        fMoment = valid ? moment : fMoment;
        fWeights.Count(valid, weight);
    }
    FS_INLINE void Store(const FSBlockCases& cases, std::size_t part, Single& lanes) {
        fWeights.Store(cases, part, lanes.fWeights);
        Form::Put(fMean, part, lanes.fMean);
        Form::Put(fMoment, part, lanes.fMoment);
    }

    RunningWeights<Form, kUnit> fWeights;
    Vector fMean;
    Vector fMoment;
};

/// A predictor and a continuous target.
template <class Form, bool kUnit>
struct RunningPair {
    using Vector = typename Form::Vector;

    FS_INLINE void Load(const Pair& lanes, std::size_t part) {
        fWeights.Load(lanes.fWeights, part);
        Form::Get(lanes.fPredMean, part, fPredMean);
        Form::Get(lanes.fPredMoment, part, fPredMoment);
        Form::Get(lanes.fTargetMean, part, fTargetMean);
        Form::Get(lanes.fTargetMoment, part, fTargetMoment);
        Form::Get(lanes.fCross, part, fCross);
    }
    FS_INLINE void Add(const Vector& values, const FSBlockCases& cases, std::size_t row,
                       double weight) {
        const auto valid = values != MCMV::gMissingValue;
        const MeanStep<Vector, kUnit> step(fWeights.fValid, weight);
        Vector predShift;
        step.Shift(values, fPredMean, predShift);
        const Vector target = cases.fTargets[row] - Vector{};  // in each of the lanes, sign and all
        Vector targetShift;
        step.Shift(target, fTargetMean, targetShift);
        Vector predMoment = fPredMoment;
        step.AddMoment(predShift, predShift, predMoment);
        Vector targetMoment = fTargetMoment;
        step.AddMoment(targetShift, targetShift, targetMoment);
        Vector cross = fCross;
        step.AddMoment(predShift, targetShift, cross);
        fPredMean = valid ? fPredMean + predShift : fPredMean;
        fPredMoment = valid ? predMoment : fPredMoment;
        fTargetMean = valid ? fTargetMean + targetShift : fTargetMean;
        fTargetMoment = valid ? targetMoment : fTargetMoment;
        fCross = valid ? cross : fCross;
        fWeights.Count(valid, weight);
    }
    FS_INLINE void Store(const FSBlockCases& cases, std::size_t part, Pair& lanes) {
        fWeights.Store(cases, part, lanes.fWeights);
        Form::Put(fPredMean, part, lanes.fPredMean);
        Form::Put(fPredMoment, part, lanes.fPredMoment);
        Form::Put(fTargetMean, part, lanes.fTargetMean);
        Form::Put(fTargetMoment, part, lanes.fTargetMoment);
        Form::Put(fCross, part, lanes.fCross);
    }

    RunningWeights<Form, kUnit> fWeights;
    Vector fPredMean;
    Vector fPredMoment;
    Vector fTargetMean;
    Vector fTargetMoment;
    Vector fCross;
};

/// A predictor by the classes of a target, which stay where they are.
template <class Form, bool kUnit>
struct RunningByClass {
    using Vector = typename Form::Vector;

    FS_INLINE void Load(ByClass& lanes, std::size_t part) {
        fWeights.Load(lanes.fWeights, part);
        Form::Get(lanes.fMean, part, fMean);
        fpClasses = lanes.fvClasses.data();
        fPart = part;
    }
    FS_INLINE void Add(const Vector& values, const FSBlockCases& cases, std::size_t row,
                       double weight) {
        const auto valid = values != MCMV::gMissingValue;
        const MeanStep<Vector, kUnit> step(fWeights.fValid, weight);
        Vector shift;
        step.Shift(values, fMean, shift);
        fMean = valid ? fMean + shift : fMean;
        fWeights.Count(valid, weight);

        ByClass::Class& one = fpClasses[cases.fClasses[row]];
        Vector before;
        Vector mean;
        Vector moment;
        Form::Get(one.fWeight, fPart, before);
        Form::Get(one.fMean, fPart, mean);
        Form::Get(one.fMoment, fPart, moment);
        const MeanStep<Vector, kUnit> classStep(before, weight);
        classStep.Shift(values, mean, shift);
        Vector newMoment = moment;
        classStep.AddMoment(shift, shift, newMoment);
        const auto isFirst = before <= 0.0;
        const Vector newMean = isFirst ? values : mean + shift;
        newMoment = isFirst ? Vector{} : newMoment;
        mean = valid ? newMean : mean;
        moment = valid ? newMoment : moment;
        before = valid ? classStep.fAfter : before;
        Form::Put(mean, fPart, one.fMean);
        Form::Put(moment, fPart, one.fMoment);
        Form::Put(before, fPart, one.fWeight);
    }
    FS_INLINE void Store(const FSBlockCases& cases, std::size_t part, ByClass& lanes) {
        fWeights.Store(cases, part, lanes.fWeights);
        Form::Put(fMean, part, lanes.fMean);
    }

    RunningWeights<Form, kUnit> fWeights;
    Vector fMean;
    ByClass::Class* fpClasses;  // borrowed from the lanes
    std::size_t fPart;
};

// The lanes of a number of registers at once, so that one chain of operations runs while the other
// waits.
template <class Form, bool kUnit, std::size_t kAtOnce, class Running, class Lanes>
FS_INLINE void AddParts(std::size_t part, Lanes& lanes, const Columns& columns,
                        const FSBlockCases& cases) {
    Running running[kAtOnce];
#pragma GCC unroll 8
    for (std::size_t i = 0; i < kAtOnce; ++i) running[i].Load(lanes, part + i);
    const std::size_t rows = cases.Rows();
    Tile tile;
    for (std::size_t first = 0; first < rows; first += kTileRows) {
        tile.Load(columns, first, rows);
        for (std::size_t at = 0; at < tile.fCount; ++at) {
            const std::size_t row = first + at;
            if (!cases.Counts(row)) continue;
            const double weight = kUnit ? 1.0 : cases.fWeights[row];
#pragma GCC unroll 8
            for (std::size_t i = 0; i < kAtOnce; ++i) {
                typename Form::Vector values;
                Form::Get(tile.fRows[at], part + i, values);
                running[i].Add(values, cases, row, weight);
            }
        }
    }
#pragma GCC unroll 8
    for (std::size_t i = 0; i < kAtOnce; ++i) running[i].Store(cases, part + i, lanes);
}

template <class Form, bool kUnit>
FS_INLINE void AddLanes(Single& lanes, const Columns& columns, const FSBlockCases& cases) {
    AddParts<Form, kUnit, Form::kParts, RunningSingle<Form, kUnit>>(0, lanes, columns, cases);
}

template <class Form, bool kUnit>
FS_INLINE void AddLanes(Pair& lanes, const Columns& columns, const FSBlockCases& cases) {
    AddParts<Form, kUnit, Form::kParts, RunningPair<Form, kUnit>>(0, lanes, columns, cases);
}

template <class Form, bool kUnit>
FS_INLINE void AddLanes(ByClass& lanes, const Columns& columns, const FSBlockCases& cases) {
    AddParts<Form, kUnit, Form::kParts, RunningByClass<Form, kUnit>>(0, lanes, columns, cases);
}

template <class Form, class Lanes>
FS_INLINE void AddForm(Lanes& lanes, const Columns& columns, const FSBlockCases& cases) {
    if (cases.fbUnit) {
        AddLanes<Form, true>(lanes, columns, cases);
    } else {
        AddLanes<Form, false>(lanes, columns, cases);
    }
}

template <class Lanes>
void AddPortable(Lanes& lanes, const Columns& columns, const FSBlockCases& cases) {
    AddForm<Registers<Two>>(lanes, columns, cases);
}

#if FS_X86_FORMS
template <class Lanes>
__attribute__((target("avx2"))) void AddAvx2(Lanes& lanes, const Columns& columns,
                                             const FSBlockCases& cases) {
    AddForm<Registers<Four>>(lanes, columns, cases);
}

template <class Lanes>
__attribute__((target("avx512f,avx512dq,avx512vl,avx512bw"))) void AddAvx512(
    Lanes& lanes, const Columns& columns, const FSBlockCases& cases) {
    AddForm<Registers<Eight>>(lanes, columns, cases);
}
#endif

template <class Lanes>
void Dispatch(Lanes& lanes, const Columns& columns, const FSBlockCases& cases, Form form) {
#if FS_X86_FORMS
    if (form == Form::kAvx512) return AddAvx512(lanes, columns, cases);
    if (form == Form::kAvx2) return AddAvx2(lanes, columns, cases);
#endif
    static_cast<void>(form);
    AddPortable(lanes, columns, cases);
}

}  // namespace

bool IsAvailable(Form form) {
#if FS_X86_FORMS
    if (form == Form::kAvx512) {
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
               __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw");
    }
    if (form == Form::kAvx2) return __builtin_cpu_supports("avx2") != 0;
#endif
    return form == Form::kPortable;
}

Form BestForm() {
    static const Form kBest = IsAvailable(Form::kAvx512) ? Form::kAvx512
                              : IsAvailable(Form::kAvx2) ? Form::kAvx2
                                                         : Form::kPortable;
    return kBest;
}

void Add(Single& lanes, const Columns& columns, const FSBlockCases& cases, Form form) {
    Dispatch(lanes, columns, cases, form);
}

void Add(Pair& lanes, const Columns& columns, const FSBlockCases& cases, Form form) {
    Dispatch(lanes, columns, cases, form);
}

void Add(ByClass& lanes, const Columns& columns, const FSBlockCases& cases, Form form) {
    Dispatch(lanes, columns, cases, form);
}

}  // namespace FSMomentLanes

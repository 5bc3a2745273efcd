#include "featureselect/FSMomentLanes.h"

#include <algorithm>

#include "host/Records.h"

#if defined(__GNUC__) && defined(__x86_64__)
#define FS_X86_FORMS 1
#define FS_INLINE inline __attribute__((always_inline))
#else
#define FS_X86_FORMS 0
#define FS_INLINE inline
#endif

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

/// The weight before the next value, lane by lane. Of unit weights it is a count; else the
/// difference of two sums, which are rounded on their own.
template <bool kUnit>
struct Before {
    Weights& fWeights;
    Numbers fValid;
    const Numbers fValidAtStart;

    FS_INLINE explicit Before(Weights& weights)
        : fWeights(weights), fValid(Difference(weights)), fValidAtStart(fValid) {}

    FS_INLINE static Numbers Difference(const Weights& weights) {
        Numbers valid;
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            valid[lane] = weights.fProcessed[lane] - weights.fMissing[lane];
        }
        return valid;
    }

    FS_INLINE double At(std::size_t lane) const {
        if constexpr (kUnit) return fValid[lane];
        return fWeights.fProcessed[lane] - fWeights.fMissing[lane];
    }

    FS_INLINE void Count(std::size_t lane, bool valid, double weight) {
        if constexpr (kUnit) {
            fValid[lane] += valid ? 1.0 : 0.0;
        } else {
            const double missing = fWeights.fMissing[lane];
            fWeights.fProcessed[lane] += weight;
            fWeights.fMissing[lane] = valid ? missing : missing + weight;
        }
    }

    FS_INLINE void Finish(const FSBlockCases& cases) {
        if constexpr (kUnit) {
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                fWeights.fProcessed[lane] += cases.fCounted;
                fWeights.fMissing[lane] += cases.fCounted - (fValid[lane] - fValidAtStart[lane]);
            }
        }
    }
};

// As FSMeanStep, whose scale of a unit weight is the new weight itself.
template <bool kUnit>
FS_INLINE double Scale(double after, double weight) {
    if constexpr (kUnit) return after;
    return after / weight;
}

// Calls step(row in the tile, row of the block, weight) for every record that counts.
template <bool kUnit, class Step>
FS_INLINE void ForRows(const Columns& columns, const FSBlockCases& cases, Step step) {
    const std::size_t rows = cases.Rows();
    Tile tile;
    for (std::size_t first = 0; first < rows; first += kTileRows) {
        tile.Load(columns, first, rows);
        for (std::size_t at = 0; at < tile.fCount; ++at) {
            if (!cases.Counts(first + at)) continue;
            step(tile.fRows[at], first + at, kUnit ? 1.0 : cases.fWeights[first + at]);
        }
    }
}

template <bool kUnit>
FS_INLINE void AddLanes(Single& lanes, const Columns& columns, const FSBlockCases& cases) {
    Before<kUnit> weights(lanes.fWeights);
    Numbers mean = lanes.fMean;
    Numbers moment = lanes.fMoment;
    ForRows<kUnit>(columns, cases, [&](const Numbers& values, std::size_t, double weight) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const bool valid = values[lane] != MCMV::gMissingValue;
            const double before = weights.At(lane);
            const double after = before + weight;
            const double shift = (values[lane] - mean[lane]) * (weight / after);
            const double grown = Scale<kUnit>(after, weight) * shift * before * shift;
            const double newMean = mean[lane] + shift;
            const double newMoment = moment[lane] + grown;
            mean[lane] = valid ? newMean : mean[lane];
            moment[lane] = valid ? newMoment : moment[lane];
            weights.Count(lane, valid, weight);
        }
    });
    weights.Finish(cases);
    lanes.fMean = mean;
    lanes.fMoment = moment;
}

template <bool kUnit>
FS_INLINE void AddLanes(Pair& lanes, const Columns& columns, const FSBlockCases& cases) {
    Before<kUnit> weights(lanes.fWeights);
    ForRows<kUnit>(columns, cases, [&](const Numbers& values, std::size_t row, double weight) {
        const double target = cases.fTargets[row];
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const bool valid = values[lane] != MCMV::gMissingValue;
            const double before = weights.At(lane);
            const double after = before + weight;
            const double share = weight / after;
            const double scale = Scale<kUnit>(after, weight);
            const double predShift = (values[lane] - lanes.fPredMean[lane]) * share;
            const double targetShift = (target - lanes.fTargetMean[lane]) * share;
            const double newPredMean = lanes.fPredMean[lane] + predShift;
            const double newPredMoment =
                lanes.fPredMoment[lane] + scale * predShift * before * predShift;
            const double newTargetMean = lanes.fTargetMean[lane] + targetShift;
            const double newTargetMoment =
                lanes.fTargetMoment[lane] + scale * targetShift * before * targetShift;
            const double newCross = lanes.fCross[lane] + scale * predShift * before * targetShift;
            lanes.fPredMean[lane] = valid ? newPredMean : lanes.fPredMean[lane];
            lanes.fPredMoment[lane] = valid ? newPredMoment : lanes.fPredMoment[lane];
            lanes.fTargetMean[lane] = valid ? newTargetMean : lanes.fTargetMean[lane];
            lanes.fTargetMoment[lane] = valid ? newTargetMoment : lanes.fTargetMoment[lane];
            lanes.fCross[lane] = valid ? newCross : lanes.fCross[lane];
            weights.Count(lane, valid, weight);
        }
    });
    weights.Finish(cases);
}

template <bool kUnit>
FS_INLINE void AddLanes(ByClass& lanes, const Columns& columns, const FSBlockCases& cases) {
    Before<kUnit> weights(lanes.fWeights);
    Numbers mean = lanes.fMean;
    ByClass::Class* classes = lanes.fvClasses.data();
    ForRows<kUnit>(columns, cases, [&](const Numbers& values, std::size_t row, double weight) {
        ByClass::Class& one = classes[cases.fClasses[row]];
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const double value = values[lane];
            const bool valid = value != MCMV::gMissingValue;
            const double share = weight / (weights.At(lane) + weight);
            const double newMean = mean[lane] + (value - mean[lane]) * share;
            mean[lane] = valid ? newMean : mean[lane];
            weights.Count(lane, valid, weight);

            const double before = one.fWeight[lane];
            const double after = before + weight;
            const double shift = (value - one.fMean[lane]) * (weight / after);
            const double grown = Scale<kUnit>(after, weight) * shift * before * shift;
            const bool first = !(before > 0.0);
            const double newClassMean = first ? value : one.fMean[lane] + shift;
            const double newMoment = first ? 0.0 : one.fMoment[lane] + grown;
            one.fMean[lane] = valid ? newClassMean : one.fMean[lane];
            one.fMoment[lane] = valid ? newMoment : one.fMoment[lane];
            one.fWeight[lane] = valid ? after : before;
        }
    });
    weights.Finish(cases);
    lanes.fMean = mean;
}

template <class Lanes>
FS_INLINE void AddForm(Lanes& lanes, const Columns& columns, const FSBlockCases& cases) {
    if (cases.fbUnit) {
        AddLanes<true>(lanes, columns, cases);
    } else {
        AddLanes<false>(lanes, columns, cases);
    }
}

template <class Lanes>
void AddPortable(Lanes& lanes, const Columns& columns, const FSBlockCases& cases) {
    AddForm(lanes, columns, cases);
}

#if FS_X86_FORMS
template <class Lanes>
__attribute__((target("avx2"))) void AddAvx2(Lanes& lanes, const Columns& columns,
                                             const FSBlockCases& cases) {
    AddForm(lanes, columns, cases);
}

template <class Lanes>
__attribute__((target("avx512f,avx512dq,avx512vl,avx512bw,prefer-vector-width=512"))) void
AddAvx512(Lanes& lanes, const Columns& columns, const FSBlockCases& cases) {
    AddForm(lanes, columns, cases);
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

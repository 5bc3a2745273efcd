#ifndef PREDSEL_FEATURESELECT_FSACCUMKIND_H
#define PREDSEL_FEATURESELECT_FSACCUMKIND_H

#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSCatAccum.h"
#include "featureselect/FSCatPCatTAccum.h"
#include "featureselect/FSCatPContTAccum.h"
#include "featureselect/FSContAccum.h"
#include "featureselect/FSContPCatTAccum.h"
#include "featureselect/FSContPContTAccum.h"
#include "featureselect/IFSPredTargetAccum.h"

/// The accumulator classes by the number that a saved predictor set knows them by.
namespace FSAccumKind {

inline constexpr std::int32_t kDeleted = 0;  // the predictor has none
inline constexpr std::int32_t kCat = 1;
inline constexpr std::int32_t kCatPCatT = 2;
inline constexpr std::int32_t kCatPContT = 3;
inline constexpr std::int32_t kCont = 4;
inline constexpr std::int32_t kContPCatT = 5;
inline constexpr std::int32_t kContPContT = 6;

/// Calls visit(std::type_identity<Class>{}) for the class of the kind, and nothing for kDeleted
/// or a number that is none of these. Returns whether it called.
template <class Visit>
bool WithClass(std::int32_t kind, Visit visit) {
    switch (kind) {
        case kCat:
            visit(std::type_identity<FSCatAccum>{});
            return true;
        case kCatPCatT:
            visit(std::type_identity<FSCatPCatTAccum>{});
            return true;
        case kCatPContT:
            visit(std::type_identity<FSCatPContTAccum>{});
            return true;
        case kCont:
            visit(std::type_identity<FSContAccum>{});
            return true;
        case kContPCatT:
            visit(std::type_identity<FSContPCatTAccum>{});
            return true;
        case kContPContT:
            visit(std::type_identity<FSContPContTAccum>{});
            return true;
        default:
            return false;
    }
}

/// The kind that serves a predictor and a target; targetCategorical counts only with a target.
std::int32_t For(bool predictorCategorical, bool withTarget, bool targetCategorical);

/// The kind of an accumulator, kDeleted for null.
std::int32_t Of(const IFSPredTargetAccum* accum);

/// An empty accumulator of the kind; null for kDeleted and unknown numbers.
std::unique_ptr<IFSPredTargetAccum> Make(std::int32_t kind);

/// Adds the records of a block. REQUIRES: all accumulators are of the kind.
void AddBlock(std::int32_t kind, std::span<const FSBlockPart> parts, const FSBlockCases& cases);

/// Adds the cases of a later partition. REQUIRES: both of one kind.
void Merge(IFSPredTargetAccum& into, const IFSPredTargetAccum& from);

}  // namespace FSAccumKind

#endif  // PREDSEL_FEATURESELECT_FSACCUMKIND_H

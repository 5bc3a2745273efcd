#ifndef PREDSEL_FEATURESELECT_FSPREDICTORSETFIELDS_H
#define PREDSEL_FEATURESELECT_FSPREDICTORSETFIELDS_H

// What is saved of a predictor set. Apart from FSPredictorSet.h, which its users then need not
// know the accumulator classes for: include this where a set or an FSAlgorithm meets an archive.

#include <cstddef>
#include <memory>
#include <type_traits>

#include "featureselect/FSAccumKind.h"
#include "featureselect/FSPredictorSet.h"

namespace FSPredictorSetParts {

/// The accumulator of one predictor after the number of its class, kDeleted without one. Pointer is
/// const when saving.
template <class Pointer>
struct Accum {
    Pointer& fpAccum;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        std::int32_t kind = FSAccumKind::Of(self.fpAccum.get());
        archive.Items(kind);
        if constexpr (Archive::kRestores) {
            self.fpAccum = FSAccumKind::Make(kind);
            archive.Require(kind == FSAccumKind::kDeleted || self.fpAccum != nullptr);
        }
        FSAccumKind::WithClass(kind, [&](auto type) {
            using Class = typename decltype(type)::type;
            using Access = std::conditional_t<Archive::kRestores, Class, const Class>;
            archive.Items(static_cast<Access&>(*self.fpAccum));
        });
    }
};

/// The number of predictors, then their accumulators.
template <class Pointers>
struct Accums {
    Pointers& fvpAccum;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        auto count = static_cast<std::int32_t>(self.fvpAccum.size());
        archive.Items(count);
        if constexpr (Archive::kRestores) self.fvpAccum.clear();
        for (std::int32_t at = 0; at < count; ++at) {
            // Grows with what has been read: the count may be anything.
            if constexpr (Archive::kRestores) self.fvpAccum.emplace_back();
            auto& pointer = self.fvpAccum[static_cast<std::size_t>(at)];
            Accum<std::remove_reference_t<decltype(pointer)>> accum{pointer};
            archive.Items(accum);
        }
    }
};

/// Whether there is a table of target categories, then the table.
template <class Pointer>
struct TargetAccum {
    Pointer& fpAccum;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        bool exists = self.fpAccum != nullptr;
        archive.Items(exists);
        if constexpr (Archive::kRestores) {
            self.fpAccum = exists ? std::make_unique<FSMapIPCnt>() : nullptr;
        }
        if (!exists) return;
        using Access = std::conditional_t<Archive::kRestores, FSMapIPCnt, const FSMapIPCnt>;
        archive.Items(static_cast<Access&>(*self.fpAccum));
    }
};

}  // namespace FSPredictorSetParts

template <class Self, class Archive>
void FSPredictorSet::Fields(Self&& self, Archive& archive) {
    std::int32_t deleted = self.GetNumberOfDeleted();
    FSPredictorSetParts::Accums<std::remove_reference_t<decltype((self.fvpAccum))>> accums{
        self.fvpAccum};
    FSPredictorSetParts::TargetAccum<std::remove_reference_t<decltype((self.fpTargetAccum))>>
        target{self.fpTargetAccum};
    archive(kSaved, self.fNumPredictors, self.fNumBestSorted, self.fElapsed, self.fPredSetType,
            self.fStatus, self.fMemoryAllocated, self.fDataPassCompleted, self.fNoValidData,
            self.fNoValidWeight, self.fWeightedValid, self.fWeightedExcluded, self.fUnweightedValid,
            self.fUnweightedExcluded, deleted,
            Persistence::Elements{deleted, self.fvDeletedIndices},
            Persistence::Elements{deleted, self.fvDeletionReasons}, accums, target, self.fvpSort[0],
            self.fvpSort[1], self.fvpSort[2], self.fvpSort[3], self.fvpSort[4], self.fvpSort[5],
            self.fvRanks[0], self.fvRanks[1], self.fvRanks[2], self.fvRanks[3], self.fvRanks[4],
            self.fvRanks[5], self.fvValues[0], self.fvValues[1], self.fvValues[2], self.fvValues[3],
            self.fvValues[4], self.fvValues[5],
            Persistence::Check{[&self] { return self.HoldsTogether(); }});
}

#endif  // PREDSEL_FEATURESELECT_FSPREDICTORSETFIELDS_H

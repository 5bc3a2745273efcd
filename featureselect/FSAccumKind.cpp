#include "featureselect/FSAccumKind.h"

namespace FSAccumKind {

std::int32_t For(bool predictorCategorical, bool withTarget, bool targetCategorical) {
    if (!withTarget) return predictorCategorical ? kCat : kCont;
    if (targetCategorical) return predictorCategorical ? kCatPCatT : kContPCatT;
    return predictorCategorical ? kCatPContT : kContPContT;
}

std::int32_t Of(const IFSPredTargetAccum* accum) {
    for (std::int32_t kind = kCat; kind <= kContPContT; ++kind) {
        bool fits = false;
        WithClass(kind, [&](auto type) {
            using Class = typename decltype(type)::type;
            fits = dynamic_cast<const Class*>(accum) != nullptr;
        });
        if (fits) return kind;
    }
    return kDeleted;
}

std::unique_ptr<IFSPredTargetAccum> Make(std::int32_t kind) {
    std::unique_ptr<IFSPredTargetAccum> accum;
    WithClass(kind, [&](auto type) {
        using Class = typename decltype(type)::type;
        accum = std::make_unique<Class>();
    });
    return accum;
}

void AddBlock(std::int32_t kind, std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    WithClass(kind, [&](auto type) { decltype(type)::type::AddBlock(parts, cases); });
}

void Merge(IFSPredTargetAccum& into, const IFSPredTargetAccum& from) {
    WithClass(Of(&into), [&](auto type) {
        using Class = typename decltype(type)::type;
        static_cast<Class&>(into).MergeFrom(dynamic_cast<const Class&>(from));
    });
}

}  // namespace FSAccumKind

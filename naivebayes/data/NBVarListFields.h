#ifndef PREDSEL_NAIVEBAYES_DATA_NBVARLISTFIELDS_H
#define PREDSEL_NAIVEBAYES_DATA_NBVARLISTFIELDS_H

// What is saved of a variable list. Apart from NBVarList.h, which its users then need not know the
// variable classes for: include this where a list meets an archive.

#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "naivebayes/data/NBCatVar.h"
#include "naivebayes/data/NBContVar.h"
#include "naivebayes/data/NBVarList.h"
#include "naivebayes/data/NBWeightVar.h"

/// The number of variables, then each after its measure level.
template <class List>
struct NBVarList::Variables {
    List& fList;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        if constexpr (Archive::kRestores) {
            self.fList.Clear();
            Restore(self.fList, archive);
        } else {
            Save(self.fList.fvpVars, archive);
        }
    }

 private:
    template <class Archive>
    static void Save(const std::vector<std::unique_ptr<INBVariable>>& variables, Archive& archive) {
        archive.Items(static_cast<std::int32_t>(variables.size()));
        for (const auto& variable : variables) {
            const std::int32_t level = variable->GetMeasureLevel();
            archive.Items(level);
            if (level == NBMeasureLevel::kContinuous) {
                archive.Items(static_cast<const NBContVar&>(*variable));
            } else if (level == NBMeasureLevel::kWeight) {
                archive.Items(static_cast<const NBWeightVar&>(*variable));
            } else {
                archive.Items(static_cast<const NBCatVar&>(*variable));
            }
        }
    }

    /// The list agrees with itself after each variable: it can be used where the next one fails.
    template <class Archive>
    static void Restore(NBVarList& list, Archive& archive) {
        std::int32_t count = 0;
        archive.Items(count);
        archive.Require(count >= 0);
        for (std::int32_t i = 0; i < count; ++i) {
            std::int32_t level = 0;
            archive.Items(level);
            if (level == NBMeasureLevel::kContinuous) {
                auto variable =
                    std::make_unique<NBContVar>(" ", " ", -1.0, 1.0, -1, NBRole::kInput);
                archive.Items(*variable);
                list.AppendContinuous(std::move(variable));
            } else {
                // A weight as well: its own tag then fails the restore.
                auto variable = std::make_unique<NBCatVar>(" ", " ", NBRole::kInput, 0,
                                                           std::make_unique<NBStringEncoder>(0));
                archive.Items(*variable);
                list.AppendCategorical(std::move(variable));
            }
        }
    }
};

template <class Self, class Archive>
void NBVarList::Fields(Self&& self, Archive& archive) {
    std::int32_t numContVars = self.fNumContVars;
    std::int32_t numCatVars = self.fNumCatVars;
    std::int32_t targetIndex = self.fTargetIndex;
    archive(kSaved, Variables<std::remove_reference_t<Self>>{self}, numContVars, numCatVars,
            targetIndex, Persistence::Check{[&] {
                return numContVars == self.fNumContVars && numCatVars == self.fNumCatVars &&
                       (targetIndex == -1 || self.IsInRange(targetIndex));
            }});
    if constexpr (Archive::kRestores) self.fTargetIndex = targetIndex;
}

#endif  // PREDSEL_NAIVEBAYES_DATA_NBVARLISTFIELDS_H

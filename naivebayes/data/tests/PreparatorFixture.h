#ifndef PREDSEL_NAIVEBAYES_DATA_TESTS_PREPARATORFIXTURE_H
#define PREDSEL_NAIVEBAYES_DATA_TESTS_PREPARATORFIXTURE_H

#include <utility>
#include <vector>

#include "host/Records.h"
#include "naivebayes/data/NBDataPreparator.h"
#include "naivebayes/data/NBVarList.h"

namespace preparatortest {

inline constexpr double kMissing = MCMV::gMissingValue;

/// Where the variables of MakeList stand.
enum Variable { kColour, kTarget, kSize, kWeight, kShape, kUnused };

/// Input colour of 3 categories, target of 2, continuous input size from 0 to 10 in 2 bins, a
/// weight that is rounded, possible input shape of 2 categories, and an unused variable.
inline NBVarList MakeList() {
    NBVarList list;
    list.AddNumericCatVar("colour", "", {10.0, 20.0, 30.0}, NBRole::kInput);
    list.AddNumericCatVar("target", "", {0.0, 1.0}, NBRole::kTarget);
    list.AddContVar("size", "", 0.0, 10.0, 2, NBRole::kInput);
    list.AddWeightVar("weight", "", 1);
    list.AddNumericCatVar("shape", "", {1.0, 2.0}, NBRole::kPossibleInput);
    list.AddNumericCatVar("unused", "", {1.0, 2.0}, NBRole::kUnused);
    return list;
}

/// The same without the weight.
inline NBVarList MakeUnweightedList() {
    NBVarList list = MakeList();
    list.RemoveVariable("weight");
    return list;
}

/// A list and its preparator.
struct Prepared {
    NBVarList fList;
    NBInterruptState fInterrupt;
    NBDataPreparator fPreparator;

    explicit Prepared(NBVarList list, bool usePossibleInputs = true, std::int32_t numRecords = 100)
        : fList(std::move(list)), fPreparator(fList, usePossibleInputs, numRecords, fInterrupt) {}
};

}  // namespace preparatortest

#endif  // PREDSEL_NAIVEBAYES_DATA_TESTS_PREPARATORFIXTURE_H

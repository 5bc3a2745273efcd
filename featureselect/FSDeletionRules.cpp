#include "featureselect/FSDeletionRules.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "featureselect/FSMapICnt.h"
#include "featureselect/FSSettings.h"

namespace {

// Below a lower bound by more than rounding.
bool IsBelow(double value, double bound) {
    return bound - value > 0.0 && (bound - value) / bound > std::numeric_limits<double>::epsilon();
}

}  // namespace

bool FSDeletionRules::ManyMissing(const FSSettings& settings, double processed, double missing) {
    if (!settings.fDeleteManyMissing || !(settings.fMaxMissing < 1.0)) return false;
    return processed > 0.0 && missing / processed > settings.fMaxMissing;
}

bool FSDeletionRules::ManyConst(const FSSettings& settings, const FSMapICnt& counts) {
    if (!settings.fDeleteManyConst || !(settings.fMaxSingleCategory < 1.0)) return false;
    if (counts.Size() == 0) return false;
    double largest = 0.0;
    FSWeightSum sum;
    for (std::int32_t i = 0; i < counts.Size(); ++i) {
        largest = std::max<double>(largest, counts.GetAt(i).fWeight);
        sum += counts.GetAt(i).fWeight;
    }
    return largest / sum > settings.fMaxSingleCategory;
}

bool FSDeletionRules::ManyCategs(const FSSettings& settings, const FSMapICnt& counts,
                                 std::int32_t unweightedValid) {
    if (!settings.fDeleteManyCategs || !(settings.fMaxCategories < 1.0)) return false;
    return unweightedValid > 0 &&
           static_cast<double>(counts.Size()) / unweightedValid > settings.fMaxCategories;
}

bool FSDeletionRules::ManyCategsWithOneCase(const FSSettings& settings, const FSMapICnt& counts,
                                            std::int32_t unweightedValid) {
    if (!settings.fDeleteManyCategsOneCase || !(settings.fMaxOneCaseCategories < 1.0)) {
        return false;
    }
    if (unweightedValid < 1 || counts.Size() == 0) return false;
    std::int32_t ofOneCase = 0;
    for (std::int32_t i = 0; i < counts.Size(); ++i) {
        if (counts.GetAt(i).fWeight == 1.0) ++ofOneCase;
    }
    return static_cast<double>(ofOneCase) / counts.Size() > settings.fMaxOneCaseCategories;
}

bool FSDeletionRules::SmallStdDev(const FSSettings& settings, double stdDev) {
    if (!settings.fDeleteSmallStdDev || !(settings.fMinStdDev > 0.0)) return false;
    return IsBelow(stdDev, settings.fMinStdDev);
}

bool FSDeletionRules::SmallVar(const FSSettings& settings, double stdDev, double mean) {
    if (!settings.fDeleteSmallVar || !(settings.fMinCoefVar > 0.0)) return false;
    if (stdDev == 0.0) return true;
    if (mean == 0.0) return false;
    return IsBelow(std::fabs(stdDev / mean), settings.fMinCoefVar);
}

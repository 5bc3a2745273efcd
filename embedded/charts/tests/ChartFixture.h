#ifndef PREDSEL_EMBEDDED_CHARTS_TESTS_CHARTFIXTURE_H
#define PREDSEL_EMBEDDED_CHARTS_TESTS_CHARTFIXTURE_H

#include <cstdint>
#include <string>
#include <vector>

#include "embedded/charts/ChartModel.h"

namespace embedded {

/// A chart of predictors, best first, as a procedure asks for it.
struct ChartRequest {
    std::vector<std::string> fvLabels;
    std::vector<double> fvValues;
    std::int32_t fSelected = 0;  // how many of the first are selected
    std::string fValueKey = "Unadjusted Significance";
    double fCutoff = 0.05;
    std::vector<std::string> fvFootnotes;
};

/// `count` predictors x1, x2, ... with values that rise evenly from 0 to below 1.
ChartRequest EvenRequest(std::int32_t count, std::int32_t selected);

ChartModel BuildChart(const ChartRequest& request);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CHARTS_TESTS_CHARTFIXTURE_H

#include "naivebayes/NBSubsetModel.h"

#include <algorithm>
#include <cmath>

#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"

namespace {

bool IsModerateProbability(double probability) {
    return probability >= std::ldexp(1.0, NBSubsetModel::kLowestExponent) && probability <= 1.0;
}

}  // namespace

NBSubsetModel::NBSubsetModel(const std::vector<NBayesInput>& inputs, const NBayesOutput& output)
    : fvPriors(output.GetPi()), fWidth(std::max<std::size_t>(1, (fvPriors.size() + 3) / 4)) {
    for (const double prior : fvPriors) fbModerate = fbModerate && IsModerateProbability(prior);
    // A sum is at most the number of target categories times the largest weight.
    const int highest = std::ilogb(static_cast<double>(std::max<std::size_t>(1, fvPriors.size())));
    fvTables.reserve(inputs.size());
    for (const NBayesInput& input : inputs) {
        Table& table = fvTables.emplace_back();
        table.fNumCategories = std::max(input.GetNumCategories(), 0);
        table.fvRows.resize((static_cast<std::size_t>(table.fNumCategories) + 1) * fWidth);
        double lowest = 1.0;
        for (std::size_t k = 0; k < fvPriors.size(); ++k) {
            table.fvRows[k / 4].fValues[k % 4] = 1.0;
            for (std::size_t m = 0; m < input.GetProbabilities().size(); ++m) {
                const double probability = input.GetProbabilities()[m][k];
                table.fvRows[(m + 1) * fWidth + k / 4].fValues[k % 4] = probability;
                fbModerate = fbModerate && IsModerateProbability(probability);
                lowest = std::min(lowest, probability);
            }
        }
        // A double's exponent goes from -1022 to 1023; a sum moves it by one more than its own.
        constexpr int kExponents = 1000;
        constexpr int kLongestRun = 32;
        const int step = std::max(fbModerate ? 1 - std::ilogb(lowest) : kExponents, highest + 3);
        table.fSafeRun = static_cast<std::size_t>(std::clamp(kExponents / step, 1, kLongestRun));
    }
}

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
    const std::vector<double>& weights = output.GetWeightedCounts();
    NBDoubleDouble total;
    for (const double weight : weights) total = total + NBDoubleDouble(weight);
    const NBDoubleDouble threshold = NBDoubleDouble(1.0) / total;
    const auto filled = static_cast<double>(
        std::count_if(weights.begin(), weights.end(), [](double weight) { return weight > 0.0; }));
    for (std::size_t k = 0; k < fvPriors.size(); ++k) {
        fvExactPriors.push_back(Exact(
            (NBDoubleDouble(weights[k]) + threshold) / (total + NBDoubleDouble(filled) * threshold),
            fvPriors[k]));
    }
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
        FillExactRows(input, threshold, table);
        // A double's exponent goes from -1022 to 1023; a sum moves it by one more than its own.
        constexpr int kExponents = 1000;
        constexpr int kLongestRun = 32;
        const int step = std::max(fbModerate ? 1 - std::ilogb(lowest) : kExponents, highest + 3);
        table.fSafeRun = static_cast<std::size_t>(std::clamp(kExponents / step, 1, kLongestRun));
    }
}

void NBSubsetModel::FillExactRows(const NBayesInput& input, const NBDoubleDouble& threshold,
                                  Table& table) {
    const NBayesInputBase::Matrix& counts = input.GetCounts();
    table.fvHigh = table.fvRows;
    table.fvLow.resize(table.fvRows.size());
    const NBDoubleDouble smoothing =
        NBDoubleDouble(static_cast<double>(input.GetNumNonEmpty())) * threshold;
    for (std::size_t k = 0; k < fvPriors.size(); ++k) {
        NBDoubleDouble column;
        for (const std::vector<double>& row : counts) column = column + NBDoubleDouble(row[k]);
        for (std::size_t m = 0; m < counts.size(); ++m) {
            const std::size_t at = (m + 1) * fWidth + k / 4;
            double& high = table.fvHigh[at].fValues[k % 4];
            const NBDoubleDouble probability =
                Exact((NBDoubleDouble(counts[m][k]) + threshold) / (column + smoothing), high);
            high = probability.fHigh;
            table.fvLow[at].fValues[k % 4] = probability.fLow;
        }
    }
}

NBDoubleDouble NBSubsetModel::Exact(const NBDoubleDouble& byCounts, double rounded) {
    // Some units of the four operations and of the sum of a column. Absurd weights, of which some
    // operation leaves the range of a double, give no number or another one.
    constexpr double kMostRounding = 0x1p-40;
    const double difference = std::abs(byCounts.fHigh - rounded);
    if (!(difference <= kMostRounding * rounded) || !IsModerateProbability(rounded)) {
        return NBDoubleDouble(rounded);
    }
    fRounding = std::max(fRounding, difference / rounded);
    return byCounts;
}

#include "naivebayes/NBOutputStatistics.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "persistence/Display.h"

namespace {

std::size_t Index(std::int32_t i) { return static_cast<std::size_t>(i); }

}  // namespace

void NBOutputStatistics::Reset(std::int32_t numCategories) {
    const std::size_t size = Index(std::max(numCategories, 0));
    fMatrix.assign(size * size, 0.0);
    fNumCategories = numCategories;
    fTotalWeight = 0.0;
    fErrorPercent = 0.0;
}

void NBOutputStatistics::Extend(std::int32_t numCategories) {
    if (numCategories <= fNumCategories) return;
    const std::size_t before = Index(std::max(fNumCategories, 0));
    const std::size_t size = Index(numCategories);
    std::vector<double> extended(size * size, 0.0);
    for (std::size_t row = 0; row < before; ++row) {
        std::copy_n(fMatrix.begin() + static_cast<std::ptrdiff_t>(row * before), before,
                    extended.begin() + static_cast<std::ptrdiff_t>(row * size));
    }
    fMatrix = std::move(extended);
    fNumCategories = numCategories;
}

void NBOutputStatistics::Add(std::int32_t observed, std::int32_t predicted, double weight) {
    double error = fTotalWeight * fErrorPercent;
    if (predicted != observed) error += weight * 100.0;
    AddCell(observed, predicted, weight);
    fErrorPercent = error / fTotalWeight;
}

void NBOutputStatistics::AddCell(std::int32_t observed, std::int32_t predicted, double weight) {
    fMatrix[Index(observed) * Index(fNumCategories) + Index(predicted)] += weight;
    fTotalWeight += weight;
}

double NBOutputStatistics::GetCell(std::int32_t observed, std::int32_t predicted) const {
    const bool isInRange =
        observed >= 0 && observed < fNumCategories && predicted >= 0 && predicted < fNumCategories;
    if (!isInRange) return -1.0;
    return fMatrix[Index(observed) * Index(fNumCategories) + Index(predicted)];
}

std::vector<std::vector<double>> NBOutputStatistics::GetMatrix() const {
    std::vector<std::vector<double>> rows;
    for (std::int32_t observed = 0; observed < fNumCategories; ++observed) {
        rows.push_back(GetRow(observed));
    }
    return rows;
}

std::vector<double> NBOutputStatistics::GetRow(std::int32_t observed) const {
    std::vector<double> row(Index(std::max(fNumCategories, 0)), 0.0);
    if (observed >= 0 && observed < fNumCategories) {
        std::copy_n(&fMatrix[Index(observed) * row.size()], row.size(), row.begin());
    }
    return row;
}

void NBOutputStatistics::Display(std::ostream& out) const {
    out << "Start of NBOutputStatistics display\n"
        << "Number of categories of the categorical variable = " << fNumCategories << '\n'
        << "Total weight = " << fTotalWeight << '\n'
        << "Overall error (percent of incorrect predictions) = " << fErrorPercent << '\n';
    Persistence::DisplayVector(out, "MisClassification Matrix", fMatrix);
    out << "End of NBOutputStatistics display\n";
}

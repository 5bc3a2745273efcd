#include "naivebayes/tests/PlainScoring.h"

#include <algorithm>
#include <cmath>

#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"

PlainScoring::PlainScoring(const std::vector<NBayesInput>& inputs, const NBayesOutput& output)
    : fvPriors(output.GetPi()), fvProduct(fvPriors.size(), 1.0) {
    fvNumCategories.reserve(inputs.size());
    fvProbabilities.reserve(inputs.size());
    for (const NBayesInput& input : inputs) {
        fvNumCategories.push_back(input.GetNumCategories());
        std::vector<double> flat;
        flat.reserve(input.GetProbabilities().size() * fvPriors.size());
        for (const std::vector<double>& row : input.GetProbabilities()) {
            flat.insert(flat.end(), row.begin(), row.end());
        }
        fvProbabilities.push_back(std::move(flat));
    }
}

void PlainScoring::StartRecord() { std::fill(fvProduct.begin(), fvProduct.end(), 1.0); }

void PlainScoring::Multiply(std::int32_t table, double code) {
    if (!IsValid(code)) return;
    const double* row = Row(table, code);
    for (std::size_t k = 0; k < fvProduct.size(); ++k) fvProduct[k] *= row[k];
}

double PlainScoring::LogSum() const {
    double sum = 0.0;
    for (std::size_t k = 0; k < fvProduct.size(); ++k) sum += fvProduct[k] * fvPriors[k];
    return std::log(sum);
}

double PlainScoring::LogSumWith(std::int32_t table, double code) const {
    if (!IsValid(code)) return LogSum();
    const double* row = Row(table, code);
    double sum = 0.0;
    for (std::size_t k = 0; k < fvProduct.size(); ++k) sum += fvProduct[k] * row[k] * fvPriors[k];
    return std::log(sum);
}

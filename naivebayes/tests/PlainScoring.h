#ifndef PREDSEL_NAIVEBAYES_TESTS_PLAINSCORING_H
#define PREDSEL_NAIVEBAYES_TESTS_PLAINSCORING_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/Records.h"

class NBayesInput;
class NBayesOutput;

/// Probability of one record's predictor codes, for each target category k: the product over the
/// predictors of a subset of P[m][k], grown predictor by predictor from ones. Scores are
/// Q = log(sum over k of Pi[k] * product[k]), the log probability of the codes.
///
/// Probabilities stay plain, not logged, so that a score costs one logarithm. Intended: nothing
/// guards against underflow. A product of very many small probabilities reaches 0 and its score is
/// then minus infinity.
class PlainScoring {
 public:
    /// Copies the probabilities. A predictor is named by its position in inputs, its table index.
    PlainScoring(const std::vector<NBayesInput>& inputs, const NBayesOutput& output);

    /// Whether a code names a category: neither missing nor unknown, which is -1.
    static bool IsValid(double code) { return code > -1.0; }
    /// The category that a valid code names. Codes are whole numbers, and 0.45 bears their
    /// rounding; one that is not must not leave its table.
    static std::int32_t Category(double code, std::int32_t numCategories) {
        return std::min(static_cast<std::int32_t>(code + 0.45), numCategories - 1);
    }

    /// Begins a record: the empty subset.
    void StartRecord();
    /// A further predictor of the subset. One without a valid code contributes no factor.
    void Multiply(std::int32_t table, double code);
    /// Q of the subset so far.
    double LogSum() const;
    /// Q of the subset so far and one more predictor, which does not join it.
    double LogSumWith(std::int32_t table, double code) const;

 private:
    /// K probabilities.
    const double* Row(std::int32_t table, double code) const {
        const auto at = static_cast<std::size_t>(table);
        const auto category = static_cast<std::size_t>(Category(code, fvNumCategories[at]));
        return fvProbabilities[at].data() + category * fvProduct.size();
    }

    std::vector<double> fvPriors;                      // Pi, K of them
    std::vector<std::int32_t> fvNumCategories;         // a table each
    std::vector<std::vector<double>> fvProbabilities;  // a table each: m * K + k
    std::vector<double> fvProduct;                     // K
};

#endif  // PREDSEL_NAIVEBAYES_TESTS_PLAINSCORING_H

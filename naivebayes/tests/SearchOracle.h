#ifndef PREDSEL_NAIVEBAYES_TESTS_SEARCHORACLE_H
#define PREDSEL_NAIVEBAYES_TESTS_SEARCHORACLE_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

/// The quantities of the subset search from their definitions: slow, in logarithms and long
/// doubles, and without a line of the engine. A predictor is named by its position.
namespace SearchOracle {

struct Row {
    std::int32_t fTarget = 0;
    double fWeight = 1.0;
    std::vector<std::int32_t> fCodes;  // -1: missing
};

class Model {
 public:
    Model(std::int32_t numTargets, const std::vector<std::int32_t>& numCategories,
          const std::vector<Row>& rows)
        : fNumTargets(static_cast<std::size_t>(numTargets)) {
        for (const Row& row : rows) fWeight += row.fWeight;
        std::vector<long double> targets(fNumTargets, 0.0L);
        for (const Row& row : rows) targets[static_cast<std::size_t>(row.fTarget)] += row.fWeight;
        std::size_t filled = 0;
        for (const long double weight : targets) filled += weight > 0 ? 1 : 0;
        for (const long double weight : targets) {
            fPriors.push_back((weight + 1 / fWeight) /
                              (fWeight + static_cast<long double>(filled) / fWeight));
        }
        for (std::size_t j = 0; j < numCategories.size(); ++j) {
            fTables.push_back(Table(j, static_cast<std::size_t>(numCategories[j]), rows));
        }
    }

    long double Weight() const { return fWeight; }
    long double Prior(std::size_t k) const { return fPriors[k]; }
    long double Probability(std::size_t j, std::size_t m, std::size_t k) const {
        return fTables[j][m][k];
    }

    /// Log of the joint probability of target k and the valid codes of the subset.
    long double LogJoint(const Row& row, const std::vector<std::int32_t>& subset,
                         std::size_t k) const {
        long double sum = std::log(fPriors[k]);
        for (const std::int32_t j : subset) {
            const std::int32_t code = row.fCodes[static_cast<std::size_t>(j)];
            if (code < 0) continue;
            sum +=
                std::log(fTables[static_cast<std::size_t>(j)][static_cast<std::size_t>(code)][k]);
        }
        return sum;
    }
    /// Log of the probability of the valid codes of the subset, whatever the target.
    long double LogMarginal(const Row& row, const std::vector<std::int32_t>& subset) const {
        long double sum = 0.0L;
        for (std::size_t k = 0; k < fNumTargets; ++k) sum += std::exp(LogJoint(row, subset, k));
        return std::log(sum);
    }
    /// Minus the log posterior of the observed target, also of one near 1 to the last digits.
    long double Loss(const Row& row, const std::vector<std::int32_t>& subset) const {
        const long double own = LogJoint(row, subset, static_cast<std::size_t>(row.fTarget));
        long double others = 0.0L;
        for (std::size_t k = 0; k < fNumTargets; ++k) {
            if (k != static_cast<std::size_t>(row.fTarget)) {
                others += std::exp(LogJoint(row, subset, k) - own);
            }
        }
        return std::log1p(others);
    }
    /// Its weighted mean.
    long double MeanLoss(const std::vector<Row>& rows,
                         const std::vector<std::int32_t>& subset) const {
        long double sum = 0.0L;
        long double weight = 0.0L;
        for (const Row& row : rows) {
            sum += row.fWeight * Loss(row, subset);
            weight += row.fWeight;
        }
        return sum / weight;
    }
    /// Weighted mean of the log posterior of the observed target.
    double ConditionalLogLik(const std::vector<Row>& rows,
                             const std::vector<std::int32_t>& subset) const {
        long double sum = 0.0L;
        long double weight = 0.0L;
        for (const Row& row : rows) {
            sum += row.fWeight * (LogJoint(row, subset, static_cast<std::size_t>(row.fTarget)) -
                                  LogMarginal(row, subset));
            weight += row.fWeight;
        }
        return static_cast<double>(sum / weight);
    }
    /// The same with the marginal part taken over drawn rows.
    double SimulatedLogLik(const std::vector<Row>& rows, const std::vector<Row>& drawn,
                           const std::vector<std::int32_t>& subset) const {
        return static_cast<double>(LongSimulatedLogLik(rows, drawn, subset));
    }
    long double LongSimulatedLogLik(const std::vector<Row>& rows, const std::vector<Row>& drawn,
                                    const std::vector<std::int32_t>& subset) const {
        long double joint = 0.0L;
        for (const Row& row : rows) {
            joint += row.fWeight * LogJoint(row, subset, static_cast<std::size_t>(row.fTarget));
        }
        long double marginal = 0.0L;
        for (const Row& row : drawn) marginal += LogMarginal(row, subset);
        return joint / fWeight - marginal / static_cast<long double>(drawn.size());
    }
    double PseudoBIC(const std::vector<Row>& rows, const std::vector<std::int32_t>& subset) const {
        const auto size = static_cast<long double>(subset.size());
        return static_cast<double>(size * std::log(fWeight) / (2 * fWeight) -
                                   ConditionalLogLik(rows, subset));
    }

    /// A draw of all predictors, by a generator seeded as the engine's.
    Row Draw(std::mt19937& generator) const {
        Row row;
        row.fTarget = Pick(generator, fPriors);
        for (const auto& table : fTables) {
            std::vector<long double> shares;
            for (const auto& cells : table) {
                shares.push_back(cells[static_cast<std::size_t>(row.fTarget)]);
            }
            row.fCodes.push_back(Pick(generator, shares));
        }
        return row;
    }

 private:
    std::vector<std::vector<long double>> Table(std::size_t j, std::size_t numCategories,
                                                const std::vector<Row>& rows) const {
        std::vector<std::vector<long double>> counts(numCategories,
                                                     std::vector<long double>(fNumTargets, 0.0L));
        for (const Row& row : rows) {
            if (row.fCodes[j] < 0) continue;
            counts[static_cast<std::size_t>(row.fCodes[j])]
                  [static_cast<std::size_t>(row.fTarget)] += row.fWeight;
        }
        std::size_t filled = 0;
        std::vector<long double> columns(fNumTargets, 0.0L);
        for (const auto& cells : counts) {
            long double sum = 0.0L;
            for (std::size_t k = 0; k < fNumTargets; ++k) {
                sum += cells[k];
                columns[k] += cells[k];
            }
            filled += sum > 0 ? 1 : 0;
        }
        for (auto& cells : counts) {
            for (std::size_t k = 0; k < fNumTargets; ++k) {
                cells[k] = (cells[k] + 1 / fWeight) /
                           (columns[k] + static_cast<long double>(filled) / fWeight);
            }
        }
        return counts;
    }

    static std::int32_t Pick(std::mt19937& generator, const std::vector<long double>& shares) {
        const long double u = (static_cast<long double>(generator()) + 0.5L) / 4294967296.0L;
        long double below = 0.0L;
        for (std::size_t i = 0; i + 1 < shares.size(); ++i) {
            below += shares[i];
            if (u <= below) return static_cast<std::int32_t>(i);
        }
        return static_cast<std::int32_t>(shares.size()) - 1;
    }

    std::size_t fNumTargets;
    long double fWeight = 0.0L;
    std::vector<long double> fPriors;
    std::vector<std::vector<std::vector<long double>>> fTables;  // predictor, code, target
};

}  // namespace SearchOracle

#endif  // PREDSEL_NAIVEBAYES_TESTS_SEARCHORACLE_H

#ifndef PREDSEL_NAIVEBAYES_NBWINNER_H
#define PREDSEL_NAIVEBAYES_NBWINNER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// The target category with the largest posterior, at least one is given. Of a tie the heaviest by
/// weights wins. ties: scratch, target categories with the best value.
inline std::int32_t NBFindWinner(std::span<const double> posteriors,
                                 const std::vector<double>& weights,
                                 std::vector<std::size_t>& ties) {
    // Intended: category 0 never joins a tie, so one of 0 and another goes to 0 whatever their
    // weights, and in one of 0 and several others the first of these is passed over, see
    // NBAlgorithmTies.
    ties.clear();
    std::size_t winner = 0;
    double best = posteriors[0];
    for (std::size_t k = 1; k < posteriors.size(); ++k) {
        if (posteriors[k] > best) {
            best = posteriors[k];
            winner = k;
            ties.assign(1, k);
        } else if (posteriors[k] == best) {
            ties.push_back(k);
        }
    }
    for (std::size_t i = 1; i < ties.size(); ++i) {
        if (weights[ties[i]] > weights[winner]) winner = ties[i];
    }
    return static_cast<std::int32_t>(winner);
}

#endif  // PREDSEL_NAIVEBAYES_NBWINNER_H

#ifndef PREDSEL_FEATURESELECT_FSORDERFREESUM_H
#define PREDSEL_FEATURESELECT_FSORDERFREESUM_H

#include <cstddef>
#include <vector>

#include "featureselect/FSDoubleDouble.h"

/// A sum of numbers not below 0 to about 31 digits, whose bits don't depend on the order of its
/// terms.
class FSOrderFreeSum {
 public:
    void Reserve(std::size_t terms) { fvParts.reserve(2 * terms); }
    void Add(const FSDoubleDouble& term) {
        fvParts.push_back(term.High());
        fvParts.push_back(term.Low());
    }
    /// NaN with a term that is not finite. The terms are used up.
    FSDoubleDouble Total();

 private:
    std::vector<double> fvParts;
};

#endif  // PREDSEL_FEATURESELECT_FSORDERFREESUM_H

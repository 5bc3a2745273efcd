#ifndef PREDSEL_NAIVEBAYES_NBRECORDSIMULATOR_H
#define PREDSEL_NAIVEBAYES_NBRECORDSIMULATOR_H

#include <cstdint>
#include <vector>

#include "host/Records.h"

class MCRandom;
class NBayesInput;
class NBayesOutput;

/// Draws records from the model itself: a target category by the priors, then a category of each
/// predictor by its probabilities given that target. Each draw inverts a distribution function by
/// walking the categories, and takes one uniform number, so that a record takes 1 + number of
/// tables of them.
class NBRecordSimulator {
 public:
    /// All are borrowed from the search.
    NBRecordSimulator(const std::vector<NBayesInput>& inputs, const NBayesOutput& output,
                      MCRandom& random);

    /// The next record: the target code, then the code of table j at position j + 1. Valid until
    /// the next call.
    const MCCommon::Record& Draw();

 private:
    const std::vector<NBayesInput>& fvInputs;
    const NBayesOutput& fOutput;
    MCRandom& fRandom;
    MCCommon::Record fRecord;
};

#endif  // PREDSEL_NAIVEBAYES_NBRECORDSIMULATOR_H

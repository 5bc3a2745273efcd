#include "naivebayes/NBRecordSimulator.h"

#include <cstddef>

#include "naivebayes/MCRandom.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"

namespace {

/// The category in whose share u falls. probability(i) is the share of category i below count; the
/// shares need not add up to 1, what is beyond them goes to the last category.
template <class Probability>
std::int32_t Invert(double u, std::int32_t count, Probability probability) {
    std::int32_t category = 0;
    while (category < count - 1 && u > probability(category)) {
        u -= probability(category);
        ++category;
    }
    return category;
}

}  // namespace

NBRecordSimulator::NBRecordSimulator(const std::vector<NBayesInput>& inputs,
                                     const NBayesOutput& output, MCRandom& random)
    : fvInputs(inputs),
      fOutput(output),
      fRandom(random),
      fRecord(static_cast<std::int32_t>(inputs.size()) + 1) {}

const MCCommon::Record& NBRecordSimulator::Draw() {
    const std::int32_t target =
        Invert(fRandom.GetUniform(), fOutput.GetNumCategories(),
               [this](std::int32_t category) { return fOutput.GetPi(category); });
    fRecord[0] = target;
    std::int32_t position = 1;
    for (const NBayesInput& input : fvInputs) {
        fRecord[position++] = Invert(fRandom.GetUniform(), input.GetNumCategories(),
                                     [&input, target](std::int32_t category) {
                                         return input.GetProbability(category, target);
                                     });
    }
    return fRecord;
}

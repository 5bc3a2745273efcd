#ifndef PREDSEL_NAIVEBAYES_TESTS_SAVEDMODELS_H
#define PREDSEL_NAIVEBAYES_TESTS_SAVEDMODELS_H

#include <memory>
#include <string>

#include "naivebayes/INBAlgorithm.h"

// One small model, always the same, with its saved forms: for golden files, round trips and damaged
// states.

namespace savedmodels {

/// Of a categorical, a string and a continuous predictor with an empty bin; labels and user-missing
/// values; one more predictor that carried no information and one candidate that is not in it.
std::unique_ptr<INBAlgorithm> SmallModel();
std::string SmallModelBinary();
std::string SmallModelXML();

/// Restores the bytes and does to the engine all that may be done to it; a refusal is fine.
void UseBinary(const std::string& bytes);
void UseXML(const std::string& text);

}  // namespace savedmodels

#endif  // PREDSEL_NAIVEBAYES_TESTS_SAVEDMODELS_H

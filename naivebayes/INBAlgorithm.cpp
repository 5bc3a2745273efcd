#include "naivebayes/INBAlgorithm.h"

INBAlgorithm::~INBAlgorithm() = default;

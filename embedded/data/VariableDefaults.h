#ifndef PREDSEL_EMBEDDED_DATA_VARIABLEDEFAULTS_H
#define PREDSEL_EMBEDDED_DATA_VARIABLEDEFAULTS_H

#include <string>

#include "embedded/data/DataSet.h"

namespace embedded {

/// A variable as it is where no dictionary says more: type and format by the values, labels for
/// booleans, level unknown. Numbers show without decimals when all are whole, else with two, as
/// long as decimals is negative.
KOLT_Variable NewVariable(std::string name, const Column& column, ColumnKind kind,
                          std::int32_t decimals = -1);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_VARIABLEDEFAULTS_H

#include "embedded/data/VariableDefaults.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace embedded {
namespace {

bool AreAllWhole(const Column& column) {
    const auto areWhole = [](std::span<const double> values) {
        // The missing value is whole.
        return std::all_of(values.begin(), values.end(),
                           [](double value) { return value == std::floor(value); });
    };
    if (column.IsCoded()) {
        return areWhole(column.Categories().Numbers());
    }
    ColumnBuffer buffer;
    for (std::int32_t i = 0; i < column.ChunkCount(); ++i) {
        if (!areWhole(column.Numbers(i, buffer))) {
            return false;
        }
    }
    return true;
}

}  // namespace

KOLT_Variable NewVariable(std::string name, const Column& column, ColumnKind kind,
                          std::int32_t decimals) {
    KOLT_Variable variable;
    variable.SetName(std::move(name));
    switch (kind) {
        case ColumnKind::kString: {
            std::size_t longest = 1;  // a string variable has at least one byte
            for (const std::string& value : column.Categories().Strings()) {
                longest = std::max(longest, value.size());
            }
            const auto width = static_cast<std::int32_t>(longest);
            variable.SetType(width);
            variable.SetFormat({kFormatString, width, 0});
            break;
        }
        case ColumnKind::kBoolean:
            variable.SetFormat({kFormatNumber, 8, 0});
            variable.SetValueLabel(0.0, "false");
            variable.SetValueLabel(1.0, "true");
            break;
        case ColumnKind::kDate:
            variable.SetFormat({kFormatDate, 10, 0});
            break;
        case ColumnKind::kDateTime:
            variable.SetFormat({kFormatDateTime, 19, 0});
            break;
        case ColumnKind::kTime:
            variable.SetFormat({kFormatTime, 8, 0});
            break;
        case ColumnKind::kNumber: {
            if (decimals < 0) {
                decimals = AreAllWhole(column) ? 0 : 2;
            }
            variable.SetFormat({kFormatNumber, 8, decimals});
            break;
        }
    }
    return variable;
}

}  // namespace embedded

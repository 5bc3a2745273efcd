#include "featureselect/FSBlockCases.h"

#include <variant>

#include "featureselect/IFSPredTargetAccum.h"

void FSBlockPart::AddPlainly(const FSBlockCases& cases) const {
    std::vector<std::uint32_t> rows;
    for (std::size_t row = 0; row < cases.Rows(); ++row) {
        if (cases.Counts(row)) rows.push_back(static_cast<std::uint32_t>(row));
    }
    AddRows(cases, rows);
}

void FSBlockPart::AddRows(const FSBlockCases& cases, std::span<const std::uint32_t> rows) const {
    const bool categorical = fpAccum->IsCategorical();
    const auto add = [&](const auto& values) {
        for (const std::uint32_t row : rows) {
            const double weight = cases.fWeights[row];
            if (FSBlockColumn::IsMissing(values[row], categorical)) {
                fpAccum->AddMissing(weight);
                continue;
            }
            const double value = FSBlockColumn::ValueOf(values[row]);
            if (cases.fTarget == FSBlockCases::kNone) {
                fpAccum->AddValue(value, weight, true);
            } else {
                fpAccum->AddPair(value, cases.fTargets[row], weight, true);
            }
        }
    };
    std::visit(add, fColumn.fValues);
}

MCCommon::BlockColumn FSBlockColumn::Cut(const MCCommon::BlockColumn& column, std::size_t first,
                                         std::size_t count) {
    MCCommon::BlockColumn cut{{}, column.fEntryEnd};
    std::visit([&](const auto& values) { cut.fValues = values.subspan(first, count); },
               column.fValues);
    return cut;
}

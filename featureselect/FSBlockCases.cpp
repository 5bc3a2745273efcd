#include "featureselect/FSBlockCases.h"

#include <variant>

#include "featureselect/IFSPredTargetAccum.h"

void FSBlockPart::AddPlainly(const FSBlockCases& cases) const {
    const bool categorical = fpAccum->IsCategorical();
    const auto add = [&](const auto& values) {
        for (std::size_t row = 0; row < cases.Rows(); ++row) {
            if (!cases.Counts(row)) continue;
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

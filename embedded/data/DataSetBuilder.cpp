#include "embedded/data/DataSetBuilder.h"

#include <utility>

#include "embedded/data/ColumnBuilder.h"
#include "embedded/data/VariableDefaults.h"

namespace embedded {

KOLT_Variable& DataSetBuilder::Last() { return fvPending.back().fVariable; }

DataSetBuilder& DataSetBuilder::Add(KOLT_Variable variable, Column column, ColumnKind kind) {
    fvPending.push_back({std::move(variable), std::move(column), kind});
    return *this;
}

DataSetBuilder& DataSetBuilder::Numbers(std::string name, const std::vector<double>& values) {
    NumericColumnBuilder builder;
    for (const double value : values) {
        builder.Append(value);
    }
    Column column = std::move(builder).Finish();
    KOLT_Variable variable = NewVariable(std::move(name), column, ColumnKind::kNumber);
    return Add(std::move(variable), std::move(column), ColumnKind::kNumber);
}

DataSetBuilder& DataSetBuilder::Strings(std::string name,
                                        const std::vector<std::optional<std::string>>& values) {
    StringColumnBuilder builder;
    for (const std::optional<std::string>& value : values) {
        if (value) {
            builder.Append(*value);
        } else {
            builder.AppendMissing();
        }
    }
    Column column = std::move(builder).Finish();
    KOLT_Variable variable = NewVariable(std::move(name), column, ColumnKind::kString);
    return Add(std::move(variable), std::move(column), ColumnKind::kString);
}

DataSetBuilder& DataSetBuilder::Kind(ColumnKind kind) {
    Pending& last = fvPending.back();
    last.fKind = kind;
    last.fVariable = NewVariable(last.fVariable.GetName(), last.fColumn, kind);
    return *this;
}

DataSetBuilder& DataSetBuilder::Label(std::string label) {
    Last().SetLabel(std::move(label));
    return *this;
}

DataSetBuilder& DataSetBuilder::Level(std::int32_t level) {
    Last().SetMeasurementLevel(level);
    return *this;
}

DataSetBuilder& DataSetBuilder::Format(const KoltFormat& format) {
    Last().SetFormat(format);
    return *this;
}

DataSetBuilder& DataSetBuilder::ValueLabel(KoltObs value, std::string label) {
    Last().SetValueLabel(std::move(value), std::move(label));
    return *this;
}

DataSetBuilder& DataSetBuilder::Missing(KoltMissingSpec spec) {
    Last().SetMissingSpec(std::move(spec));
    return *this;
}

DataSetBuilder& DataSetBuilder::Weight() {
    fvPending.back().fbWeight = true;
    return *this;
}

DataSetBuilder& DataSetBuilder::Split() {
    fvPending.back().fbSplit = true;
    return *this;
}

DataSetBuilder& DataSetBuilder::SourceName(std::string name) {
    fSourceName = std::move(name);
    return *this;
}

DataSetBuilder& DataSetBuilder::NominalMax(std::int32_t count) {
    fNominalMax = count;
    return *this;
}

DataSet DataSetBuilder::Build() {
    DataSet data;
    data.SetSourceName(std::move(fSourceName));
    data.SetNominalMax(fNominalMax);
    std::vector<std::int32_t> splits;
    for (Pending& pending : fvPending) {
        const std::int32_t index =
            data.AddColumn(std::move(pending.fVariable), std::move(pending.fColumn), pending.fKind);
        if (pending.fbWeight) {
            data.SetWeightIndex(index);
        }
        if (pending.fbSplit) {
            splits.push_back(index);
        }
    }
    fvPending.clear();
    data.SetSplitIndices(std::move(splits));
    data.SettleMeasurementLevels();
    return data;
}

}  // namespace embedded

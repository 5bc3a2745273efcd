#ifndef PREDSEL_EMBEDDED_DATA_DATASETBUILDER_H
#define PREDSEL_EMBEDDED_DATA_DATASETBUILDER_H

#include <optional>
#include <string>
#include <vector>

#include "embedded/data/DataSet.h"

namespace embedded {

/// Makes a data set of columns in memory:
///   DataSet data = DataSetBuilder()
///                      .Numbers("age", {31, 45, kSystemMissing})
///                      .Label("Age in years")
///                      .Strings("sex", {"f", "m", std::nullopt})
///                      .Build();
/// Operations without a variable's name speak of the column added last.
class DataSetBuilder {
 public:
    static constexpr double kSystemMissing = MCMV::gMissingValue;

    /// NaN and kSystemMissing are system-missing, infinities too.
    DataSetBuilder& Numbers(std::string name, const std::vector<double>& values);
    DataSetBuilder& Strings(std::string name,
                            const std::vector<std::optional<std::string>>& values);
    /// Booleans, dates and times instead of plain numbers; sets the format that goes with it, and
    /// for booleans the labels.
    DataSetBuilder& Kind(ColumnKind kind);
    DataSetBuilder& Label(std::string label);
    /// kLevelNominal, kLevelOrdinal or kLevelScale; without it Build settles the level by the
    /// values.
    DataSetBuilder& Level(std::int32_t level);
    DataSetBuilder& Format(const KoltFormat& format);
    DataSetBuilder& ValueLabel(KoltObs value, std::string label);
    DataSetBuilder& Missing(KoltMissingSpec spec);
    /// Makes the column added last the weight variable.
    DataSetBuilder& Weight();
    /// Makes the column added last a (further) split-file variable.
    DataSetBuilder& Split();

    DataSetBuilder& SourceName(std::string name);
    DataSetBuilder& NominalMax(std::int32_t count);

    /// The data set; the builder is empty afterwards. REQUIRES: columns of equal length, distinct
    /// names.
    DataSet Build();

 private:
    KOLT_Variable& Last();
    DataSetBuilder& Add(KOLT_Variable variable, Column column, ColumnKind kind);

    struct Pending {
        KOLT_Variable fVariable;
        Column fColumn;
        ColumnKind fKind;
        bool fbWeight = false;
        bool fbSplit = false;
    };
    std::vector<Pending> fvPending;
    std::string fSourceName = "data";
    std::int32_t fNominalMax = 20;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_DATASETBUILDER_H

#ifndef PREDSEL_BACKEND_OUTPUTTABLES_H
#define PREDSEL_BACKEND_OUTPUTTABLES_H

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "host/Output.h"

class PRSValidSpecs;

/// What the tables of both commands have in common.
namespace OutputTables {

// Axes of a dimension.
inline constexpr std::int32_t kRows = 0;
inline constexpr std::int32_t kColumns = 1;
/// Mode of variables and values.
inline constexpr std::int32_t kByLabel = 2;
/// Least width of a column of predictor lists, in points.
inline constexpr std::int32_t kListColumnWidth = 150;

/// A text of the string table.
BpString Key(std::string_view key);
/// Appends a dimension. order 1 is the innermost.
BpDimension MakeDimension(BpPivotTable& table, std::string_view key, std::int32_t axis,
                          std::int32_t order, bool hideTitle);
/// Puts a number at the category of this key.
void Put(const BpGroup& group, std::string_view key, double number, const BpFormatSpec& format);
/// One cell that lists things, one a line or one after the other by the form.
BpComposite ListCell(std::string_view form, bool isKey, const std::vector<BpItem>& items);

/// The notes on how missing values are treated.
void WriteMissingTreatment(const PRSValidSpecs& specs);

/// The rows and columns of the case processing summary.
class CaseProcessingTable {
 public:
    /// Percent has a column only with a categorical target.
    CaseProcessingTable(const PRSValidSpecs& specs, BpProcedure& procedure);
    /// A row of a category of the target.
    void AddCategory(const KoltObs& value, double weight, std::int64_t cases, double percent);
    /// The last rows: valid, excluded and all cases, in weights and in numbers. Then the table is
    /// sent. several: the target has more than one category.
    void Finish(double valid, std::int64_t validCases, double excluded, std::int64_t excludedCases,
                bool several);

 private:
    void FillRow(double weight, std::int64_t cases, std::optional<double> percent) const;

    const PRSValidSpecs& fSpecs;
    BpPivotTable fTable;
    BpDimension fRows;
    BpDimension fColumns;
    std::optional<BpGroup> fCategories;
};

/// The table of selected predictors, by kind. Nothing is shown of an empty kind.
void WriteSelectedTable(BpProcedure& procedure, const std::vector<BpItem>& categorical,
                        const std::vector<BpItem>& scale);

/// Title, caption and width of the table of excluded predictors, and its one column. The rows are
/// each command's own.
class ExcludedTable {
 public:
    explicit ExcludedTable(BpProcedure& procedure);
    BpPivotTable& Table() { return fTable; }
    /// Makes the column. Dimensions stand in the table in the order in which they are made.
    void MakeColumn();

 private:
    BpPivotTable fTable;
};

}  // namespace OutputTables

#endif  // PREDSEL_BACKEND_OUTPUTTABLES_H

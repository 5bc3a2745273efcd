#include "backend/predselect/OutputTables.h"

#include "backend/predselect/PRSValidSpecs.h"

namespace OutputTables {

namespace {

constexpr std::int32_t kMissingTreatment = 4;  // group of the notes

}  // namespace

BpString Key(std::string_view key) { return BpString(key, true); }

BpDimension MakeDimension(BpPivotTable& table, std::string_view key, std::int32_t axis,
                          std::int32_t order, bool hideTitle) {
    const BpDimension dimension(table, Key(key));
    dimension.Position(axis, order, hideTitle ? 1 : 0, 0);
    return dimension;
}

void Put(const BpGroup& group, std::string_view key, double number, const BpFormatSpec& format) {
    group.Category(Key(key)).Cell(BpNumber(number, format));
}

BpComposite ListCell(std::string_view form, bool isKey, const std::vector<BpItem>& items) {
    BpComposite cell(form, isKey);
    cell.AddSublist(items);
    cell.Finish();
    return cell;
}

void WriteMissingTreatment(const PRSValidSpecs& specs) {
    AddNotes(kMissingTreatment, Key("Definition of Missing"),
             Key(specs.GetUserMissExclude() ? "UserMiss excluded ..." : "UserMiss included ..."));
    AddNotes(kMissingTreatment, Key("Cases Used"), Key("Only valid data used ..."));
}

// --- Case Processing Summary --------------------------------------------------------------------

CaseProcessingTable::CaseProcessingTable(const PRSValidSpecs& specs, BpProcedure& procedure)
    : fSpecs(specs),
      fTable(procedure, BpHeading(Key("Case Processing Summary"), "CaseProcessingSummary")),
      fRows(MakeDimension(fTable, "Value", kRows, 1, true)),
      fColumns(MakeDimension(fTable, "Statistics", kColumns, 1, true)) {
    fColumns.Category(Key("N"));
    if (!specs.GetDependCat()) return;
    fColumns.Category(Key("Percent"));
    fCategories = fRows.Group(BpVariable(specs.GetDependVar(), kByLabel), 1, 2);
}

void CaseProcessingTable::FillRow(double weight, std::int64_t cases,
                                  std::optional<double> percent) const {
    Put(fColumns, "N", weight, BpProcedure::Count());
    if (percent) Put(fColumns, "Percent", *percent, BpProcedure::Percent());
    if (fSpecs.GetWeightVar() >= 0) {
        Put(fColumns, "Unweighted N", static_cast<double>(cases), BpProcedure::Count());
    }
}

void CaseProcessingTable::AddCategory(const KoltObs& value, double weight, std::int64_t cases,
                                      double percent) {
    fCategories->Category(BpDataValue(fSpecs.GetDependVar(), value, kByLabel));
    FillRow(weight, cases, percent);
}

void CaseProcessingTable::Finish(double valid, std::int64_t validCases, double excluded,
                                 std::int64_t excludedCases, bool several) {
    fRows.Category(Key("Valid"));
    FillRow(valid, validCases, several ? std::optional(100.0) : std::nullopt);
    fRows.Category(Key("Excluded"));
    FillRow(excluded, excludedCases, std::nullopt);
    fRows.Category(Key("Total"));
    FillRow(valid + excluded, validCases + excludedCases, std::nullopt);
    fTable.Send();
}

// --- Lists of predictors ------------------------------------------------------------------------

void WriteSelectedTable(BpProcedure& procedure, const std::vector<BpItem>& categorical,
                        const std::vector<BpItem>& scale) {
    BpPivotTable table(procedure, BpHeading(Key("Selected Predictors"), "SelectedPredictors"));
    table.SetMinDataColumnWidth(kListColumnWidth);
    const BpDimension rows = MakeDimension(table, "Type", kRows, 1, true);
    const BpDimension columns = MakeDimension(table, "Predictors", kColumns, 1, true);
    columns.Category(Key("Predictors"));
    const auto addRow = [&](std::string_view key, const std::vector<BpItem>& names) {
        if (!names.empty()) rows.Category(Key(key)).Cell(ListCell("[%1: ^1:]1", true, names));
    };
    addRow("Categorical", categorical);
    addRow("Scale", scale);
    table.Send();
}

ExcludedTable::ExcludedTable(BpProcedure& procedure)
    : fTable(procedure, BpHeading(Key("Excluded Predictors"), "ExcludedPredictors")) {
    fTable.SetCaption(Key("Screening performed in displayed order ..."));
    fTable.SetMinDataColumnWidth(kListColumnWidth);
}

void ExcludedTable::MakeColumn() {
    MakeDimension(fTable, "Predictors", kColumns, 1, true).Category(Key("Predictors"));
}

}  // namespace OutputTables

#include "backend/predselect/NaiveOutput.h"

#include "backend/predselect/OutputTables.h"
#include "backend/predselect/PRSMultiFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "host/CaseDelivery.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBVarList.h"

using OutputTables::kByLabel;
using OutputTables::Key;
using OutputTables::kRows;
using OutputTables::ListCell;
using OutputTables::MakeDimension;

namespace {

constexpr std::int32_t kFiles = 2;  // group of the notes

}  // namespace

NaiveOutput::NaiveOutput(const PRSValidSpecs& specs, const PRSMultiFactory& controller,
                         const ProcedureDataSource& source, BpProcedure& procedure)
    : fSpecs(specs), fController(controller), fSource(source), fProcedure(procedure) {}

const INBAlgorithm& NaiveOutput::Engine() const { return *fController.GetAlgorithm(); }

std::int32_t NaiveOutput::VariableOf(std::int32_t listIndex) const {
    // The list stands in the order of the record.
    return fSpecs.GetVarValidSpecs()->GetKOLTVarIndex(listIndex);
}

BpVariable NaiveOutput::Heading(std::int32_t listIndex) const {
    return BpVariable(VariableOf(listIndex), kByLabel);
}

void NaiveOutput::WriteMissingNotes() const {
    OutputTables::WriteMissingTreatment(fSpecs);
    if (!fSpecs.GetModelFile().empty()) {
        AddNotes(kFiles, Key("Model File"), BpString(fSpecs.GetModelFile(), false));
    }
}

void NaiveOutput::WriteTables() const {
    if (fController.GetAlgorithm() == nullptr) return;
    const bool searched = !fSpecs.IsNoSelection();
    if (fSpecs.GetPrintCPS()) WriteCaseProcessing();
    if (fSpecs.GetPrintExcluded()) WriteExcludedPredictors();
    if (fSpecs.GetPrintSummary() && searched) WriteSubsetSummary();
    if (fSpecs.GetPrintSelected() && searched) WriteSelectedPredictors();
    if (fSpecs.GetPrintClassification()) WriteClassification();
}

void NaiveOutput::WriteCaseProcessing() const {
    const INBAlgorithm& engine = Engine();
    double valid = 0, excluded = 0;
    std::int32_t validCases = 0, excludedCases = 0;
    engine.GetRecordCounts(valid, excluded, validCases, excludedCases);

    OutputTables::CaseProcessingTable table(fSpecs, fProcedure);
    const std::int32_t categories = engine.GetNumTargetCategories();
    const std::int32_t target = fSpecs.GetDependVar();
    for (std::int32_t code = 0; code < categories; ++code) {
        std::int32_t variable = -1;
        KoltObs value;
        if (!fController.GetInputAdapter().DecodeCatValue(target, code, variable, value)) continue;
        const INBAlgorithm::CategoryCounts counts = engine.GetTargetCategoryCounts(code);
        table.AddCategory(value, counts.fWeighted, counts.fUnweighted,
                          counts.fWeighted / valid * 100.0);
    }
    table.Finish(valid, validCases, excluded, excludedCases, categories > 1);
}

void NaiveOutput::WriteExcludedPredictors() const {
    const std::vector<std::int32_t>& empty = fController.GetEmptyPredList();
    const std::vector<std::int32_t>& constant = fController.GetConstPredList();
    if (empty.empty() && constant.empty()) return;

    OutputTables::ExcludedTable excluded(fProcedure);
    const BpDimension reasons = MakeDimension(excluded.Table(), "Reason", kRows, 1, true);
    const BpDimension types = MakeDimension(excluded.Table(), "Type", kRows, 2, true);
    excluded.MakeColumn();
    const auto fillRow = [&](std::string_view reason, const std::vector<std::int32_t>& predictors,
                             bool categorical) {
        const BpCategory row = reasons.Category(Key(reason));
        std::vector<BpItem> listed;
        for (const std::int32_t variable : predictors) {
            if (fSpecs.GetVarValidSpecs()->GetKOLTCatVar(variable) == categorical) {
                listed.push_back(BpVariable(variable, kByLabel));
            }
        }
        if (!listed.empty()) row.Cell(ListCell("[%1:\\n ^1:]1", true, listed));
    };
    for (const bool categorical : {true, false}) {
        types.Category(Key(categorical ? "Categorical" : "Scale"));
        fillRow("All Cases Missing", empty, categorical);
        fillRow("All Cases Constant", constant, categorical);
    }
    excluded.Table().Send();
}

void NaiveOutput::WriteSelectedPredictors() const {
    const NBVarList& list = Engine().GetVarList();
    std::vector<BpItem> categorical;
    std::vector<BpItem> scale;
    for (std::int32_t i = 0; i < list.GetNumVariables(); ++i) {
        if (list.GetRole(i) != NBRole::kInput) continue;
        const BpString name(fSource.GetVariable(VariableOf(i)).GetName(), false);
        (list.GetVariable(i)->GetMeasureLevel() == NBMeasureLevel::kContinuous ? scale
                                                                               : categorical)
            .push_back(name);
    }
    OutputTables::WriteSelectedTable(fProcedure, categorical, scale);
}

bool NaiveOutput::SearchedSimulated() const {
    if (fSpecs.GetPseudoBIC()) return false;
    double valid = 0, excluded = 0;
    std::int32_t validCases = 0, excludedCases = 0;
    Engine().GetRecordCounts(valid, excluded, validCases, excludedCases);
    return std::int64_t{validCases} + excludedCases > Engine().GetSettings().fMaxRecordsInMemory;
}

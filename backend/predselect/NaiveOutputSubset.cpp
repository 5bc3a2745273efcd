// The steps of the subset search, one row a subset.

#include <algorithm>
#include <cstddef>

#include "backend/predselect/NaiveOutput.h"
#include "backend/predselect/OutputTables.h"
#include "backend/predselect/PRSMultiFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "host/Assertion.h"
#include "naivebayes/INBAlgorithm.h"

using OutputTables::kByLabel;
using OutputTables::kColumns;
using OutputTables::Key;
using OutputTables::kRows;
using OutputTables::ListCell;
using OutputTables::MakeDimension;
using OutputTables::Put;

namespace {

constexpr std::int32_t kColumnWidth = 100;

// Place among the subsets and criterion, by subset: the forced predictors alone first when there
// are any.
struct RankedSubsets {
    std::vector<std::int32_t> fvRanks;
    std::vector<double> fvCriteria;
};

RankedSubsets RankSubsets(const std::vector<NBSubset>& fSelectResults, std::int32_t base,
                          std::int32_t numSubsets) {
    PREDSEL_ASSERT(static_cast<std::int32_t>(fSelectResults.size()) == numSubsets,
                   "fSelectResults.size() == numSubsets");
    RankedSubsets ranked;
    ranked.fvRanks.resize(fSelectResults.size());
    ranked.fvCriteria.resize(fSelectResults.size());
    for (std::size_t position = 0; position < fSelectResults.size(); ++position) {
        const std::int32_t subsetIndex = fSelectResults[position].fSize - base;
        PREDSEL_ASSERT(subsetIndex >= 0, "subsetIndex >= 0");
        PREDSEL_ASSERT(subsetIndex < numSubsets, "subsetIndex < numSubsets");
        const auto i = static_cast<std::size_t>(subsetIndex);
        ranked.fvRanks[i] = static_cast<std::int32_t>(position) + 1;
        ranked.fvCriteria[i] = fSelectResults[position].fCriterion;
    }
    return ranked;
}

}  // namespace

void NaiveOutput::WriteSubsetSummary() const {
    const std::vector<std::int32_t>& fSelectPredictors = fController.GetSelectPredictors();
    // A forced predictor that turned out to carry no information has left the chain.
    std::vector<BpItem> forced;
    for (const std::int32_t predictor : fSelectPredictors) {
        const auto* all = fSpecs.GetForcePredList();
        const std::int32_t variable = VariableOf(predictor);
        if (all == nullptr || std::find(all->begin(), all->end(), variable) == all->end()) break;
        forced.push_back(BpVariable(variable, kByLabel));
    }
    const auto numForced = static_cast<std::int32_t>(forced.size());
    const bool search = fSpecs.GetMaxSubsetSize() >= 0;
    const std::int32_t numAdded = static_cast<std::int32_t>(fSelectPredictors.size()) - numForced;
    RankedSubsets ranked;
    if (search) {
        ranked = RankSubsets(fController.GetSelectBest(), std::max(numForced, 1),
                             numAdded + (numForced > 0 ? 1 : 0));
    }

    BpPivotTable table(fProcedure, BpHeading(Key("Subset Summary"), "SubsetSummary"));
    table.SetMinDataColumnWidth(kColumnWidth);
    const BpDimension rows = MakeDimension(table, "Subset", kRows, 1, false);
    const BpDimension columns = MakeDimension(table, "Statistics", kColumns, 1, true);
    const char* const criterionKey = fSpecs.GetPseudoBIC() ? "Pseudo-BIC" : "Test Data Criterion";
    columns.Category(Key("Predictor Added"));
    if (search) {
        columns.Category(Key("Rank"));
        columns.Category(Key(criterionKey));
    }
    columns.Category(Key("Average Log-Likelihood"));

    const auto putRanking = [&](std::int32_t subset) {
        const auto i = static_cast<std::size_t>(subset);
        Put(columns, "Rank", ranked.fvRanks[i], BpProcedure::Count());
        Put(columns, criterionKey, ranked.fvCriteria[i], BpProcedure::GeneralStat());
    };
    const auto likelihood = [&](std::int32_t size) {
        return BpNumber(fController.GetSelectCriteria()[static_cast<std::size_t>(size - 1)],
                        BpProcedure::GeneralStat());
    };

    rows.Category(BpNumber(0, BpProcedure::Count()));
    const BpCategory initial = columns.Category(Key("Predictor Added"));
    initial.Cell(Key("(Initial Subset)"));
    if (numForced == 0) {
        initial.CellNote(Key("The initial subset is empty."));
    } else {
        initial.CellNote(ListCell("The initial subset contains [%1:, ^1:]1", true, forced));
        if (fSpecs.GetPseudoBIC()) {
            columns.Category(Key("Average Log-Likelihood")).Cell(likelihood(numForced));
        }
        if (search) putRanking(0);
    }

    const bool simulated = SearchedSimulated();
    for (std::int32_t j = 1; j <= numAdded; ++j) {
        rows.Category(BpNumber(j, BpProcedure::Count()));
        const auto at = static_cast<std::size_t>(numForced + j - 1);
        PREDSEL_ASSERT(at < fSelectPredictors.size(), "numForced + j < fSelectPredictors.size()");
        columns.Category(Key("Predictor Added")).Cell(Heading(fSelectPredictors[at]));
        const BpCategory average = columns.Category(Key("Average Log-Likelihood"));
        average.Cell(likelihood(numForced + j));
        if (simulated) average.CellNote(Key("Computed using simulated..."));
        // Without forced predictors the first row has no place in the ranking.
        if (search) putRanking(numForced > 0 ? j : j - 1);
    }
    table.Send();
}

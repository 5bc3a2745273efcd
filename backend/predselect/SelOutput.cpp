#include "backend/predselect/SelOutput.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

#include "backend/predselect/OutputTables.h"
#include "backend/predselect/PRSUniFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "featureselect/FSSettings.h"
#include "featureselect/IFSAlgorithm.h"
#include "host/CaseDelivery.h"
#include "host/Data.h"
#include "host/Records.h"

using OutputTables::kByLabel;
using OutputTables::kColumns;
using OutputTables::Key;
using OutputTables::kRows;
using OutputTables::ListCell;
using OutputTables::MakeDimension;
using OutputTables::Put;

namespace {

enum PredictorSetType { kAllCategorical = 0, kAllContinuous = 1 };
enum CriterionNumber { kPearson = 0, kLikelihood = 1, kCramer = 2, kLambda = 3, kF = 4, kT = 5 };

// The numbers behind a criterion of one predictor, by the names that the tables give them.
struct CriterionNumbers {
    double fValue = MCMV::gMissingValue;
    double fStatistic = MCMV::gMissingValue;
    double fFirst = MCMV::gMissingValue;
    double fSecond = MCMV::gMissingValue;
};

CriterionNumbers NumbersOf(const IFSAlgorithm& engine, std::int32_t criterion,
                           std::int32_t predictor) {
    CriterionNumbers numbers;
    engine.GetPredictorCriterion(criterion, predictor, numbers.fValue, numbers.fStatistic,
                                 numbers.fFirst, numbers.fSecond);
    return numbers;
}

// The significance of a predictor by a criterion, with its logarithm where it has one.
void PutSignificance(const BpGroup& group, const IFSAlgorithm& engine, std::int32_t criterion,
                     std::int32_t predictor, double value) {
    const BpCategory cell = group.Category(Key("Unadjusted Sig."));
    double logP = MCMV::gMissingValue;
    if (engine.GetPredictorLogP(criterion, predictor, logP)) {
        cell.Cell(BpNumber(value, BpProcedure::Significance(), logP));
    } else {
        cell.Cell(BpNumber(value, BpProcedure::Significance()));
    }
}

// An F of groups without any spread is the strongest possible and cannot be written as a number.
void PutF(const BpCategory& cell, const CriterionNumbers& numbers) {
    cell.Cell(BpNumber(numbers.fStatistic, BpProcedure::GeneralStat()));
    if (numbers.fStatistic == MCMV::gMissingValue && numbers.fValue == 0.0) {
        cell.CellNote(Key("No within-factor variation..."));
    }
}

// The t of a perfect correlation likewise. The statistic is the correlation, the first further
// number t, the second its degrees of freedom.
void PutT(const BpCategory& cell, const CriterionNumbers& numbers) {
    cell.Cell(BpNumber(numbers.fFirst, BpProcedure::GeneralStat()));
    const bool perfect =
        numbers.fStatistic != MCMV::gMissingValue && std::abs(numbers.fStatistic) >= 1.0;
    if (numbers.fFirst == MCMV::gMissingValue && perfect) {
        cell.CellNote(Key("Pearson correlation equals one..."));
    }
}

}  // namespace

SelOutput::SelOutput(const PRSValidSpecs& specs, const PRSUniFactory& controller,
                     const ProcedureDataSource& source, BpProcedure& procedure)
    : fSpecs(specs), fController(controller), fSource(source), fProcedure(procedure) {}

IFSAlgorithm& SelOutput::Engine() const { return *fController.GetAlgorithm(); }

std::int32_t SelOutput::VariableOf(std::int32_t predictor) const {
    return (*fSpecs.GetPredictList())[static_cast<std::size_t>(predictor)];
}

BpVariable SelOutput::Heading(std::int32_t predictor) const {
    return BpVariable(VariableOf(predictor), kByLabel);
}

void SelOutput::WarnNoneSelected() const {
    BpError(Key("No predictors were selected."), kBpErrorShow, kBpWarning);
}

void SelOutput::WriteMissingNotes() const { OutputTables::WriteMissingTreatment(fSpecs); }

void SelOutput::WriteTables() const {
    WriteCaseProcessing();
    WriteExcludedPredictors();
    WritePredictorSummary();
    WritePredictorChart();
    WriteSelectedPredictors();
}

// --- Case Processing Summary --------------------------------------------------------------------

void SelOutput::WriteCaseProcessing() const {
    if (!fSpecs.GetPrintCPS()) return;
    const IFSAlgorithm& engine = Engine();
    double valid = 0, excluded = 0;
    std::int32_t validCases = 0, excludedCases = 0;
    engine.GetRecordCounts(valid, excluded, validCases, excludedCases);

    OutputTables::CaseProcessingTable table(fSpecs, fProcedure);
    std::int32_t categories = 0;
    if (fSpecs.GetDependCat()) {
        categories = engine.GetNumberOfTargetCategories();
        const std::int32_t target = fSpecs.GetDependVar();
        for (std::int32_t position = 0; position < categories; ++position) {
            std::int32_t code = -1, variable = -1;
            IFSAlgorithm::CategoryCount count;
            KoltObs value;
            if (!engine.GetTargetCategoryByIndex(position, code, count)) continue;
            if (!fController.GetInputAdapter()->DecodeCatValue(target, code, variable, value)) {
                continue;
            }
            table.AddCategory(value, count.second, count.first, count.second / valid * 100.0);
        }
    }
    table.Finish(valid, validCases, excluded, excludedCases, categories > 1);
}

// --- Excluded Predictors ------------------------------------------------------------------------

namespace {

enum class Kind { Categorical, Scale };

// What the limit of a row is and when its cell may stand.
enum class LimitRule { None, PercentBelow100, AboveZero, NotZero };

struct ExcludedRow {
    Kind fKind;
    std::int32_t fReason;
    std::string_view fText;
    LimitRule fRule;
    double (PRSValidSpecs::*fLimit)() const;
    const std::string& (PRSValidSpecs::*fTyped)() const;
    bool fbFormIsKey;
};

using PRS = PRSValidSpecs;

// The row of a share in one category alone takes its form as it stands, untranslated. Intended.
constexpr std::array<ExcludedRow, 10> kExcludedRows{{
    {Kind::Categorical, 1, "All Cases Missing", LimitRule::None, nullptr, nullptr, true},
    {Kind::Categorical, 2, "All Cases Constant", LimitRule::None, nullptr, nullptr, true},
    {Kind::Categorical, 3, "Cases Missing > ^1", LimitRule::PercentBelow100, &PRS::GetPctMissing,
     &PRS::GetPctMissingText, true},
    {Kind::Categorical, 4, "Cases Constant > ^1", LimitRule::PercentBelow100, &PRS::GetPctEqual,
     &PRS::GetPctEqualText, false},
    {Kind::Categorical, 5, "Categories Containing One Case > ^1", LimitRule::PercentBelow100,
     &PRS::GetPctUnequal, &PRS::GetPctUnequalText, true},
    {Kind::Scale, 1, "All Cases Missing", LimitRule::None, nullptr, nullptr, true},
    {Kind::Scale, 2, "All Cases Constant", LimitRule::None, nullptr, nullptr, true},
    {Kind::Scale, 3, "Cases Missing > ^1", LimitRule::PercentBelow100, &PRS::GetPctMissing,
     &PRS::GetPctMissingText, true},
    {Kind::Scale, 7, "Standard Deviation < ^1", LimitRule::AboveZero, &PRS::GetStdDev,
     &PRS::GetStdDevText, true},
    {Kind::Scale, 8, "Coefficient Of Variation < ^1", LimitRule::NotZero, &PRS::GetCoefVar,
     &PRS::GetCoefVarText, true},
}};

// Reasons 1 to 3 occur for both kinds and are told apart by the predictor; the others belong to
// the one row that names them.
std::size_t RowOf(std::int32_t reason, bool isCategorical) {
    const auto row = std::find_if(kExcludedRows.begin(), kExcludedRows.end(), [&](const auto& r) {
        if (r.fReason != reason) return false;
        return reason > 3 || (r.fKind == Kind::Categorical) == isCategorical;
    });
    return static_cast<std::size_t>(row - kExcludedRows.begin());
}

BpComposite LimitHeading(const ExcludedRow& row, const PRSValidSpecs& specs) {
    const std::string& typed = (specs.*row.fTyped)();
    BpComposite heading(row.fText, true);
    if (!typed.empty()) {
        heading.Add(BpString(typed, false));
    } else {
        heading.Add(BpNumber((specs.*row.fLimit)(), row.fRule == LimitRule::PercentBelow100
                                                        ? BpProcedure::Percent()
                                                        : BpProcedure::Coefficient()));
    }
    heading.Finish();
    return heading;
}

bool LimitAllowsCell(const ExcludedRow& row, const PRSValidSpecs& specs) {
    if (row.fRule == LimitRule::None) return true;
    const double limit = (specs.*row.fLimit)();
    if (row.fRule == LimitRule::PercentBelow100) return limit < 100.0;
    return row.fRule == LimitRule::AboveZero ? limit > 0.0 : limit != 0.0;
}

}  // namespace

void SelOutput::WriteExcludedPredictors() const {
    if (!fSpecs.GetPrintExcluded()) return;
    const IFSAlgorithm& engine = Engine();
    if (engine.GetNumberOfDeleted() == 0) {
        BpError(Key("No predictors excluded ..."), kBpErrorShow, kBpWarning);
        return;
    }
    const std::vector<std::int32_t> deleted = engine.GetDeletedIndices();
    const std::vector<std::int32_t> reasons = engine.GetDeletionReasons();
    std::array<std::vector<BpItem>, kExcludedRows.size()> lists;
    for (std::size_t i = 0; i < deleted.size(); ++i) {
        const std::size_t row =
            RowOf(reasons[i], engine.GetSettings().IsPredictorCategorical(deleted[i]));
        if (row < lists.size()) lists[row].push_back(Heading(deleted[i]));
    }

    OutputTables::ExcludedTable excluded(fProcedure);
    BpPivotTable& table = excluded.Table();
    excluded.MakeColumn();
    const BpDimension rows = MakeDimension(table, "Reason", kRows, 1, true);
    const BpGroup categorical = rows.Group(Key("Categorical"), 1, 2);
    const BpGroup scale = rows.Group(Key("Scale"), 1, 2);
    for (std::size_t i = 0; i < kExcludedRows.size(); ++i) {
        const ExcludedRow& row = kExcludedRows[i];
        const BpGroup& group = row.fKind == Kind::Categorical ? categorical : scale;
        const BpCategory category = row.fRule == LimitRule::None
                                        ? group.Category(Key(row.fText))
                                        : group.Category(LimitHeading(row, fSpecs));
        if (!lists[i].empty() && LimitAllowsCell(row, fSpecs)) {
            category.Cell(ListCell("[%1:\\n ^1:]1", row.fbFormIsKey, lists[i]));
        }
    }
    table.Send();
}

// --- Criterion and selection --------------------------------------------------------------------

SelOutput::Criterion SelOutput::SettleCriterion() const {
    const std::int32_t setType = Engine().GetSettings().GetPredSetType();
    if (fSpecs.GetDependCat()) {
        if (setType == kAllContinuous) return {kF, true};
        const std::int32_t ranking = fSpecs.GetRanking();
        return {ranking, ranking != kCramer && ranking != kLambda};
    }
    return {setType == kAllContinuous ? kT : kF, true};
}

// A value that could not be computed passes no cut-off.
bool SelOutput::PassesCutoff(const Criterion& criterion, double value) const {
    return !criterion.fbCompared || (value != MCMV::gMissingValue && value < fSpecs.GetPCutoff());
}

SelOutput::Ranking SelOutput::RankAndSelect(const Criterion& criterion, std::int32_t count) const {
    Ranking ranking;
    // Fewer than asked for is no fault: the lists then hold all that remain.
    static_cast<void>(Engine().GetBestPredictors(criterion.fNumber, ranking.fvPredictors,
                                                 ranking.fvValues, count));
    const std::int32_t most = std::min(ranking.Size(), fSpecs.GetEffectiveSelectSize());
    for (std::int32_t position = 0; position < most; ++position) {
        if (!PassesCutoff(criterion, ranking.fvValues[static_cast<std::size_t>(position)])) break;
        ranking.fLastSelected = position;
    }
    return ranking;
}

// --- Predictor Summary --------------------------------------------------------------------------

namespace {

// Columns of the summary by the run's types.
enum class SummaryShape { PerCriterion, ChiSquareAndF, FOnly, FAndCorrelation, CorrelationOnly };

SummaryShape ShapeOf(bool categoricalTarget, std::int32_t setType) {
    if (categoricalTarget) {
        return setType == kAllCategorical  ? SummaryShape::PerCriterion
               : setType == kAllContinuous ? SummaryShape::FOnly
                                           : SummaryShape::ChiSquareAndF;
    }
    return setType == kAllCategorical  ? SummaryShape::FOnly
           : setType == kAllContinuous ? SummaryShape::CorrelationOnly
                                       : SummaryShape::FAndCorrelation;
}

struct StatType {
    std::int32_t fCriterion;
    std::string_view fKey;
    bool fbTest;  // a test with significance and degrees of freedom, not a measure
};
constexpr std::array kStatTypes{
    StatType{kPearson, "Pearson Chi-Square", true},
    StatType{kLikelihood, "Likelihood Ratio Chi-Square", true},
    StatType{kCramer, "Cramer's V", false},
    StatType{kLambda, "Lambda", false},
};

// The columns of the summary. All are made at once, so that their order does not hang on which kind
// of predictor comes first; Fill then works on the row that was made or selected last.
class SummaryColumns {
 public:
    SummaryColumns(const IFSAlgorithm& engine, SummaryShape shape, std::int32_t criterion,
                   BpPivotTable& table)
        : fEngine(engine),
          fShape(shape),
          fCriterion(criterion),
          fStatistics(MakeDimension(table, "Statistics", kColumns, 1, true)) {
        switch (fShape) {
            case SummaryShape::PerCriterion:
                MakeStatTypes(table);
                break;
            case SummaryShape::ChiSquareAndF:
                MakeAll(fStatistics, {"Rank", "Unadjusted Sig."});
                MakeAll(ChiSquareGroup(), {"Value", "df"});
                MakeAll(FGroup(), {"Value", "df1", "df2"});
                break;
            case SummaryShape::FOnly:
                MakeAll(fStatistics, {"Rank", "Unadjusted Sig.", "F", "df1", "df2"});
                break;
            case SummaryShape::FAndCorrelation:
                MakeAll(fStatistics, {"Rank", "Unadjusted Sig."});
                MakeAll(FGroup(), {"Value", "df1", "df2"});
                MakeAll(CorrelationGroup(), {"Value", "t", "df"});
                break;
            case SummaryShape::CorrelationOnly:
                MakeAll(fStatistics, {"Rank", "Unadjusted Sig.", "Pearson Correlation", "t", "df"});
                break;
        }
    }

    /// `value` is the predictor's entry of the ordering, `rank` its position there from 1.
    void Fill(std::int32_t predictor, double value, std::int32_t rank) const {
        if (fShape == SummaryShape::PerCriterion) {
            FillStatTypes(predictor);
            return;
        }
        Put(fStatistics, "Rank", rank, BpProcedure::Count());
        PutSignificance(fStatistics, fEngine, fCriterion, predictor, value);
        const bool categorical = fEngine.GetSettings().IsPredictorCategorical(predictor);
        switch (fShape) {
            case SummaryShape::PerCriterion:
                break;
            case SummaryShape::ChiSquareAndF:
                if (categorical) {
                    FillChiSquare(predictor);
                } else {
                    FillF(FGroup(), "Value", predictor);
                }
                break;
            case SummaryShape::FOnly:
                FillF(fStatistics, "F", predictor);
                break;
            case SummaryShape::FAndCorrelation:
                if (categorical) {
                    FillF(FGroup(), "Value", predictor);
                } else {
                    FillCorrelation(CorrelationGroup(), "Value", predictor);
                }
                break;
            case SummaryShape::CorrelationOnly:
                FillCorrelation(fStatistics, "Pearson Correlation", predictor);
                break;
        }
    }

 private:
    BpGroup ChiSquareGroup() const {
        return fStatistics.Group(
            Key(fCriterion == kLikelihood ? "Likelihood Ratio Chi-Square" : "Pearson Chi-Square"),
            1, 2);
    }
    BpGroup FGroup() const { return fStatistics.Group(Key("F"), 1, 2); }
    BpGroup CorrelationGroup() const { return fStatistics.Group(Key("Pearson Correlation"), 1, 2); }

    static void MakeAll(const BpGroup& group, std::initializer_list<std::string_view> keys) {
        for (const std::string_view key : keys) group.Category(Key(key));
    }

    void MakeStatTypes(BpPivotTable& table) {
        fStatTypes.emplace(MakeDimension(table, "Stat Type", kColumns, 2, true));
        bool anyTest = false;
        for (const StatType& type : kStatTypes) {
            if (!fEngine.GetSettings().IsCriterionOn(type.fCriterion)) continue;
            fStatTypes->Category(Key(type.fKey));
            anyTest = anyTest || type.fbTest;
        }
        if (anyTest) {
            MakeAll(fStatistics, {"Rank", "Unadjusted Sig.", "Value", "df"});
        } else {
            MakeAll(fStatistics, {"Rank", "Value"});
        }
    }

    void FillStatTypes(std::int32_t predictor) const {
        for (const StatType& type : kStatTypes) {
            if (!fEngine.GetSettings().IsCriterionOn(type.fCriterion)) continue;
            fStatTypes->Category(Key(type.fKey));
            const CriterionNumbers numbers = NumbersOf(fEngine, type.fCriterion, predictor);
            const std::int32_t rank =
                fEngine.GetRanks(type.fCriterion)[static_cast<std::size_t>(predictor)];
            Put(fStatistics, "Rank", rank + 1, BpProcedure::Count());
            if (type.fbTest) {
                PutSignificance(fStatistics, fEngine, type.fCriterion, predictor, numbers.fValue);
                Put(fStatistics, "Value", numbers.fStatistic, BpProcedure::GeneralStat());
                Put(fStatistics, "df", numbers.fFirst, BpProcedure::Count());
            } else {
                Put(fStatistics, "Value", numbers.fValue, BpProcedure::GeneralStat());
            }
        }
    }

    void FillChiSquare(std::int32_t predictor) const {
        const CriterionNumbers numbers = NumbersOf(fEngine, fCriterion, predictor);
        Put(ChiSquareGroup(), "Value", numbers.fStatistic, BpProcedure::GeneralStat());
        Put(ChiSquareGroup(), "df", numbers.fFirst, BpProcedure::Count());
    }

    void FillF(const BpGroup& group, std::string_view valueKey, std::int32_t predictor) const {
        const CriterionNumbers numbers = NumbersOf(fEngine, kF, predictor);
        PutF(group.Category(Key(valueKey)), numbers);
        Put(group, "df1", numbers.fFirst, BpProcedure::Count());
        Put(group, "df2", numbers.fSecond, BpProcedure::Count());
    }

    void FillCorrelation(const BpGroup& group, std::string_view valueKey,
                         std::int32_t predictor) const {
        const CriterionNumbers numbers = NumbersOf(fEngine, kT, predictor);
        Put(group, valueKey, numbers.fStatistic, BpProcedure::GeneralStat());
        PutT(group.Category(Key("t")), numbers);
        Put(group, "df", numbers.fSecond, BpProcedure::Count());
    }

    const IFSAlgorithm& fEngine;
    SummaryShape fShape;
    std::int32_t fCriterion;
    BpDimension fStatistics;
    std::optional<BpDimension> fStatTypes;  // PerCriterion alone
};

}  // namespace

void SelOutput::WritePredictorSummary() const {
    if (!fSpecs.GetPrintSummary()) return;
    const Criterion criterion = SettleCriterion();
    const std::int32_t most = fSpecs.GetShowUnselected();
    const Ranking ranking = RankAndSelect(criterion, fSpecs.GetEffectiveSelectSize() + most);

    BpPivotTable table(fProcedure, BpHeading(Key("Predictor Summary"), "PredictorSummary"));
    const BpDimension rows = MakeDimension(table, "Predictor", kRows, 1, false);
    const BpGroup selected = rows.Group(Key("Selected"), 1, 2);
    const SummaryShape shape =
        ShapeOf(fSpecs.GetDependCat(), Engine().GetSettings().GetPredSetType());
    const SummaryColumns columns(Engine(), shape, criterion.fNumber, table);
    const auto addRow = [&](const BpGroup& group, std::int32_t position) {
        const auto at = static_cast<std::size_t>(position);
        group.Category(Heading(ranking.fvPredictors[at]));
        columns.Fill(ranking.fvPredictors[at], ranking.fvValues[at], position + 1);
    };

    for (std::int32_t position = 0; position <= ranking.fLastSelected; ++position) {
        addRow(selected, position);
    }
    const std::int32_t left = ranking.Size() - ranking.fLastSelected - 1;
    if (most > 0 && left > 0) {
        const BpGroup unselected = rows.Group(Key("Unselected"), 1, 2);
        const std::int32_t last = ranking.fLastSelected + std::min(left, most);
        for (std::int32_t position = ranking.fLastSelected + 1; position <= last; ++position) {
            addRow(unselected, position);
        }
        if (left > most) {
            BpComposite note("Limited to the first ^1 unselected predictors.", true);
            note.Add(BpNumber(most, BpProcedure::Count()));
            note.Finish();
            unselected.Note(note);
        }
    }
    table.Send();
}

// --- Selected Predictors ------------------------------------------------------------------------

void SelOutput::WriteSelectedPredictors() const {
    const Criterion criterion = SettleCriterion();
    if (!fSpecs.GetPrintSelected()) {
        std::vector<std::int32_t> best;
        std::vector<double> values;
        static_cast<void>(Engine().GetBestPredictors(criterion.fNumber, best, values, 1));
        if (!values.empty() && !PassesCutoff(criterion, values.front())) WarnNoneSelected();
        return;
    }
    const Ranking ranking = RankAndSelect(criterion, fSpecs.GetEffectiveSelectSize());
    std::vector<BpItem> categorical;
    std::vector<BpItem> scale;
    for (std::int32_t position = 0; position <= ranking.fLastSelected; ++position) {
        const std::int32_t predictor = ranking.fvPredictors[static_cast<std::size_t>(position)];
        const BpString name(fSource.GetVariable(VariableOf(predictor)).GetName(), false);
        (Engine().GetSettings().IsPredictorCategorical(predictor) ? categorical : scale)
            .push_back(name);
    }
    if (categorical.empty() && scale.empty()) {
        WarnNoneSelected();
        return;
    }

    OutputTables::WriteSelectedTable(fProcedure, categorical, scale);
}

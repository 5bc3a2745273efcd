// The XML reports of a ranking.
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "featureselect/FSDeletionReason.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/FSSettings.h"
#include "featureselect/FSVersion.h"
#include "host/Xml.h"

using MCCommonXML::XMLElement;

namespace {

// Local time as the C library writes it, "Sun Sep 16 01:03:52 1973".
std::string Timestamp() {
    const std::time_t now = std::time(nullptr);
    std::string text = std::ctime(&now);  // NOLINT(concurrency-mt-unsafe): one thread
    text.pop_back();                      // its line end
    return text;
}

void AddHeader(XMLElement& root) {
    XMLElement& header = root.AddChild("Header");
    header.AddAttribute("copyright", FSVersion::kCopyright);
    XMLElement& application = header.AddChild("Application");
    application.AddAttribute("name", "ZEV KOLT Feature Selection Component C++");
    application.AddAttribute("version", "1.0");
    header.AddChild("Timestamp").AddText(Timestamp());
}

std::string_view PredictorSetTypeName(std::int32_t type) {
    switch (type) {
        case FSSettings::kAllCategorical:
            return "categorical";
        case FSSettings::kAllContinuous:
            return "continuous";
        case FSSettings::kMixed:
            return "mixed";
        default:
            return {};
    }
}

// Intended: the report of one criterion spells Cramer's V in full, unlike GetCriterionName.
// TheReportOfOneCriterionSpellsCramerInFull holds this.
std::string_view ReportedName(std::int32_t criterion) {
    return criterion == FSCriterion::kCramer ? "Cramer V"
                                             : FSPredictorSet::GetCriterionName(criterion);
}

void WriteReport(std::ostream& stream, const XMLElement& root, std::string_view dtdName) {
    const auto docType = MCCommonXML::XMLDocType::Create(root.Name(), dtdName);
    MCCommonXML::WriteTree(stream, docType.get(), root, 1);
}

}  // namespace

FSStatus FSPredictorSet::WriteOutputOne(std::ostream& stream, std::int32_t criterion,
                                        std::int32_t n) const {
    if (fpCancel->IsCancelled()) return FSStatus::Cancelled();
    if (fStatus != kRanked) return FSStatus::NotRanked();

    const auto root = StartReport("FSOutputOne");
    std::int32_t best = fNumBestSorted;  // 0: all
    if (best != 0 || (n != 0 && n < fNumPredictors)) {
        if (n > 0 && (n < best || best == 0)) best = n;
        root->AddAttribute("predictorChoiceType", "numberOfBest");
        root->AddAttribute("numberOfBest", best);
    } else {
        root->AddAttribute("predictorChoiceType", "all");
    }
    AddHeader(*root);
    XMLElement& named = root->AddChild("Criterion");
    const std::string_view name = ReportedName(criterion);
    if (!name.empty()) named.AddAttribute("name", name);
    AddTarget(*root);

    // Of a mixed set the t order is the F order.
    const bool readsF = criterion == FSCriterion::kTStat && fPredSetType == FSSettings::kMixed;
    const bool skipsCategorical =
        criterion == FSCriterion::kFStat && fpSettings->IsTargetCategorical();
    const std::int32_t slot = readsF ? FSCriterion::kFStat : criterion;
    std::int32_t position = 0;
    std::int32_t written = 0;
    static const decltype(fvpSort)::value_type kNone;
    for (const auto& record : IsCriterion(slot) ? fvpSort[static_cast<std::size_t>(slot)] : kNone) {
        if (best != 0 && position == best) break;
        const std::int32_t rank = position++;
        if (skipsCategorical && fpSettings->IsPredictorCategorical(record->fPredictor)) continue;
        XMLElement& element = AddPredictor(*root, "Predictor", record->fPredictor);
        element.AddAttribute("criterionValue", record->fCriterion);
        element.AddAttribute("rankOrder", rank);
        ++written;
    }
    root->AddAttribute("numberOfPredictors", written);
    WriteReport(stream, *root, "fsoutputonecrit.dtd");
    return FSStatus::Success();
}

FSStatus FSPredictorSet::WriteOutputAll(std::ostream& stream) const {
    if (fpCancel->IsCancelled()) return FSStatus::Cancelled();
    if (fStatus < kChecked) return FSStatus::NotRanked();

    const auto root = StartReport("FSOutputAll");
    AddHeader(*root);
    AddExcluded(*root);
    AddCriteria(*root);
    AddTarget(*root);
    std::int32_t written = 0;
    if (fStatus == kRanked) {
        for (std::int32_t predictor = 0; predictor < fNumPredictors; ++predictor) {
            if (AccumOf(predictor) == nullptr) continue;
            AddCriteriaAndRanks(AddPredictor(*root, "Predictor", predictor), predictor);
            ++written;
        }
    }
    root->AddAttribute("numberOfPredictors", written);
    WriteReport(stream, *root, "fsoutputallcrit.dtd");
    return FSStatus::Success();
}

// The root of a report with the attributes that both begin with.
std::unique_ptr<XMLElement> FSPredictorSet::StartReport(std::string_view rootName) const {
    auto root = std::make_unique<XMLElement>(rootName);
    root->AddAttribute("version", "1.0");
    if (rootName == "FSOutputAll") {
        root->AddAttribute("targetType",
                           fpSettings->IsTargetCategorical() ? "categorical" : "continuous");
    }
    const std::string_view type = PredictorSetTypeName(fPredSetType);
    if (!type.empty()) root->AddAttribute("predictorSetType", type);
    return root;
}

void FSPredictorSet::AddTarget(XMLElement& root) const {
    if (fpSettings->GetTransactions()) return;
    root.AddChild("Target").AddAttribute("targetIndex", fpSettings->GetTargetPosition());
}

XMLElement& FSPredictorSet::AddPredictor(XMLElement& parent, std::string_view name,
                                         std::int32_t predictor) const {
    XMLElement& element = parent.AddChild(name);
    element.AddAttribute("predictorIndex", predictor);
    if (fPredSetType == FSSettings::kMixed) {
        const bool categorical = fpSettings->IsPredictorCategorical(predictor);
        element.AddAttribute("predictorType", categorical ? "categorical" : "continuous");
    }
    return element;
}

// The screening rules and the predictors that they dropped.
void FSPredictorSet::AddExcluded(XMLElement& root) const {
    XMLElement& excluded = root.AddChild("ExcludedPredictors");
    excluded.AddAttribute("numberOfPredictors", GetNumberOfDeleted());

    XMLElement& rules = excluded.AddChild("ScreeningCriteria");
    std::int32_t count = 0;
    const auto addRule = [&](bool on, std::string_view name, std::optional<double> value) {
        if (!on) return;
        XMLElement& rule = rules.AddChild("ScreenCriterion");
        rule.AddAttribute("name", name);
        if (value) rule.AddAttribute("value", *value);
        ++count;
    };
    const FSSettings& settings = *fpSettings;
    addRule(true, GetReasonName(FSDeletionReason::kAllMissing), {});
    addRule(true, GetReasonName(FSDeletionReason::kAllConst), {});
    addRule(settings.GetDeleteManyMissing(), GetReasonName(FSDeletionReason::kManyMissing),
            settings.GetMaxMissingPercent());
    addRule(settings.GetDeleteManyConst(), GetReasonName(FSDeletionReason::kManyConst),
            settings.GetMaxSingleCategoryPercent());
    addRule(settings.GetDeleteManyCategs(), GetReasonName(FSDeletionReason::kManyCategs),
            settings.GetMaxCategoriesPercent());
    addRule(settings.GetDeleteManyCategsOneCase(), "manyCategsWithOneCase",
            settings.GetMaxOneCaseCategoriesPercent());
    addRule(settings.GetDeleteSmallVar(), GetReasonName(FSDeletionReason::kSmallVar),
            settings.GetMinCoefVar());
    addRule(settings.GetDeleteSmallStdDev() && settings.GetMinStdDev() > 0.0,
            GetReasonName(FSDeletionReason::kSmallStdDev), settings.GetMinStdDev());
    rules.AddAttribute("numberOfCriteria", count);

    for (std::size_t at = 0; at < fvDeletedIndices.size(); ++at) {
        XMLElement& element = AddPredictor(excluded, "ExclPredictor", fvDeletedIndices[at]);
        const std::int32_t reason = fvDeletionReasons[at];
        if (reason >= FSDeletionReason::kAllMissing && reason <= FSDeletionReason::kSmallVar) {
            element.AddAttribute("screenCriterion", GetReasonName(reason));
        }
    }
}

void FSPredictorSet::AddCriteria(XMLElement& root) const {
    XMLElement& list = root.AddChild("CriteriaList");
    std::int32_t count = 0;
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        if (!fpSettings->IsCriterionOn(criterion)) continue;
        list.AddChild("Criterion").AddAttribute("name", GetCriterionName(criterion));
        ++count;
    }
    list.AddAttribute("numberOfCriteria", count);
}

void FSPredictorSet::AddCriteriaAndRanks(XMLElement& element, std::int32_t predictor) const {
    using namespace FSCriterion;
    const bool categorical = AccumOf(predictor)->IsCategorical();
    if (!fpSettings->IsTargetCategorical()) {
        AddCriterionAndRank(element, categorical ? kFStat : kTStat, predictor);
    } else if (categorical) {
        for (std::int32_t criterion = kPearson; criterion <= kLambda; ++criterion) {
            AddCriterionAndRank(element, criterion, predictor);
        }
    } else {
        AddCriterionAndRank(element, kFStat, predictor);
        AddSharedTest(element, kPearson, predictor);
        AddSharedTest(element, kLikelihood, predictor);
    }
}

void FSPredictorSet::AddCriterionAndRank(XMLElement& element, std::int32_t criterion,
                                         std::int32_t predictor) const {
    using namespace FSCriterion;
    if (!fpSettings->IsCriterionOn(criterion)) return;
    double value = 0.0;
    double second = 0.0;
    double third = 0.0;
    double fourth = 0.0;
    GetPredictorCriterion(criterion, predictor, value, second, third, fourth);

    XMLElement& shown = element.AddChild("CriterionAndRank");
    shown.AddAttribute("criterionName", GetCriterionName(criterion));
    shown.AddAttribute("criterionValue", value);
    switch (criterion) {
        case kPearson:
        case kLikelihood:
            shown.AddAttribute("statisticValue", second);
            shown.AddAttribute("df", third);
            break;
        case kFStat:
            shown.AddAttribute("statisticValue", second);
            shown.AddAttribute("df", third);
            shown.AddAttribute("df2", fourth);
            break;
        case kTStat:
            shown.AddAttribute("corrCoeff", second);
            shown.AddAttribute("statisticValue", third);
            shown.AddAttribute("df", fourth);
            break;
        default:
            break;
    }
    const std::int32_t rank = RankOf(criterion, predictor);
    if (rank != -1) shown.AddAttribute("rankOrder", rank);
}

// Where a chi-square criterion takes a continuous predictor by its F test: only the place that it
// has there.
void FSPredictorSet::AddSharedTest(XMLElement& element, std::int32_t criterion,
                                   std::int32_t predictor) const {
    const std::int32_t rank = RankOf(criterion, predictor);
    if (!fpSettings->IsCriterionOn(criterion) || rank == -1) return;
    double value = MCMV::gMissingValue;
    double unused = 0.0;
    AccumOf(predictor)->ComputeCriterion(criterion, value, unused, unused, unused, unused);
    XMLElement& shown = element.AddChild("CriterionAndRank");
    shown.AddAttribute("criterionName", GetCriterionName(criterion));
    shown.AddAttribute("criterionValue", value);
    shown.AddAttribute("rankOrder", rank);
}

// -1 where the predictor has none.
std::int32_t FSPredictorSet::RankOf(std::int32_t criterion, std::int32_t predictor) const {
    const std::vector<std::int32_t>& ranks = GetRanks(criterion);
    return ranks.empty() ? -1 : ranks[static_cast<std::size_t>(predictor)];
}

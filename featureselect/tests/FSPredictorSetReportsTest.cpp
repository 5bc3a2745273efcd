#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "featureselect/FSFactory.h"
#include "featureselect/tests/PredictorSetFixture.h"

namespace {

/// An element of a report in document order, its attributes as written.
struct Element {
    std::string fName;
    std::vector<std::pair<std::string, std::string>> fvAttributes;

    /// "(none)" without it.
    std::string operator[](const std::string& name) const {
        for (const auto& [present, value] : fvAttributes) {
            if (present == name) return value;
        }
        return "(none)";
    }
    std::string Names() const {
        std::string names;
        for (const auto& attribute : fvAttributes) {
            names += (names.empty() ? "" : " ") + attribute.first;
        }
        return names;
    }
};

// No attribute of a report holds a quotation mark, an angle bracket or an entity.
std::vector<Element> ElementsOf(const std::string& report) {
    std::vector<Element> elements;
    for (std::size_t at = 0; (at = report.find('<', at)) != std::string::npos; ++at) {
        if (std::isalpha(static_cast<unsigned char>(report[at + 1])) == 0) continue;
        const std::string tag = report.substr(at + 1, report.find('>', at) - at - 1);
        std::size_t end = tag.find_first_of(" /");
        Element element{tag.substr(0, end), {}};
        while (end != std::string::npos && tag[end] == ' ') {
            const std::size_t equals = tag.find("=\"", end);
            const std::size_t quote = tag.find('"', equals + 2);
            element.fvAttributes.emplace_back(tag.substr(end + 1, equals - end - 1),
                                              tag.substr(equals + 2, quote - equals - 2));
            end = quote + 1 < tag.size() ? quote + 1 : std::string::npos;
        }
        elements.push_back(std::move(element));
    }
    return elements;
}

std::vector<Element> Named(const std::vector<Element>& elements, const std::string& name) {
    std::vector<Element> found;
    for (const Element& element : elements) {
        if (element.fName == name) found.push_back(element);
    }
    return found;
}

std::string Names(const std::vector<Element>& elements) {
    std::string names;
    for (const Element& element : elements) {
        names += (names.empty() ? "" : " ") + element.fName;
    }
    return names;
}

// Target, two categorical and two continuous predictors.
const Rows kRows{
    {0, 0, 1.5, 0, 20}, {0, 0, 2.5, 1, 21}, {0, 1, 1.0, 0, 19.5}, {1, 1, 4.0, 1, 24},
    {1, 1, 5.5, 1, 22}, {1, 2, 4.5, 0, 20}, {0, 0, 2.0, 1, 18.5}, {1, 0, 3.5, 1, 23},
};

class FSReports : public PredictorSetTest {
 protected:
    void Prepare(bool targetCategorical, const Rows& rows = kRows) {
        fSettings = FSSettings({true, false, true, false}, targetCategorical);
        fSettings.SetTargetPosition(0);
        Make();
        ASSERT_TRUE(Read(rows).IsOk());
    }

    void Rank(std::int32_t best = 0) {
        ASSERT_TRUE(fpSet->ComputeCriteria().IsOk());
        ASSERT_TRUE((best == 0 ? fpSet->SortAll() : fpSet->SortBest(best)).IsOk());
        ASSERT_TRUE((best == 0 ? fpSet->RankAll() : fpSet->RankBest()).IsOk());
    }

    std::vector<Element> One(std::int32_t criterion, std::int32_t n = 0) {
        std::ostringstream report;
        EXPECT_TRUE(fpSet->WriteOutputOne(report, criterion, n).IsOk());
        fReport = report.str();
        return ElementsOf(fReport);
    }

    std::vector<Element> All() {
        std::ostringstream report;
        EXPECT_TRUE(fpSet->WriteOutputAll(report).IsOk());
        fReport = report.str();
        return ElementsOf(fReport);
    }

    std::string fReport;
};

// --- One criterion ---

TEST_F(FSReports, OneCriterionNamesItsDtdAndItsParts) {
    Prepare(true);
    Rank();
    const auto elements = One(0);
    EXPECT_TRUE(
        fReport.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<!DOCTYPE FSOutputOne SYSTEM \"fsoutputonecrit.dtd\">\n"
                            "<FSOutputOne "));
    EXPECT_EQ(Names(elements),
              "FSOutputOne Header Application Timestamp Criterion Target "
              "Predictor Predictor Predictor Predictor");
    EXPECT_EQ(elements[0].Names(),
              "version predictorSetType predictorChoiceType numberOfPredictors");
    EXPECT_EQ(elements[0]["version"], "1.0");
    EXPECT_EQ(elements[0]["predictorSetType"], "mixed");
    EXPECT_EQ(elements[0]["predictorChoiceType"], "all");
    EXPECT_EQ(elements[0]["numberOfPredictors"], "4");
    EXPECT_EQ(elements[1].Names(), "copyright");
    EXPECT_EQ(elements[2]["name"], "ZEV KOLT Feature Selection Component C++");
    EXPECT_EQ(elements[2]["version"], "1.0");
    EXPECT_EQ(elements[4]["name"], "Pearson");
    EXPECT_EQ(elements[5]["targetIndex"], "0");
}

TEST_F(FSReports, TheTimestampIsTheLocalTimeInTwentyFourCharacters) {
    Prepare(true);
    Rank();
    One(0);
    const std::size_t start = fReport.find("<Timestamp>") + 11;
    const std::string text = fReport.substr(start, fReport.find("</Timestamp>") - start);
    ASSERT_EQ(text.size(), 24U);
    // "Sun Sep 16 01:03:52 1973": A, a and 0 stand for letters and digits, * for a digit or blank.
    const std::string pattern = "Aaa Aaa *0 00:00:00 0000";
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        const auto character = static_cast<unsigned char>(text[at]);
        switch (pattern[at]) {
            case 'A':
                EXPECT_TRUE(std::isupper(character)) << text;
                break;
            case 'a':
                EXPECT_TRUE(std::islower(character)) << text;
                break;
            case '0':
                EXPECT_TRUE(std::isdigit(character)) << text;
                break;
            case '*':
                EXPECT_TRUE(character == ' ' || std::isdigit(character)) << text;
                break;
            default:
                EXPECT_EQ(text[at], pattern[at]) << text;
                break;
        }
    }
}

TEST_F(FSReports, PredictorsStandInTheirOrderWithTheirValues) {
    Prepare(true);
    Rank();
    const auto predictors = Named(One(0), "Predictor");
    Indices indices;
    std::vector<double> values;
    ASSERT_TRUE(fpSet->GetBest(0, 0, indices, values).IsOk());
    ASSERT_EQ(predictors.size(), indices.size());
    for (std::size_t at = 0; at < predictors.size(); ++at) {
        EXPECT_EQ(predictors[at].Names(), "predictorIndex predictorType criterionValue rankOrder");
        EXPECT_EQ(predictors[at]["predictorIndex"], std::to_string(indices[at]));
        EXPECT_EQ(predictors[at]["predictorType"],
                  indices[at] % 2 == 0 ? "categorical" : "continuous");
        EXPECT_EQ(std::stod(predictors[at]["criterionValue"]), values[at]);
        EXPECT_EQ(predictors[at]["rankOrder"], std::to_string(at));
    }
}

TEST_F(FSReports, PredictorsOfOneKindHaveNoType) {
    fSettings = FSSettings(2, kCategorical, true);
    Make();
    ASSERT_TRUE(Read({{0, 0, 1}, {0, 1, 1}, {1, 1, 0}, {1, 1, 1}}).IsOk());
    Rank();
    const auto elements = One(2);
    EXPECT_EQ(elements[0]["predictorSetType"], "categorical");
    EXPECT_EQ(Named(elements, "Predictor")[0]["predictorType"], "(none)");
}

TEST_F(FSReports, TheReportOfOneCriterionSpellsCramerInFull) {
    fSettings = FSSettings(1, kCategorical, true);
    Make();
    ASSERT_TRUE(Read({{0, 0}, {0, 1}, {1, 1}}).IsOk());
    Rank();
    EXPECT_EQ(Named(One(2), "Criterion")[0]["name"], "Cramer V");
    EXPECT_EQ(Named(All(), "Criterion")[2]["name"], "Cramer");
}

TEST_F(FSReports, NoNumberAfterAFullSortReadsAll) {
    Prepare(true);
    Rank();
    EXPECT_EQ(One(0, 0)[0]["predictorChoiceType"], "all");
}

TEST_F(FSReports, TheNumberOfPredictorsAfterAFullSortReadsAll) {
    Prepare(true);
    Rank();
    const auto elements = One(0, 4);
    EXPECT_EQ(elements[0]["predictorChoiceType"], "all");
    EXPECT_EQ(elements[0]["numberOfBest"], "(none)");
    EXPECT_EQ(elements[0]["numberOfPredictors"], "4");
}

TEST_F(FSReports, ASmallerNumberCutsTheList) {
    Prepare(true);
    Rank();
    const auto elements = One(0, 3);
    EXPECT_EQ(elements[0].Names(),
              "version predictorSetType predictorChoiceType numberOfBest numberOfPredictors");
    EXPECT_EQ(elements[0]["predictorChoiceType"], "numberOfBest");
    EXPECT_EQ(elements[0]["numberOfBest"], "3");
    EXPECT_EQ(Named(elements, "Predictor").size(), 3U);
}

TEST_F(FSReports, ASortedHeadLimitsTheList) {
    Prepare(true);
    Rank(2);
    EXPECT_EQ(One(0, 0)[0]["numberOfBest"], "2");
    EXPECT_EQ(One(0, 3)[0]["numberOfBest"], "2");
    EXPECT_EQ(One(0, 1)[0]["numberOfBest"], "1");
    EXPECT_EQ(Named(One(0, 3), "Predictor").size(), 2U);
}

TEST_F(FSReports, ANegativeNumberReadsAsANumberOfZeroAndListsAll) {
    Prepare(true);
    Rank();
    const auto elements = One(0, -1);
    EXPECT_EQ(elements[0]["predictorChoiceType"], "numberOfBest");
    EXPECT_EQ(elements[0]["numberOfBest"], "0");
    EXPECT_EQ(elements[0]["numberOfPredictors"], "4");
}

TEST_F(FSReports, ANumberOfNoCriterionHasNoNameAndNoPredictors) {
    Prepare(true);
    Rank();
    for (const std::int32_t criterion : {-1, 6, 1000000}) {
        const auto elements = One(criterion);
        EXPECT_EQ(Named(elements, "Criterion")[0].Names(), "") << criterion;
        EXPECT_EQ(elements[0]["numberOfPredictors"], "0") << criterion;
    }
}

TEST_F(FSReports, ASetOfUnknownKindHasNoTypeAttribute) {
    Prepare(true);
    Rank();
    auto bytes = testsupport::Save(*fpSet);
    const std::int32_t unknown = FSSettings::kUnknownType;
    std::memcpy(bytes.data() + 21, &unknown, sizeof unknown);
    testsupport::RestoreInto(*fpSet, bytes);
    EXPECT_EQ(One(0)[0].Names(), "version predictorChoiceType numberOfPredictors");
    EXPECT_EQ(All()[0].Names(), "version targetType numberOfPredictors");
}

TEST_F(FSReports, CategoricalPredictorsTakePlacesButNoElementsAtTheFStatistic) {
    // Records of categorical predictors in the F order come only from a restored state that had
    // another target; the set keeps none of its own.
    Prepare(false);
    Rank();
    fSettings.SetTargetCategorical(true);
    const auto elements = One(4);
    Indices indices;
    std::vector<double> values;
    ASSERT_TRUE(fpSet->GetBest(4, 0, indices, values).IsOk());
    ASSERT_EQ(indices.size(), 4U);
    std::vector<std::string> expected;
    for (std::size_t at = 0; at < indices.size(); ++at) {
        if (indices[at] % 2 != 0) expected.push_back(std::to_string(at));
    }
    std::vector<std::string> found;
    for (const Element& predictor : Named(elements, "Predictor")) {
        found.push_back(predictor["rankOrder"]);
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(elements[0]["numberOfPredictors"], "2");
}

TEST_F(FSReports, TheTOrderOfAMixedSetIsTheFOrder) {
    Prepare(false);
    Rank();
    const auto asT = Named(One(5), "Predictor");
    const auto asF = Named(One(4), "Predictor");
    ASSERT_EQ(asT.size(), 4U);
    for (std::size_t at = 0; at < asT.size(); ++at) {
        EXPECT_EQ(asT[at].fvAttributes, asF[at].fvAttributes);
    }
    EXPECT_EQ(Named(One(5), "Criterion")[0]["name"], "t-Statistic");
}

TEST_F(FSReports, OneCriterionNeedsARankedSet) {
    Prepare(true);
    std::ostringstream report;
    ExpectStatus(fpSet->WriteOutputOne(report, 0, 0), 6, -1);
    ASSERT_TRUE(fpSet->ComputeCriteria().IsOk());
    ASSERT_TRUE(fpSet->SortAll().IsOk());
    ExpectStatus(fpSet->WriteOutputOne(report, 0, 0), 6, -1);
    EXPECT_EQ(report.str(), "");
}

TEST_F(FSReports, ACancelledRunWritesNothing) {
    Prepare(true);
    Rank();
    fCancel.Cancel();
    std::ostringstream report;
    ExpectStatus(fpSet->WriteOutputOne(report, 0, 0), 1, -1);
    ExpectStatus(fpSet->WriteOutputAll(report), 1, -1);
    EXPECT_EQ(report.str(), "");
}

// --- All criteria ---

TEST_F(FSReports, AllCriteriaOfAMixedSetWithACategoricalTarget) {
    Prepare(true);
    ASSERT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    Rank();
    const auto elements = All();
    EXPECT_NE(fReport.find("<!DOCTYPE FSOutputAll SYSTEM \"fsoutputallcrit.dtd\">\n"),
              std::string::npos);
    EXPECT_EQ(Names(elements),
              "FSOutputAll Header Application Timestamp ExcludedPredictors ScreeningCriteria "
              "ScreenCriterion ScreenCriterion ScreenCriterion ScreenCriterion ScreenCriterion "
              "ScreenCriterion ScreenCriterion CriteriaList Criterion Criterion Criterion Target "
              "Predictor CriterionAndRank CriterionAndRank "
              "Predictor CriterionAndRank CriterionAndRank CriterionAndRank "
              "Predictor CriterionAndRank CriterionAndRank "
              "Predictor CriterionAndRank CriterionAndRank CriterionAndRank");
    EXPECT_EQ(elements[0].Names(), "version targetType predictorSetType numberOfPredictors");
    EXPECT_EQ(elements[0]["targetType"], "categorical");
    EXPECT_EQ(elements[0]["numberOfPredictors"], "4");
    EXPECT_EQ(Named(elements, "CriteriaList")[0]["numberOfCriteria"], "3");
    EXPECT_EQ(Named(elements, "Predictor")[1].Names(), "predictorIndex predictorType");

    const auto criteria = Named(elements, "CriterionAndRank");
    EXPECT_EQ(criteria[0].Names(), "criterionName criterionValue statisticValue df rankOrder");
    EXPECT_EQ(criteria[0]["criterionName"], "Pearson");
    EXPECT_EQ(criteria[1]["criterionName"], "Likelihood");
    double p = 0, statistic = 0, df = 0, none = 0;
    ASSERT_TRUE(fpSet->GetPredictorCriterion(0, 0, p, statistic, df, none));
    EXPECT_EQ(std::stod(criteria[0]["criterionValue"]), p);
    EXPECT_EQ(std::stod(criteria[0]["statisticValue"]), statistic);
    EXPECT_EQ(criteria[0]["df"], "2");
    EXPECT_EQ(criteria[0]["rankOrder"], std::to_string(fpSet->GetRanks(0)[0]));

    EXPECT_EQ(criteria[2].Names(), "criterionName criterionValue statisticValue df df2 rankOrder");
    EXPECT_EQ(criteria[2]["criterionName"], "F-Statistic");
    EXPECT_EQ(criteria[2]["df"], "1");
    EXPECT_EQ(criteria[2]["df2"], "6");
    for (const std::size_t shared : {3U, 4U}) {
        const std::int32_t criterion = shared == 3U ? 0 : 1;
        EXPECT_EQ(criteria[shared].Names(), "criterionName criterionValue rankOrder");
        EXPECT_EQ(criteria[shared]["criterionName"], FSPredictorSet::GetCriterionName(criterion));
        EXPECT_EQ(std::stod(criteria[shared]["criterionValue"]),
                  fpSet->GetCriterionValues(criterion)[1]);
        EXPECT_EQ(criteria[shared]["rankOrder"], std::to_string(fpSet->GetRanks(criterion)[1]));
    }
}

TEST_F(FSReports, BehindASortedHeadThereAreNoRanksAndNoSharedTests) {
    Prepare(true);
    Rank(1);
    std::size_t ranked = 0;
    for (const Element& test : Named(All(), "CriterionAndRank")) {
        if (test["rankOrder"] == "(none)") {
            EXPECT_NE(test["statisticValue"], "(none)") << "a full element";
        } else {
            EXPECT_EQ(test["rankOrder"], "0");
            ++ranked;
        }
    }
    EXPECT_EQ(ranked, 3U) << "the best one of each criterion";
}

TEST_F(FSReports, AllCriteriaOfAMixedSetWithAContinuousTarget) {
    Prepare(false);
    Rank();
    const auto elements = All();
    EXPECT_EQ(elements[0]["targetType"], "continuous");
    const auto criteria = Named(elements, "CriterionAndRank");
    ASSERT_EQ(criteria.size(), 4U);
    EXPECT_EQ(criteria[0].Names(), "criterionName criterionValue statisticValue df df2 rankOrder");
    EXPECT_EQ(criteria[1].Names(),
              "criterionName criterionValue corrCoeff statisticValue df rankOrder");
    EXPECT_EQ(criteria[1]["criterionName"], "t-Statistic");
    EXPECT_EQ(criteria[1]["df"], "6");
    // The place in the F order, which a mixed set has the t tests in.
    EXPECT_EQ(criteria[1]["rankOrder"], std::to_string(fpSet->GetRanks(4)[1]));
}

TEST_F(FSReports, AllCriteriaOfACategoricalSet) {
    fSettings = FSSettings(1, kCategorical, true);
    Make();
    ASSERT_TRUE(Read({{0, 0}, {0, 1}, {1, 1}, {1, 0}, {1, 1}}).IsOk());
    Rank();
    const auto criteria = Named(All(), "CriterionAndRank");
    ASSERT_EQ(criteria.size(), 4U);
    EXPECT_EQ(criteria[2].Names(), "criterionName criterionValue rankOrder");
    EXPECT_EQ(criteria[2]["criterionName"], "Cramer");
    EXPECT_EQ(criteria[3]["criterionName"], "Lambda");
}

TEST_F(FSReports, ScreeningRulesAreListedWithTheirBounds) {
    Prepare(true);
    fSettings.SetMaxMissingPercent(62.5);
    fSettings.SetMinStdDev(0.25);
    fSettings.SetDeleteManyConst(false);
    Make();
    ASSERT_TRUE(Read(kRows).IsOk());
    static_cast<void>(fpSet->DeleteMissingOrConstant());
    const auto elements = All();
    const auto rules = Named(elements, "ScreenCriterion");
    std::vector<std::string> found;
    for (const Element& rule : rules) found.push_back(rule["name"] + " " + rule["value"]);
    EXPECT_EQ(found,
              (std::vector<std::string>{"allMissing (none)", "allConst (none)", "manyMissing 62.5",
                                        "manyCategs 90", "manyCategsWithOneCase 90",
                                        "smallVar 0.001", "smallStdDev 0.25"}));
    EXPECT_EQ(Named(elements, "ScreeningCriteria")[0]["numberOfCriteria"], "7");
}

TEST_F(FSReports, AScreenedSetThatIsNotRankedHasNoPredictorElements) {
    Prepare(true);
    ASSERT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    const auto elements = All();
    EXPECT_EQ(Named(elements, "Predictor").size(), 0U);
    EXPECT_EQ(elements[0]["numberOfPredictors"], "0");
}

TEST_F(FSReports, ASetThatIsAllScreenedOutListsEveryPredictorWithItsReason) {
    Prepare(true, {{0, 1, 2, 3, 4}, {1, 1, 2, 3, kMissing}, {0, 1, 2, 3, kMissing}});
    ExpectStatus(fpSet->DeleteMissingOrConstant(), 80010, 1);
    const auto elements = All();
    EXPECT_EQ(elements[0]["numberOfPredictors"], "0");
    EXPECT_EQ(Named(elements, "ExcludedPredictors")[0]["numberOfPredictors"], "4");
    const auto excluded = Named(elements, "ExclPredictor");
    ASSERT_EQ(excluded.size(), 4U);
    for (std::size_t at = 0; at < excluded.size(); ++at) {
        EXPECT_EQ(excluded[at].Names(), "predictorIndex predictorType screenCriterion");
        EXPECT_EQ(excluded[at]["predictorIndex"], std::to_string(at));
        EXPECT_EQ(excluded[at]["predictorType"], at % 2 == 0 ? "categorical" : "continuous");
        EXPECT_EQ(excluded[at]["screenCriterion"], "allConst");
    }
}

TEST_F(FSReports, TheSixthReasonHasAnEmptyNameAndAnUnknownOneNone) {
    Prepare(true, {{0, 1, 2, 3, 4}, {1, 1, 2, 3, 5}});
    static_cast<void>(fpSet->DeleteMissingOrConstant());
    ASSERT_EQ(fpSet->GetDeletedIndices(), (Indices{0, 1, 2}));
    auto bytes = testsupport::Save(*fpSet);
    const std::size_t reasons = 5 + 24 + 16 + 24 + 4 + 3 * 4;  // after the three indices
    const std::int32_t changed[] = {6, 9, 0};
    std::memcpy(bytes.data() + reasons, changed, sizeof changed);
    testsupport::RestoreInto(*fpSet, bytes);
    const auto excluded = Named(All(), "ExclPredictor");
    ASSERT_EQ(excluded.size(), 3U);
    EXPECT_EQ(excluded[0]["screenCriterion"], "");
    EXPECT_EQ(excluded[1]["screenCriterion"], "(none)");
    EXPECT_EQ(excluded[2]["screenCriterion"], "(none)");
}

TEST_F(FSReports, AMissingFStatisticStandsBesideItsDegreesOfFreedom) {
    // No variation within the groups.
    Prepare(true, {{0, 0, 1, 0, 5}, {0, 1, 1, 1, 5}, {1, 1, 2, 0, 6}, {1, 0, 2, 1, 7}});
    Rank();
    const auto criteria = Named(All(), "CriterionAndRank");
    const Element& test = criteria[2];
    EXPECT_EQ(test["criterionName"], "F-Statistic");
    EXPECT_EQ(test["statisticValue"], "Missing");
    EXPECT_EQ(test["df"], "1");
    EXPECT_EQ(test["df2"], "2");
}

TEST_F(FSReports, TransactionsHaveNoTarget) {
    Prepare(true);
    Rank();
    fSettings.SetTransactions(true);
    EXPECT_TRUE(Named(One(0), "Target").empty());
    EXPECT_TRUE(Named(All(), "Target").empty());
}

TEST_F(FSReports, AllCriteriaNeedAScreenedSet) {
    Prepare(true);
    std::ostringstream report;
    ExpectStatus(fpSet->WriteOutputAll(report), 6, -1);
    EXPECT_EQ(report.str(), "");
}

// --- By the engine ---

class FSEngineReports : public testing::Test {
 protected:
    FSEngineReports() : fSettings({true, false, true, false}, true) {
        fSettings.SetTargetPosition(0);
        fpEngine = FSFactory().CreateFromSettings(fSettings);
    }
    FSStatus RunAll(std::int32_t n = 0) {
        testsupport::RecordList records(kRows);
        return fpEngine->RunAll(records, -1, false, n);
    }

    FSSettings fSettings;
    std::unique_ptr<IFSAlgorithm> fpEngine;
    std::ostringstream fReport;
};

TEST_F(FSEngineReports, NothingIsReportedBeforeTheRanking) {
    ExpectStatus(fpEngine->WriteOutputOne(fReport, 0, 0), 6, -1);
    ExpectStatus(fpEngine->WriteOutputAll(fReport), 6, -1);
    EXPECT_EQ(fReport.str(), "");
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
}

TEST_F(FSEngineReports, ACriterionThatIsOffIsNotReported) {
    ASSERT_TRUE(RunAll().IsOk());
    for (const std::int32_t criterion : {2, 5, -1, 6}) {
        ExpectStatus(fpEngine->WriteOutputOne(fReport, criterion, 0), 80006, -1);
    }
    EXPECT_EQ(fReport.str(), "");
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
}

TEST_F(FSEngineReports, MoreThanRemainIsAnErrorBehindTheReport) {
    ASSERT_TRUE(RunAll().IsOk());
    const FSStatus status = fpEngine->WriteOutputOne(fReport, 0, 5);
    ExpectStatus(status, 80012, -1);
    EXPECT_EQ(status.fIntArgs[0], 4);
    EXPECT_EQ(Named(ElementsOf(fReport.str()), "Predictor").size(), 4U);
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
}

TEST_F(FSEngineReports, AnErrorIsKeptAndNothingWritten) {
    const FSStatus failed = RunAll(5);
    ExpectStatus(failed, 80012, -1);
    EXPECT_EQ(fpEngine->WriteOutputOne(fReport, 0, 0), failed);
    EXPECT_EQ(fpEngine->WriteOutputAll(fReport), failed);
    EXPECT_EQ(fpEngine->SaveBinary(fReport), failed);
    EXPECT_EQ(fpEngine->SaveXML(fReport), failed);
    EXPECT_EQ(fReport.str(), "");
}

TEST_F(FSEngineReports, ACancelGivesStatusOneAndNothingIsWritten) {
    ASSERT_TRUE(RunAll().IsOk());
    fpEngine->Cancel();
    ExpectStatus(fpEngine->WriteOutputOne(fReport, 0, 0), 1, -1);
    ExpectStatus(fpEngine->WriteOutputAll(fReport), 1, -1);
    ExpectStatus(fpEngine->SaveBinary(fReport), 1, -1);
    ExpectStatus(fpEngine->SaveXML(fReport), 1, -1);
    EXPECT_EQ(fReport.str(), "");
}

TEST_F(FSEngineReports, AWarningIsTheResultOfASave) {
    testsupport::RecordList constant({{0, 1, 2, 3, 4}, {1, 1, 2, 3, 4}});
    ExpectStatus(fpEngine->RunAll(constant, -1, false, 0), 80010, 1);
    ExpectStatus(fpEngine->SaveBinary(fReport), 80010, 1);
    EXPECT_TRUE(fReport.str().starts_with("FSAlgorithm 1.00FSSet"));
}

// --- Partitions ---

TEST_F(FSEngineReports, PartitionsSavedRestoredAndMergedAreOnePass) {
    ASSERT_TRUE(RunAll().IsOk());
    for (std::size_t cut = 1; cut < kRows.size(); ++cut) {
        SCOPED_TRACE(cut);
        std::vector<std::unique_ptr<IFSAlgorithm>> parts;
        for (const bool later : {false, true}) {
            const auto middle = kRows.begin() + static_cast<std::ptrdiff_t>(cut);
            testsupport::RecordList records(later ? Rows(middle, kRows.end())
                                                  : Rows(kRows.begin(), middle));
            const auto engine = FSFactory().CreateFromSettings(fSettings);
            ASSERT_TRUE(engine->AccumulateData(records, -1).IsOk());
            std::stringstream saved;
            ASSERT_TRUE((later ? engine->SaveXML(saved) : engine->SaveBinary(saved)).IsOk());
            FSFactory factory;
            parts.push_back(later ? factory.CreateFromXML(saved) : factory.CreateFromBinary(saved));
            ASSERT_NE(parts.back(), nullptr);
        }
        ASSERT_TRUE(parts[0]->MergeFrom(*parts[1]).IsOk());
        EXPECT_EQ(CountsOf(*parts[0]), CountsOf(*fpEngine));
        EXPECT_EQ(parts[0]->GetNumberOfTargetCategories(), 2);
        EXPECT_EQ(parts[0]->GetTargetCategoryByValue(1), fpEngine->GetTargetCategoryByValue(1));
        ASSERT_TRUE(parts[0]->DeleteMissingOrConstant().IsOk());
        ASSERT_TRUE(parts[0]->RankPredictors(0).IsOk());
        EXPECT_EQ(parts[0]->GetRanks(0), fpEngine->GetRanks(0));
        for (const std::int32_t predictor : {0, 2}) {  // counts alone: exact
            EXPECT_EQ(parts[0]->GetCriterionValues(0)[static_cast<std::size_t>(predictor)],
                      fpEngine->GetCriterionValues(0)[static_cast<std::size_t>(predictor)]);
        }
        for (const std::int32_t predictor : {1, 3}) {
            EXPECT_NEAR(parts[0]->GetCriterionValues(4)[static_cast<std::size_t>(predictor)],
                        fpEngine->GetCriterionValues(4)[static_cast<std::size_t>(predictor)],
                        1e-12);
        }
    }
}

TEST_F(FSEngineReports, EnginesThatDoNotFitAreNotMerged) {
    const auto read = [](FSSettings& settings) {
        auto engine = FSFactory().CreateFromSettings(settings);
        testsupport::RecordList records(kRows);
        EXPECT_TRUE(engine->AccumulateData(records, -1).IsOk());
        return engine;
    };
    const auto mine = read(fSettings);
    FSSettings otherRule = fSettings;
    otherRule.SetMaxMissingPercent(10.0);
    ExpectStatus(mine->MergeFrom(*read(otherRule)), 80014, -1);
    ExpectStatus(mine->MergeFrom(*mine), 80014, -1);
    const auto ranked = read(fSettings);
    ASSERT_TRUE(ranked->RankPredictors(0).IsOk());
    ExpectStatus(mine->MergeFrom(*ranked), 80014, -1);
    ExpectStatus(ranked->MergeFrom(*mine), 80014, -1);
    EXPECT_TRUE(mine->GetStatus().IsOk());
    EXPECT_EQ(CountsOf(*mine).fValid, 8);
    EXPECT_TRUE(mine->MergeFrom(*read(fSettings)).IsOk());
    EXPECT_EQ(CountsOf(*mine).fValid, 16);
}

}  // namespace

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "naivebayes/NBSubsetSearch.h"
#include "naivebayes/tests/SearchFixture.h"

namespace {

/// A forced predictor and two candidates, of which the last is the better.
SearchData Small() {
    SearchData data;
    data.fPredictors = {{2, 1}, {3, 2}, {2, 2}};
    for (std::int32_t i = 0; i < 24; ++i) {
        const std::int32_t target = i % 2;
        data.fRows.push_back({target, 1.0, {(i / 3) % 2, (i / 5) % 3, i < 20 ? target : 0}});
    }
    return data;
}

/// Line breaks and indents out, time of day and numbers with decimals made alike.
std::string Normal(const std::string& document) {
    std::string text = std::regex_replace(document, std::regex(">\\s+<"), "><");
    text = std::regex_replace(text, std::regex("<Timestamp>[^<]{24}</Timestamp>"), "<Timestamp/>");
    text = std::regex_replace(text, std::regex("criterionValue=\"[-+.e0-9]+\""),
                              "criterionValue=\"#\"");
    text.erase(text.find_last_of('>') + 1);
    return text.substr(text.find("<!DOCTYPE"));
}

struct Report {
    explicit Report(const SearchData& data) : fTrained(data), fSearch(fTrained.MakeSearch()) {}
    std::string Write(bool usedTestData = false, const NBWriteOptions* options = nullptr) {
        std::ostringstream stream;
        EXPECT_TRUE(fSearch.WriteSelectionXML(stream, usedTestData, options).IsOK());
        return stream.str();
    }
    void PseudoBIC() {
        ASSERT_TRUE(
            fSearch.RunPseudoBIC(3, fTrained.fRecords, 24, true, fSelected, fBest, 5).IsOK());
    }
    void Exact(std::int32_t size) {
        ASSERT_TRUE(fSearch.RunExactSize(size, fTrained.fRecords, 24, true, fSelected).IsOK());
    }

    TrainedTables fTrained;
    NBSubsetSearch fSearch;
    std::vector<std::int32_t> fSelected;
    std::vector<NBSubset> fBest;
};

const char* const kDocType = "<!DOCTYPE NaiveBayesAttrSelection SYSTEM \"nbasoutput.dtd\">";
const char* const kHeader =
    "<Header copyright=\"Copyright (c) 2026 The predselect authors\">"
    "<Application name=\"KOLT Naive Bayes Component C++\" version=\"1.0\"/>"
    "<Timestamp/></Header>";
const char* const kTarget =
    "<Target targetIndex=\"2\" variableName=\"target\" variableLabel=\"The target\" "
    "numberOfCategories=\"2\"/>";

TEST(NBSubsetReportTest, TheBestSubsetsFollowTheChain) {
    Report report(Small());
    report.PseudoBIC();
    ASSERT_EQ(report.fSelected, (std::vector<std::int32_t>{1, 4, 3}));
    ASSERT_EQ(report.fBest.size(), 3U);
    std::string subsets;
    for (std::size_t rank = 0; rank < 3; ++rank) {
        const std::int32_t size = report.fBest[rank].fSize;
        subsets += "<Subset numberOfPredictors=\"" + std::to_string(size) +
                   "\" criterionValue=\"#\" rankOrder=\"" + std::to_string(rank) + "\">";
        for (std::size_t i = 0; i < static_cast<std::size_t>(size); ++i) {
            subsets +=
                "<PredictorRef predictorIndex=\"" + std::to_string(report.fSelected[i]) + "\"/>";
        }
        subsets += "</Subset>";
    }
    EXPECT_EQ(Normal(report.Write()),
              std::string(kDocType) +
                  "<NaiveBayesAttrSelection version=\"1.0\" subsetChoiceType=\"maxNumber\" "
                  "numberOfPredictors=\"3\" numberOfSubsets=\"3\" criterion=\"BIC\">" +
                  kHeader + kTarget +
                  "<Predictor predictorIndex=\"1\" variableName=\"p0\" "
                  "variableLabel=\"Predictor 0\" numberOfCategories=\"2\"/>"
                  "<Predictor predictorIndex=\"4\" variableName=\"p2\" "
                  "variableLabel=\"Predictor 2\" numberOfCategories=\"2\"/>"
                  "<Predictor predictorIndex=\"3\" variableName=\"p1\" "
                  "numberOfCategories=\"3\"/>" +
                  subsets + "</NaiveBayesAttrSelection>");
}

TEST(NBSubsetReportTest, AnExactSizeHasOneSubsetWithoutCriterion) {
    Report report(Small());
    report.Exact(2);
    EXPECT_EQ(Normal(report.Write()),
              std::string(kDocType) +
                  "<NaiveBayesAttrSelection version=\"1.0\" subsetChoiceType=\"exactNumber\" "
                  "numberOfPredictors=\"2\" numberOfSubsets=\"1\">" +
                  kHeader + kTarget +
                  "<Predictor predictorIndex=\"1\" variableName=\"p0\" "
                  "variableLabel=\"Predictor 0\" numberOfCategories=\"2\"/>"
                  "<Predictor predictorIndex=\"4\" variableName=\"p2\" "
                  "variableLabel=\"Predictor 2\" numberOfCategories=\"2\"/>"
                  "<Subset numberOfPredictors=\"2\"><PredictorRef predictorIndex=\"1\"/>"
                  "<PredictorRef predictorIndex=\"4\"/></Subset></NaiveBayesAttrSelection>");
}

TEST(NBSubsetReportTest, TheFirstRankHasTheSmallestCriterion) {
    Report report(Small());
    report.PseudoBIC();
    const std::string text = report.Write();
    const std::regex pattern("criterionValue=\"([^\"]+)\" rankOrder=\"([0-9]+)\"");
    std::vector<double> values;
    for (std::sregex_iterator i(text.begin(), text.end(), pattern); i != std::sregex_iterator();
         ++i) {
        EXPECT_EQ((*i)[2], std::to_string(values.size()));
        values.push_back(std::stod((*i)[1]));
    }
    ASSERT_EQ(values.size(), report.fBest.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i], report.fBest[i].fCriterion);
    }
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
}

TEST(NBSubsetReportTest, TestDataAreNamedAsTheCriterion) {
    Report report(Small());
    report.PseudoBIC();
    EXPECT_NE(report.Write(true).find(" criterion=\"testData\""), std::string::npos);
    EXPECT_EQ(report.Write(true).find("\"BIC\""), std::string::npos);
}

TEST(NBSubsetReportTest, TheOptionsNameTheMaker) {
    Report report(Small());
    report.Exact(2);
    NBWriteOptions options;
    options.fAppName = "A program";
    options.fAppVersion = "7";
    options.fCopyright = "Nobody";
    options.fUTF8 = true;
    EXPECT_NE(Normal(report.Write(false, &options))
                  .find("<Header copyright=\"Nobody\"><Application name=\"A program\" "
                        "version=\"7\"/><Timestamp/>"),
              std::string::npos);
}

}  // namespace

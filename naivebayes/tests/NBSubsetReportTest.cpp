#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <sstream>
#include <string>
#include <vector>

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

/// Puts the text in place of what stands between each start and the end that follows it.
std::string WithBetween(std::string text, const std::string& start, const std::string& end,
                        const std::string& replacement) {
    for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at)) {
        at += start.size();
        const std::size_t behind = text.find(end, at);
        if (behind == std::string::npos) {
            ADD_FAILURE() << "no " << end << " behind " << start;
            break;
        }
        text.replace(at, behind - at, replacement);
    }
    return text;
}

/// The values of an attribute, in order.
std::vector<std::string> Attributes(const std::string& text, const std::string& name) {
    std::vector<std::string> values;
    const std::string start = " " + name + "=\"";
    for (std::size_t at = text.find(start); at != std::string::npos; at = text.find(start, at)) {
        at += start.size();
        values.push_back(text.substr(at, text.find('"', at) - at));
    }
    return values;
}

/// Line breaks and indents out, time of day and criteria made alike.
std::string Normal(const std::string& document) {
    std::string text = WithBetween(document, "<Timestamp>", "</Timestamp>", "#");
    text = WithBetween(text, " criterionValue=\"", "\"", "#");
    std::string normal;
    for (std::size_t at = text.find("<!DOCTYPE"); at < text.size(); ++at) {
        normal += text[at];
        // No text in these documents follows a tag and a line break.
        if (text[at] == '>' && at + 1 < text.size() && text[at + 1] == '\n') {
            at = text.find_first_not_of("\n ", at + 1);
            if (at == std::string::npos) break;
            --at;
        }
    }
    return normal;
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
    "<Timestamp>#</Timestamp></Header>";
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
    std::vector<double> values;
    for (const std::string& value : Attributes(text, "criterionValue")) {
        values.push_back(std::stod(value));
    }
    EXPECT_EQ(Attributes(text, "rankOrder"), (std::vector<std::string>{"0", "1", "2"}));
    ASSERT_EQ(values.size(), report.fBest.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i], report.fBest[i].fCriterion);
    }
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
}

TEST(NBSubsetReportTest, TheTimeIsOfTheLibrarysFormWithoutItsLineEnd) {
    Report report(Small());
    report.Exact(2);
    const std::time_t before = std::time(nullptr);
    const std::string text = report.Write();
    const std::time_t after = std::time(nullptr);
    const std::string start = "<Timestamp>";
    const std::size_t at = text.find(start);
    ASSERT_NE(at, std::string::npos);
    const std::string written = text.substr(at + start.size(), 24);
    EXPECT_EQ(text.substr(at + start.size() + 24, 12), "</Timestamp>");
    bool found = false;
    for (std::time_t now = before; now <= after; ++now) {
        found = found || std::string(std::ctime(&now)) == written + "\n";
    }
    EXPECT_TRUE(found) << written;
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
                        "version=\"7\"/><Timestamp>#</Timestamp>"),
              std::string::npos);
}

}  // namespace

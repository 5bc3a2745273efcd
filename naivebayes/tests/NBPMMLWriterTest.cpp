#include "naivebayes/NBPMMLWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <limits>
#include <pugixml.hpp>
#include <sstream>

#include "naivebayes/NBDocument.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"
#include "naivebayes/data/NBVarList.h"

namespace {

/// A variable list and the tables on it.
struct Model {
    NBVarList fList;
    std::vector<NBayesInput> fvInputs;
    NBayesOutput fOutput;
    double fWeight = 1.0;

    /// Gives the predictor a table with these counts, and the target a table before the first.
    void AddTable(std::int32_t varIndex, const NBayesInputBase::Matrix& counts) {
        if (fvInputs.empty()) {
            const std::int32_t target = fList.GetTargetIndex();
            fOutput = NBayesOutput(*fList.GetVariable(target), target);
        }
        NBayesInput& table = fvInputs.emplace_back();
        table.Setup(*fList.GetVariable(varIndex), fOutput.GetNumCategories(), varIndex,
                    static_cast<std::int32_t>(fvInputs.size()));
        table.SetCounts(1.0 / fWeight, counts);
    }
    std::string Written(const NBWriteOptions* options = nullptr) const {
        const auto root = NBPMMLWriter::MakeDocument(fList, fvInputs, fOutput, fWeight, options);
        std::ostringstream stream;
        NBDocument::Write(stream, nullptr, *root, options);
        return stream.str();
    }
};

/// The document read by a parser of its own.
class Parsed {
 public:
    explicit Parsed(const Model& model, const NBWriteOptions* options = nullptr) {
        const std::string text = model.Written(options);
        const auto result = fDocument.load_string(text.c_str());
        EXPECT_TRUE(result) << result.description() << "\n" << text;
    }
    /// What the XPath finds, texts and attribute values joined by blanks.
    std::string operator()(const char* path) const {
        std::string found;
        for (const auto& node : fDocument.select_nodes(path)) {
            if (!found.empty()) found += ' ';
            found += node.attribute() ? node.attribute().value() : node.node().child_value();
        }
        return found;
    }
    double Count(const char* path) const {
        return static_cast<double>(fDocument.select_nodes(path).size());
    }

 private:
    pugi::xml_document fDocument;
};

std::string TimestampReplaced(std::string text) {
    const std::string start = "<Timestamp>";
    const std::size_t from = text.find(start) + start.size();
    return text.replace(from, text.find("</Timestamp>") - from, "TIME");
}

/// Compares with the file of this name; PREDSEL_WRITE_GOLDEN in the environment writes it instead,
/// and fails.
void ExpectGolden(const std::string& written, const std::string& name) {
    const std::string path = std::string(NAIVEBAYES_TEST_DATA) + "/" + name;
    if (std::getenv("PREDSEL_WRITE_GOLDEN") != nullptr) {
        std::ofstream(path, std::ios::binary) << written;
        FAIL() << "wrote " << path;
    }
    std::ifstream file(path, std::ios::binary);
    const std::string golden((std::istreambuf_iterator<char>(file)),
                             std::istreambuf_iterator<char>());
    EXPECT_EQ(written, golden);
}

/// Every kind of variable, with what a search and a weight leave in the list.
Model MixedModel() {
    Model model;
    model.fWeight = 16.0;
    NBVarList& list = model.fList;
    list.AddStringCatVar("answer", "The answer", {"no", "yes & <no>"}, {"", "Positive"}, 3);
    list.AddNumericCatVar("grade", "", {1.0, 2.5, 100000.0}, {"one", "", "many"}, 1);
    list.AddNumericMissing(1, 9.0, "Refused");
    list.AddNumericMissing(1, 10.0, "");
    list.SetMissingRange(1, 90.0, 99.5);
    list.AddStringCatVar("left", "Not chosen", {"a", "b"}, {}, 2);
    list.AddContVar("x", "First line\nsecond line", 0.0, 10.0, 5, 1);
    list.AddWeightVar("w", "", 0);
    list.AddStringCatVar("colour", "", {"r\xC3\xB6t", "blue"}, {}, 1);
    list.AddStringMissing(5, "?", "unknown");
    list.AddStringCatVar("unused", "", {"a"}, {}, 5);
    model.AddTable(1, {{1.0, 2.0}, {0.0, 0.0}, {3.5, 0.0}});
    model.AddTable(3, {{3.0, 0.0}, {0.0, 0.0}, {0.0, 0.0}, {0.5, 4.0}, {0.0, 5.0}});
    model.AddTable(5, {{1.0, 1.0}, {2.0, 100000.0}});
    model.fOutput.AddRecord(0, 16.0);
    return model;
}

TEST(NBPMMLWriter, AMixedModelIsTheGoldenDocument) {
    ExpectGolden(TimestampReplaced(MixedModel().Written()), "mixed-model.pmml");
}

TEST(NBPMMLWriter, BothWritersGiveTheSameWellFormedUTF8) {
    NBWriteOptions options;
    const Model model = MixedModel();
    const std::string plain = TimestampReplaced(model.Written(&options));
    options.fUTF8 = true;
    EXPECT_EQ(TimestampReplaced(model.Written(&options)), plain);
    EXPECT_EQ(plain.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"), 0u);
    const Parsed parsed(model, &options);
    EXPECT_EQ(parsed("//DataField[@name='x']/@displayName"), "First line\nsecond line");
    EXPECT_EQ(parsed("//DataField[@name='colour']/Value[1]/@value"), "?");
    EXPECT_EQ(parsed("//DataField[@name='colour']/Value[2]/@value"), "r\xC3\xB6t");
    EXPECT_EQ(parsed("//DataField[@name='answer']/Value[2]/@value"), "yes & <no>");
}

TEST(NBPMMLWriter, TheTimestampIsThePresentTimeWithoutALineEnd) {
    const std::time_t before = std::time(nullptr);
    const std::string text = Parsed(MixedModel())("/PMML/Header/Timestamp");
    const std::time_t after = std::time(nullptr);
    std::vector<std::string> possible;
    for (std::time_t time = before; time <= after; ++time) {
        possible.emplace_back(std::ctime(&time));
        possible.back().pop_back();
    }
    EXPECT_NE(std::find(possible.begin(), possible.end(), text), possible.end()) << text;
}

TEST(NBPMMLWriter, EmptyTextsFallBackToTheDefaultsAsNoOptionsDo) {
    const NBWriteOptions empty;
    for (const NBWriteOptions* options : {static_cast<const NBWriteOptions*>(nullptr), &empty}) {
        const Parsed parsed(MixedModel(), options);
        EXPECT_EQ(parsed("/PMML/Header/@copyright"), "Copyright (c) 2026 The predselect authors");
        EXPECT_EQ(parsed("/PMML/Header/Application/@name"), "KOLT Naive Bayes Component C++");
        EXPECT_EQ(parsed("/PMML/Header/Application/@version"), "1.0");
    }
}

TEST(NBPMMLWriter, TextsOfTheOptionsAreWritten) {
    NBWriteOptions options;
    options.fCopyright = "c";
    options.fAppName = "n";
    options.fAppVersion = "7";
    EXPECT_EQ(Parsed(MixedModel(), &options)("/PMML/Header/@copyright | "
                                             "/PMML/Header/Application/@*"),
              "c n 7");
}

TEST(NBPMMLWriter, FieldsAreInputsAndTargetInListOrder) {
    const Parsed parsed(MixedModel());
    EXPECT_EQ(parsed("//DataField/@name"), "answer grade x colour");
    EXPECT_EQ(parsed("/PMML/DataDictionary/@numberOfFields"), "4");
}

TEST(NBPMMLWriter, ThePredictedFieldIsLastInTheSchemaOfTheModel) {
    const Parsed parsed(MixedModel());
    EXPECT_EQ(parsed("//MiningField/@name"), "grade x colour answer");
    EXPECT_EQ(parsed("//MiningField/@usageType"), "predicted");
    EXPECT_EQ(parsed("//MiningField[last()]/@name"), "answer");
    EXPECT_EQ(parsed("//BayesInput/@fieldName"), "grade x colour");
}

TEST(NBPMMLWriter, TheThresholdIsOneOverTheWeight) {
    Model model = MixedModel();
    EXPECT_EQ(Parsed(model)("/PMML/NaiveBayesModel/@threshold"), "0.0625");
    model.fWeight = 3.0;
    EXPECT_EQ(std::stod(Parsed(model)("/PMML/NaiveBayesModel/@threshold")), 1.0 / 3.0);
}

TEST(NBPMMLWriter, NumberOfFieldsHasNoExponent) {
    Model model;
    model.fList.AddStringCatVar("y", "", {"a"}, {}, 3);
    for (int i = 0; i < 999; ++i) {
        model.fList.AddContVar("x" + std::to_string(i), "", 0.0, 1.0, 2, 1);
    }
    model.AddTable(1, {{1.0}, {1.0}});
    EXPECT_EQ(Parsed(model)("/PMML/DataDictionary/@numberOfFields"), "1000");
}

TEST(NBPMMLWriter, EmptyCategoriesHaveNoCountsAndKeepTheirValue) {
    const Parsed parsed(MixedModel());
    EXPECT_EQ(parsed("//BayesInput[@fieldName='grade']/PairCounts/@value"), "1 100000");
    EXPECT_EQ(parsed("//DataField[@name='grade']/Value[@property='valid']/@value"), "1 2.5 100000");
}

TEST(NBPMMLWriter, PairsLeaveZeroCountsOutAndTheTargetListsThem) {
    const Parsed parsed(MixedModel());
    EXPECT_EQ(parsed("//BayesInput[@fieldName='grade']/PairCounts[2]//TargetValueCount/@value"),
              "no");
    EXPECT_EQ(parsed("/PMML/NaiveBayesModel/BayesOutput//TargetValueCount/@value"),
              "no yes & <no>");
    EXPECT_EQ(parsed("/PMML/NaiveBayesModel/BayesOutput//TargetValueCount/@count"), "16 0");
}

TEST(NBPMMLWriter, MissingValuesComeBeforeValidOnesAndRangesFirst) {
    const Parsed parsed(MixedModel());
    EXPECT_EQ(parsed("//DataField[@name='grade']/Extension/@name"),
              "invalidRangeLower invalidRangeUpper");
    EXPECT_EQ(parsed("//DataField[@name='grade']/Extension/@value"), "90 99.5");
    EXPECT_EQ(parsed("//DataField[@name='grade']/*/@property"),
              "missing missing valid valid valid");
    EXPECT_EQ(parsed("//DataField[@name='grade']/*[position() <= 2]/@property"), "");
}

TEST(NBPMMLWriter, AContinuousFieldWithoutMissingValuesHasNoChildren) {
    const Parsed parsed(MixedModel());
    EXPECT_EQ(parsed.Count("//DataField[@name='x']"), 1);
    EXPECT_EQ(parsed.Count("//DataField[@name='x']/node()"), 0);
}

TEST(NBPMMLWriter, AContinuousFieldWithMissingValuesListsThem) {
    Model model = MixedModel();
    model.fList.AddNumericMissing(3, -1.0, "none");
    model.fList.SetMissingRange(3, -std::numeric_limits<double>::max(), -5.0);
    const Parsed parsed(model);
    EXPECT_EQ(parsed("//DataField[@name='x']/Extension/@name"), "invalidRangeUpper");
    EXPECT_EQ(parsed("//DataField[@name='x']/Value/@*"), "-1 none missing");
}

TEST(NBPMMLWriter, CategoriesWithoutAValueAreWrittenByTheirNumber) {
    Model model;
    model.fList.AddCatVar("y", "", 3, 3, 3);
    model.fList.AddCatVar("f", "", 4, 2, 1);
    model.AddTable(1, {{0.0, 0.0, 0.0}, {1.0, 0.0, 2.0}, {0.0, 0.0, 0.0}, {0.0, 1.5, 0.0}});
    const Parsed parsed(model);
    EXPECT_EQ(parsed("//DataField[@name='f']/Value/@value"), "0 1 2 3");
    EXPECT_EQ(parsed("//DataField[@name='f']/Value/@property"), "valid valid valid valid");
    // Rows without a value are numbered as they are written.
    EXPECT_EQ(parsed("//PairCounts/@value"), "0 1");
    EXPECT_EQ(parsed("//PairCounts//TargetValueCount/@value"), "0 2 1");
    EXPECT_EQ(parsed("/PMML/NaiveBayesModel/BayesOutput//TargetValueCount/@value"), "0 1 2");
}

TEST(NBPMMLWriter, RowsBeyondTheKnownValuesAreNumberedFromZero) {
    Model model;
    model.fList.AddNumericCatVar("y", "", {5.0}, {}, 3);
    // The repeated value leaves a category without a code.
    model.fList.AddNumericCatVar("f", "", {7.0, 8.0, 7.0, 7.0}, {"seven", "eight", "", ""}, 1);
    model.AddTable(1, {{1.0}, {1.0}, {1.0}, {1.0}});
    const Parsed parsed(model);
    EXPECT_EQ(parsed("//PairCounts/@value"), "7 8 0 1");
    EXPECT_EQ(parsed("//DataField[@name='f']/Value/@value"), "7 8 2 3");
    EXPECT_EQ(parsed.Count("//DataField[@name='f']/Value/@displayValue"), 0);
    EXPECT_EQ(parsed("//TargetValueCount/@value"), "5 5 5 5 5");
}

TEST(NBPMMLWriter, EmptyLabelsAndNamesAreNotWritten) {
    const Parsed parsed(MixedModel());
    EXPECT_EQ(parsed("//DataField[@name='grade']/Value/@displayValue"), "Refused one many");
    EXPECT_EQ(parsed.Count("//DataField[@name='grade']/@displayName"), 0);
}

/// A model of one continuous predictor with these cutpoints and weights of bins.
Model ContinuousModel(const std::vector<double>& cutpoints, const std::vector<double>& weights) {
    Model model;
    model.fList.AddStringCatVar("y", "", {"a"}, {}, 3);
    model.fList.AddContVar("x", "", cutpoints, 1);
    NBayesInputBase::Matrix counts;
    for (const double weight : weights) counts.push_back({weight});
    model.AddTable(1, counts);
    return model;
}

struct Bins {
    const char* fName;
    std::vector<double> fvCutpoints;
    std::vector<double> fvWeights;
    const char* fLefts;
    const char* fRights;
    const char* fPairs;
};

class Discretized : public testing::TestWithParam<Bins> {};

TEST_P(Discretized, BinsMatchTheRowsThatAreWritten) {
    const Bins& bins = GetParam();
    const Parsed parsed(ContinuousModel(bins.fvCutpoints, bins.fvWeights));
    EXPECT_EQ(parsed("//Interval/@leftMargin"), bins.fLefts);
    EXPECT_EQ(parsed("//Interval/@rightMargin"), bins.fRights);
    EXPECT_EQ(parsed("//PairCounts/@value"), bins.fPairs);
    EXPECT_EQ(parsed("//DiscretizeBin/@binValue"), bins.fPairs);
    // The first bin has no left margin, the last no right one.
    EXPECT_EQ(parsed.Count("//DiscretizeBin[1]/Interval/@leftMargin"), 0);
    EXPECT_EQ(parsed.Count("//DiscretizeBin[last()]/Interval/@rightMargin"), 0);
    EXPECT_EQ(parsed("//DiscretizeBin[last()]/Interval/@closure"), "openOpen");
    EXPECT_EQ(parsed.Count("//DiscretizeBin[position() < last()]/Interval[@closure='openClosed']"),
              parsed.Count("//DiscretizeBin") - 1);
}

INSTANTIATE_TEST_SUITE_P(
    Bins, Discretized,
    testing::Values(
        Bins{"AllFilled", {1, 2, 3}, {1, 1, 1, 1}, "1 2 3", "1 2 3", "0 1 2 3"},
        Bins{"AllFilledKeepEqualCutpoints", {1, 1, 3}, {1, 1, 1, 1}, "1 1 3", "1 1 3", "0 1 2 3"},
        Bins{"AGapIsCutInTheMiddle", {1, 2, 3, 4}, {3, 0, 0, 4, 5}, "2 4", "2 4", "0 1 2"},
        Bins{"EmptyAtTheStart", {1, 2, 3}, {0, 0, 2, 3}, "3", "3", "0 1"},
        Bins{"EmptyAtTheEnd", {1, 2, 3}, {2, 3, 0, 0}, "1", "1", "0 1"},
        Bins{"EmptyLastBinOnly", {1, 2, 3}, {2, 3, 4, 0}, "1 2", "1 2", "0 1 2"},
        Bins{"EmptyAtBothEndsAndBetween", {1, 2, 3, 4}, {0, 2, 0, 3, 0}, "2.5", "2.5", "0 1"},
        Bins{"EveryOtherBin", {1, 2, 3, 4}, {1, 0, 1, 0, 1}, "1.5 3.5", "1.5 3.5", "0 1 2"},
        // Of a model that was trained when a shared cutpoint belonged to a bin between them.
        Bins{"AFilledBinBetweenEqualCutpoints",
             {4, 4, 4, 9},
             {1, 1, 0, 1, 2},
             "4 4 9",
             "4 4 9",
             "0 1 2 3"},
        Bins{"TwoBins", {5}, {1, 1}, "5", "5", "0 1"}),
    [](const auto& bins) { return std::string(bins.param.fName); });

TEST(NBPMMLWriter, AModelCollapsedAtBothEndsIsTheGoldenDocument) {
    ExpectGolden(TimestampReplaced(ContinuousModel({1, 2, 3, 4}, {0, 2, 0, 3, 0}).Written()),
                 "collapsed-model.pmml");
}

TEST(NBPMMLWriter, APredictorWithoutBinsHasOneOpenInterval) {
    Model model;
    model.fList.AddStringCatVar("y", "", {"a"}, {}, 3);
    model.fList.AddContVar("x", "", 1.0, 1.0, 1, 1);
    model.AddTable(1, {{1.0}});
    const Parsed parsed(model);
    EXPECT_EQ(parsed("//Interval/@*"), "openOpen");
    EXPECT_EQ(parsed("//DiscretizeBin/@binValue"), "0");
}

TEST(NBPMMLWriter, WithOneFilledBinTheCutpointsStay) {
    const Parsed parsed(ContinuousModel({1, 2}, {0, 3, 0}));
    EXPECT_EQ(parsed("//Interval/@rightMargin"), "1 2");
    EXPECT_EQ(parsed("//PairCounts/@value"), "0");
}

}  // namespace

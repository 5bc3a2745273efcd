#include "backend/predselect/PRSGrammar.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "backend/predselect/PRSMessage.h"
#include "backend/predselect/tests/ParseFixture.h"

namespace {

using PRSGrammar::Commands;

const SubComDescriptor* FindSubCom(const CommandDescriptor& command, const std::string& name) {
    for (const SubComDescriptor& subCom : command.SubComs()) {
        if (subCom.Name() == name) {
            return &subCom;
        }
    }
    return nullptr;
}

const ParamDescriptor* FindParam(const CommandDescriptor& command, const std::string& subCom,
                                 const std::string& name) {
    const SubComDescriptor* descriptor = FindSubCom(command, subCom);
    if (descriptor != nullptr) {
        for (const ParamDescriptor& parameter : descriptor->Params()) {
            if (parameter.Name() == name) {
                return &parameter;
            }
        }
    }
    return nullptr;
}

std::unique_ptr<CommandDescriptor> Descriptor(Commands command) {
    return PRSGrammar::MakeDescriptor(
        command == PRSGrammar::kSelectPred ? "SELECTPRED" : "NAIVEBAYES", command);
}

std::string NumberText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string Joined(const std::vector<std::string>& parts, const std::string& glue) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : glue) + part;
    }
    return text;
}

// How docs/command-language.md writes what a descriptor holds.

std::string DocKind(const ParamDescriptor& parameter) {
    static const std::map<ParamSpec, std::string> kKinds = {
        {kParamKeyword, "none"},      {kParamTokenList, "list"}, {kParamOneString, "word"},
        {kParamStringList, "words"},  {kParamNumber, "number"},  {kParamInteger, "integer"},
        {kParamVariable, "variable"}, {kParamFile, "file"}};
    return kKinds.at(parameter.Spec()) + (parameter.IsMandatory() ? ", required" : "") +
           (parameter.IsValueRequired() ? "" : ", may be left out");
}

std::string DocLimits(const ParamDescriptor& parameter) {
    std::vector<std::string> parts;
    if (parameter.HasLower()) {
        parts.push_back((parameter.LowerOption() == kBdryIncluded ? "at least " : "above ") +
                        NumberText(parameter.Lower()));
    }
    if (parameter.HasUpper()) {
        parts.push_back((parameter.UpperOption() == kBdryIncluded ? "at most " : "below ") +
                        NumberText(parameter.Upper()));
    }
    std::vector<std::string> words;
    for (const std::string& word : parameter.StringValues()) {
        words.push_back("`" + word + "`");
    }
    if (!words.empty()) {
        parts.push_back((parts.empty() ? "" : "or ") + Joined(words, ", "));
    }
    for (const std::string& qualifier : parameter.Qualifiers()) {
        parts.push_back("qualifier `" + qualifier + "`");
    }
    return Joined(parts, ", ");
}

/// The cells of the page's tables by subcommand, a row a line.
std::map<std::string, std::vector<std::vector<std::string>>> DocTables() {
    std::ifstream page(std::string(PREDSEL_DOCS_DIR) + "/command-language.md");
    EXPECT_TRUE(page.is_open());
    std::map<std::string, std::vector<std::vector<std::string>>> tables;
    std::string section;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("#")) {
            section = line.starts_with("### ") ? line.substr(4) : "";
            continue;
        }
        if (section.empty() || !line.starts_with("| ") || line.starts_with("| Parameter |")) {
            continue;
        }
        std::vector<std::string> cells;
        std::istringstream row(line.substr(1));
        for (std::string cell; std::getline(row, cell, '|');) {
            const std::size_t first = cell.find_first_not_of(' ');
            const std::size_t last = cell.find_last_not_of(' ');
            cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
        }
        tables[section].push_back(cells);
    }
    return tables;
}

std::string DocText() {
    std::ifstream page(std::string(PREDSEL_DOCS_DIR) + "/command-language.md");
    std::ostringstream text;
    text << page.rdbuf();
    return text.str();
}

}  // namespace

TEST(PRSGrammar, SubcommandsStandInTheOrderOfDeclaration) {
    const auto names = [](Commands command) {
        const auto descriptor = Descriptor(command);
        std::vector<std::string> all;
        for (const SubComDescriptor& subCom : descriptor->SubComs()) {
            all.push_back(subCom.Name());
        }
        return Joined(all, " ");
    };
    EXPECT_EQ(names(PRSGrammar::kSelectPred), "EXCEPT SCREENING CRITERIA MISSING PRINT PLOT");
    EXPECT_EQ(names(PRSGrammar::kNaiveBayes),
              "EXCEPT FORCE TRAININGSAMPLE SUBSET SAVE OUTFILE CRITERIA MISSING PRINT");
    for (const Commands command : {PRSGrammar::kSelectPred, PRSGrammar::kNaiveBayes}) {
        const auto descriptor = Descriptor(command);
        const SubComDescriptor& first = descriptor->SubComs().front();
        EXPECT_EQ(first.Name(), "");
        EXPECT_TRUE(first.IsMandatory());
        EXPECT_EQ(first.Spec(), kSubComVarList);
    }
}

TEST(PRSGrammar, SaveAndPrintAreSubcommandsOfKeywords) {
    EXPECT_EQ(FindSubCom(*Descriptor(PRSGrammar::kNaiveBayes), "SAVE")->Spec(), kSubComKeywords);
    for (const Commands command : {PRSGrammar::kSelectPred, PRSGrammar::kNaiveBayes}) {
        const auto descriptor = Descriptor(command);
        for (const SubComDescriptor& subCom : descriptor->SubComs()) {
            if (subCom.Name() == "PRINT") {
                EXPECT_EQ(subCom.Spec(), kSubComKeywords);
            } else if (subCom.Name() != "" && subCom.Name() != "SAVE") {
                EXPECT_EQ(subCom.Spec(), kSubComParams) << subCom.Name();
            }
        }
    }
}

TEST(PRSGrammar, PctEqualHasNoUpperBound) {
    const auto descriptor = Descriptor(PRSGrammar::kSelectPred);
    EXPECT_FALSE(FindParam(*descriptor, "SCREENING", "PCTEQUAL")->HasUpper());
    EXPECT_TRUE(FindParam(*descriptor, "SCREENING", "PCTEQUAL")->HasLower());
    EXPECT_EQ(FindParam(*descriptor, "SCREENING", "PCTMISSING")->Upper(), 100.0);
}

TEST(PRSGrammar, SubcommandsOfNoCommand) {
    for (const Commands command : {PRSGrammar::kSelectPred, PRSGrammar::kNaiveBayes}) {
        EXPECT_EQ(FindSubCom(*Descriptor(command), "MACROVAR"), nullptr);
    }
    EXPECT_EQ(FindSubCom(*Descriptor(PRSGrammar::kNaiveBayes), "PLOT"), nullptr);
    EXPECT_EQ(FindParam(*Descriptor(PRSGrammar::kNaiveBayes), "PRINT", "UNCERTAINTY"), nullptr);
    EXPECT_EQ(FindParam(*Descriptor(PRSGrammar::kSelectPred), "PLOT", "UNCERTAINTY"), nullptr);
}

TEST(PRSGrammar, SummaryTakesCriteriaInSelectPredOnly) {
    const auto select = Descriptor(PRSGrammar::kSelectPred);
    const ParamDescriptor* summary = FindParam(*select, "PRINT", "SUMMARY");
    EXPECT_EQ(summary->Spec(), kParamStringList);
    EXPECT_FALSE(summary->IsValueRequired());
    EXPECT_EQ(summary->StringValues().size(), 4u);
    const auto naive = Descriptor(PRSGrammar::kNaiveBayes);
    EXPECT_EQ(FindParam(*naive, "PRINT", "SUMMARY")->Spec(), kParamKeyword);
}

TEST(PRSGrammar, DefaultsAreThoseOfFreshSpecs) {
    const PRSValidSpecs fresh;
    const std::map<std::string, std::string> values = {
        {"STATUS", fresh.GetScreening() ? "ON" : "OFF"},
        {"PCTMISSING", NumberText(fresh.GetPctMissing())},
        {"PCTEQUAL", NumberText(fresh.GetPctEqual())},
        {"PCTUNEQUAL", NumberText(fresh.GetPctUnequal())},
        {"CV", NumberText(fresh.GetCoefVar())},
        {"STDDEV", NumberText(fresh.GetStdDev())},
        {"TIMER", NumberText(fresh.GetTimer())},
        {"SHOWUNSELECTED", NumberText(fresh.GetShowUnselected())},
        {"SIZE", fresh.GetSelectSize() == 0 ? "AUTO" : "a size"},
        {"MAXSIZE", fresh.GetMaxSubsetSize() == 0 ? "AUTO" : "a size"},
        {"RANKING", fresh.GetRanking() == 0 ? "PEARSONCHISQ" : "another"},
        {"PCUTOFF", NumberText(fresh.GetPCutoff())},
        {"BINS", NumberText(fresh.GetBins())},
        {"MEMALLOCATE", NumberText(fresh.GetMultiMemAllocate())},
        {"USERMISSING", fresh.GetUserMissExclude() ? "EXCLUDE" : "INCLUDE"}};
    std::size_t compared = 0;
    for (const PRSGrammar::ParamRow& row : PRSGrammar::Params()) {
        const auto value = values.find(row.fName);
        if (value != values.end()) {
            EXPECT_EQ(row.fDefault, value->second) << row.fName;
            ++compared;
        }
    }
    EXPECT_EQ(compared, values.size());
}

TEST(PRSGrammar, EveryParameterStandsInThePageAsDeclared) {
    const auto tables = DocTables();
    const auto select = Descriptor(PRSGrammar::kSelectPred);
    const auto naive = Descriptor(PRSGrammar::kNaiveBayes);
    std::map<std::string, std::size_t> rows;
    for (const PRSGrammar::ParamRow& row : PRSGrammar::Params()) {
        const ParamDescriptor* ofSelect = (row.fCommands & PRSGrammar::kSelectPred) != 0
                                              ? FindParam(*select, row.fSubCom, row.fName)
                                              : nullptr;
        const ParamDescriptor* ofNaive = (row.fCommands & PRSGrammar::kNaiveBayes) != 0
                                             ? FindParam(*naive, row.fSubCom, row.fName)
                                             : nullptr;
        if (ofSelect == nullptr && ofNaive == nullptr) {
            continue;  // accepted by no command
        }
        const ParamDescriptor& parameter = ofSelect != nullptr ? *ofSelect : *ofNaive;
        const std::vector<std::string> expected = {row.fName,
                                                   ofSelect == nullptr  ? "NAIVEBAYES"
                                                   : ofNaive == nullptr ? "SELECTPRED"
                                                                        : "both",
                                                   DocKind(parameter), DocLimits(parameter),
                                                   row.fDefault};
        const std::size_t position = rows[row.fSubCom]++;
        ASSERT_TRUE(tables.contains(row.fSubCom)) << row.fSubCom;
        const auto& table = tables.at(row.fSubCom);
        ASSERT_LT(position, table.size()) << row.fSubCom << ' ' << row.fName;
        ASSERT_EQ(table[position].size(), 6u) << row.fName;
        EXPECT_EQ(std::vector<std::string>(table[position].begin(), table[position].end() - 1),
                  expected);
        EXPECT_FALSE(table[position].back().empty()) << row.fName;
    }
    // Nothing beyond the grammar.
    EXPECT_EQ(tables.size(), rows.size());
    for (const auto& [subCom, table] : tables) {
        EXPECT_EQ(table.size(), rows[subCom]) << subCom;
    }
}

TEST(PRSGrammar, PageDoesNotSpeakOfWhatNoCommandAccepts) {
    EXPECT_EQ(DocText().find("MACROVAR"), std::string::npos);
    EXPECT_EQ(DocText().find("UNCERTAINTY"), std::string::npos);
}

TEST(PRSGrammar, PageQuotesTheMessagesThatParsingCanGive) {
    const std::string page = DocText();
    ParsedCommand command("SELECTPRED y");
    const PRSMessage message;
    message.NoPredsAvailable();
    message.NoPossiblePreds();
    message.ParamBelowUniquePreds("CRITERIA SIZE", "SELECTPRED", true);
    message.ParamBelowPossiblePreds("SUBSET MAXSIZE", "FORCE", "NAIVEBAYES", false);
    message.ParamBelowPossiblePreds("SUBSET EXACTSIZE", "FORCE", "NAIVEBAYES", true);
    message.RankCriterionIgnored("LRCHISQ", "SUMMARY", "PRINT", true);
    message.RankCriterionIgnored("LAMBDA", "SUMMARY", "PRINT", false);
    ASSERT_EQ(command.Messages().size(), 7u);
    for (const embedded::ReportMessage& said : command.Messages()) {
        EXPECT_NE(page.find("| " + said.fText + " |"), std::string::npos) << said.fText;
    }
}

TEST(PRSGrammar, ExamplesOfThePageAreAccepted) {
    // Every variable that an example names, and enough others for the sizes that they ask for.
    const auto pageData = [] {
        embedded::DataSetBuilder builder;
        for (const char* name : {"species", "island", "sex", "year", "region", "quarter", "segment",
                                 "churn", "contract", "plan"}) {
            builder.Numbers(name, {0, 1, 1, 0}).Level(kLevelNominal);
        }
        for (const char* name :
             {"bill_length", "bill_depth", "flipper_length", "body_mass", "rating", "income"}) {
            builder.Numbers(name, {0.5, 1.5, 2.5, 3.5}).Level(kLevelScale);
        }
        for (int i = 0; i < 9; ++i) {
            builder.Numbers("age" + std::to_string(i), {4, 3, 2, 1}).Level(kLevelScale);
        }
        return builder.Build();
    };
    const std::string page = DocText();
    std::size_t examples = 0;
    for (std::size_t from = page.find("```\n"); from != std::string::npos;
         from = page.find("```\n", from)) {
        const std::size_t to = page.find("```", from + 4);
        ASSERT_NE(to, std::string::npos);
        const std::string block = page.substr(from + 4, to - from - 4);
        from = to + 3;
        if (block.starts_with("target")) {
            continue;  // the form of the variable list
        }
        const ParsedCommand command(block, pageData());
        EXPECT_TRUE(command.Ok()) << block << command.MessageTexts();
        EXPECT_TRUE(command.SaidNothing());
        ++examples;
    }
    EXPECT_EQ(examples, 4u);
}

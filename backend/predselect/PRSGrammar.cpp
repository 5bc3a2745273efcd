#include "backend/predselect/PRSGrammar.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

namespace PRSGrammar {

namespace {

constexpr SubComRow kSubComs[] = {
    {"", kSubComVarList, true, kBoth, kBoth},
    {"EXCEPT", kSubComParams, false, kBoth, kBoth},
    {"SCREENING", kSubComParams, false, kSelectPred, kSelectPred},
    {"FORCE", kSubComParams, false, kNaiveBayes, kNaiveBayes},
    {"TRAININGSAMPLE", kSubComParams, false, kNaiveBayes, kNaiveBayes},
    {"SUBSET", kSubComParams, false, kNaiveBayes, kNaiveBayes},
    {"SAVE", kSubComKeywords, false, kNaiveBayes, kNaiveBayes},
    {"OUTFILE", kSubComParams, false, kNaiveBayes, kNaiveBayes},
    {"CRITERIA", kSubComParams, false, kBoth, kBoth},
    {"MISSING", kSubComParams, false, kBoth, kBoth},
    // Intended: no command accepts it, though its handler exists. SubcommandsOfNoCommand holds it.
    {"MACROVAR", kSubComParams, false, kBoth, kNoCommand},
    {"PRINT", kSubComKeywords, false, kBoth, kBoth},
    // Intended: NAIVEBAYES builds its plot of the uncertainty and leaves it out. The same test.
    {"PLOT", kSubComParams, false, kBoth, kSelectPred},
};

constexpr const char* kOnOff[] = {"ON", "OFF"};
constexpr const char* kAuto[] = {"AUTO"};
constexpr const char* kRankings[] = {"PEARSONCHISQ", "LRCHISQ", "CRAMERSV", "LAMBDA"};
constexpr const char* kExcludeInclude[] = {"EXCLUDE", "INCLUDE"};

constexpr Bound Above(double value) { return {true, value, kBdryExcluded}; }
constexpr Bound AtLeast(double value) { return {true, value, kBdryIncluded}; }
constexpr Bound Below(double value) { return {true, value, kBdryExcluded}; }
constexpr Bound AtMost(double value) { return {true, value, kBdryIncluded}; }

constexpr ParamRow kParams[] = {
    {.fSubCom = "EXCEPT",
     .fName = "VARIABLES",
     .fSpec = kParamTokenList,
     .fbMandatory = true,
     .fDefault = "no exclusions"},

    {.fSubCom = "SCREENING",
     .fName = "STATUS",
     .fSpec = kParamOneString,
     .fCommands = kSelectPred,
     .fvWords = kOnOff,
     .fDefault = "ON"},
    {.fSubCom = "SCREENING",
     .fName = "PCTMISSING",
     .fSpec = kParamNumber,
     .fCommands = kSelectPred,
     .fLower = Above(0),
     .fUpper = AtMost(100),
     .fDefault = "70"},
    // Intended: the upper bound goes to PCTMISSING, which has been declared by then, and so has no
    // effect: a value above 100 is accepted here and ignored by the engine, which keeps its own
    // 95 percent. PctEqualHasNoUpperBound holds it.
    {.fSubCom = "SCREENING",
     .fName = "PCTEQUAL",
     .fSpec = kParamNumber,
     .fCommands = kSelectPred,
     .fLower = Above(0),
     .fUpper = AtMost(100),
     .fpUpperGoesTo = "PCTMISSING",
     .fDefault = "95"},
    {.fSubCom = "SCREENING",
     .fName = "PCTUNEQUAL",
     .fSpec = kParamNumber,
     .fCommands = kSelectPred,
     .fLower = Above(0),
     .fUpper = AtMost(100),
     .fDefault = "90"},
    {.fSubCom = "SCREENING",
     .fName = "CV",
     .fSpec = kParamNumber,
     .fCommands = kSelectPred,
     .fLower = AtLeast(0),
     .fDefault = "0.001"},
    {.fSubCom = "SCREENING",
     .fName = "STDDEV",
     .fSpec = kParamNumber,
     .fCommands = kSelectPred,
     .fLower = AtLeast(0),
     .fDefault = "0"},

    {.fSubCom = "FORCE",
     .fName = "FACTORS",
     .fSpec = kParamTokenList,
     .fCommands = kNaiveBayes,
     .fDefault = "none"},
    {.fSubCom = "FORCE",
     .fName = "COVARIATES",
     .fSpec = kParamTokenList,
     .fCommands = kNaiveBayes,
     .fDefault = "none"},

    {.fSubCom = "TRAININGSAMPLE",
     .fName = "PERCENT",
     .fSpec = kParamNumber,
     .fCommands = kNaiveBayes,
     .fLower = Above(0),
     .fUpper = Below(100),
     .fDefault = "unset"},
    {.fSubCom = "TRAININGSAMPLE",
     .fName = "VARIABLE",
     .fSpec = kParamVariable,
     .fCommands = kNaiveBayes,
     .fDefault = "unset"},

    {.fSubCom = "SUBSET",
     .fName = "MAXSIZE",
     .fSpec = kParamTokenList,
     .fCommands = kNaiveBayes,
     .fpQualifier = "BESTSUBSET",
     .fDefault = "AUTO"},
    {.fSubCom = "SUBSET",
     .fName = "EXACTSIZE",
     .fSpec = kParamInteger,
     .fCommands = kNaiveBayes,
     .fLower = Above(0),
     .fDefault = "unset"},
    {.fSubCom = "SUBSET", .fName = "NOSELECTION", .fSpec = kParamKeyword, .fCommands = kNaiveBayes},

    {.fSubCom = "SAVE",
     .fName = "PREDVAL",
     .fSpec = kParamVariable,
     .fCommands = kNaiveBayes,
     .fbValueOptional = true,
     .fDefault = "not saved"},
    {.fSubCom = "SAVE",
     .fName = "PREDPROB",
     .fSpec = kParamTokenList,
     .fCommands = kNaiveBayes,
     .fbValueOptional = true,
     .fDefault = "not saved"},

    {.fSubCom = "OUTFILE",
     .fName = "MODEL",
     .fSpec = kParamFile,
     .fCommands = kNaiveBayes,
     .fDefault = "no model file"},

    {.fSubCom = "CRITERIA",
     .fName = "TIMER",
     .fSpec = kParamNumber,
     .fLower = AtLeast(0),
     .fDefault = "5"},
    {.fSubCom = "CRITERIA",
     .fName = "SHOWUNSELECTED",
     .fSpec = kParamInteger,
     .fCommands = kSelectPred,
     .fLower = AtLeast(0),
     .fDefault = "0"},
    {.fSubCom = "CRITERIA",
     .fName = "SIZE",
     .fSpec = kParamInteger,
     .fCommands = kSelectPred,
     .fLower = Above(0),
     .fvWords = kAuto,
     .fDefault = "AUTO"},
    {.fSubCom = "CRITERIA",
     .fName = "RANKING",
     .fSpec = kParamOneString,
     .fCommands = kSelectPred,
     .fvWords = kRankings,
     .fDefault = "PEARSONCHISQ"},
    {.fSubCom = "CRITERIA",
     .fName = "PCUTOFF",
     .fSpec = kParamNumber,
     .fCommands = kSelectPred,
     .fLower = Above(0),
     .fUpper = AtMost(1),
     .fDefault = "0.05"},
    {.fSubCom = "CRITERIA",
     .fName = "BINS",
     .fSpec = kParamInteger,
     .fCommands = kNaiveBayes,
     .fLower = Above(1),
     .fDefault = "10"},
    {.fSubCom = "CRITERIA",
     .fName = "MEMALLOCATE",
     .fSpec = kParamNumber,
     .fCommands = kNaiveBayes,
     .fLower = AtLeast(4),
     .fDefault = "1024"},

    {.fSubCom = "MISSING",
     .fName = "USERMISSING",
     .fSpec = kParamOneString,
     .fbMandatory = true,
     .fvWords = kExcludeInclude,
     .fDefault = "EXCLUDE"},

    {.fSubCom = "MACROVAR", .fName = "FACTORS", .fSpec = kParamVariable, .fbMandatory = true},
    {.fSubCom = "MACROVAR", .fName = "COVARIATES", .fSpec = kParamVariable, .fbMandatory = true},

    {.fSubCom = "PRINT", .fName = "NONE", .fSpec = kParamKeyword},
    {.fSubCom = "PRINT", .fName = "CPS", .fSpec = kParamKeyword},
    {.fSubCom = "PRINT", .fName = "EXCLUDED", .fSpec = kParamKeyword},
    {.fSubCom = "PRINT", .fName = "SELECTED", .fSpec = kParamKeyword},
    {.fSubCom = "PRINT",
     .fName = "SUMMARY",
     .fSpec = kParamStringList,
     .fCommands = kSelectPred,
     .fbValueOptional = true,
     .fvWords = kRankings},
    {.fSubCom = "PRINT", .fName = "SUMMARY", .fSpec = kParamKeyword, .fCommands = kNaiveBayes},
    {.fSubCom = "PRINT",
     .fName = "CLASSIFICATION",
     .fSpec = kParamKeyword,
     .fCommands = kNaiveBayes},

    {.fSubCom = "PLOT", .fName = "SUMMARY", .fSpec = kParamKeyword, .fCommands = kSelectPred},
    {.fSubCom = "PLOT", .fName = "UNCERTAINTY", .fSpec = kParamKeyword, .fCommands = kNaiveBayes},
};

bool Serves(Commands commands, Commands command) { return (commands & command) != 0; }

ParamDescriptor MakeParam(const ParamRow& row) {
    ParamDescriptor parameter(row.fName, row.fSpec, row.fbMandatory, !row.fbValueOptional);
    for (const char* word : row.fvWords) {
        parameter.addStringValue(word);
    }
    if (row.fLower.fbSet) {
        parameter.setLowerBdry(row.fLower.fValue, row.fLower.fOption);
    }
    if (row.fpQualifier != nullptr) {
        parameter.setQualifOption(0);
        parameter.addQualifDesc(row.fpQualifier);
    }
    return parameter;
}

SubComDescriptor MakeSubCom(const SubComRow& subComRow, Commands command) {
    SubComDescriptor subCom(subComRow.fName, subComRow.fSpec, subComRow.fbMandatory);
    std::vector<ParamDescriptor> built;  // outlive their copies in the subcommand
    for (const ParamRow& row : kParams) {
        if (std::string_view(row.fSubCom) != subComRow.fName || !Serves(row.fCommands, command)) {
            continue;
        }
        built.push_back(MakeParam(row));
        if (row.fUpper.fbSet) {
            const std::string_view receiver =
                row.fpUpperGoesTo != nullptr ? row.fpUpperGoesTo : row.fName;
            std::find_if(built.begin(), built.end(), [&](const ParamDescriptor& parameter) {
                return parameter.Name() == receiver;
            })->setUpperBdry(row.fUpper.fValue, row.fUpper.fOption);
        }
        subCom.addParamDescriptor(built.back());
    }
    return subCom;
}

}  // namespace

std::span<const SubComRow> SubComs() { return kSubComs; }
std::span<const ParamRow> Params() { return kParams; }

std::unique_ptr<CommandDescriptor> MakeDescriptor(const char* commandName, Commands command) {
    auto descriptor = std::make_unique<CommandDescriptor>(commandName);
    for (const SubComRow& row : kSubComs) {
        if (!Serves(row.fBuilt, command)) {
            continue;
        }
        const SubComDescriptor subCom = MakeSubCom(row, command);
        if (Serves(row.fAccepted, command)) {
            descriptor->addSubComDescriptor(subCom);
        }
    }
    return descriptor;
}

}  // namespace PRSGrammar

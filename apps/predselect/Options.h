#ifndef PREDSEL_APPS_OPTIONS_H
#define PREDSEL_APPS_OPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "embedded/data/OpenOptions.h"

namespace app {

enum class ColorMode { Auto, Always, Never };

/// Where a run's report goes. "-" is standard output.
struct OutputOptions {
    std::string fHtml;
    std::string fJson;
    std::string fChart;
    std::string fVega;
    std::string fSave;      // the data set with its new variables
    std::string fPmml;      // the model
    std::string fState;     // the engine's state, wrapped
    std::string fStateXml;  // the same as XML, as the engine writes it
    bool fbQuiet = false;
    ColorMode fColor = ColorMode::Auto;
    std::int32_t fWidth = 0;  // of text in columns; 0: the terminal's
};

/// Target and candidates, as the two commands name them.
struct VariableOptions {
    std::string fTarget;
    std::vector<std::string> fvFactors;
    std::vector<std::string> fvCovariates;
    std::vector<std::string> fvExcept;
};

/// The options of `select`, as they were given. A text that is empty was not given; numbers stay
/// texts, because the report shows limits as they were typed.
struct SelectOptions {
    VariableOptions fVariables;
    std::string fTargetLevel;
    std::string fSize;
    std::string fRanking;
    std::string fPCutoff;
    std::string fShowUnselected;
    std::string fTimer;
    std::string fScreening;
    std::string fMaxMissing;
    std::string fMaxSingle;
    std::string fMaxCategories;
    std::string fMinCv;
    std::string fMinStdDev;
    std::string fUserMissing;
    std::vector<std::string> fvPrint;
    std::vector<std::string> fvSummary;
    bool fbPlot = false;
};

/// The options of `bayes`, likewise. A name that may be left out is engaged when its option was
/// given, and empty when without a name.
struct BayesOptions {
    VariableOptions fVariables;
    std::vector<std::string> fvForceFactors;
    std::vector<std::string> fvForceCovariates;
    std::string fUserMissing;
    std::string fTrainPercent;
    std::string fTrainVariable;
    std::string fMaxSize;
    std::string fBestSubset;
    std::string fExactSize;
    bool fbNoSelection = false;
    std::string fBins;
    std::string fTimer;
    std::optional<std::string> fPredicted;
    std::optional<std::string> fProbabilities;
    std::string fMaxProbabilities;
    std::vector<std::string> fvPrint;
};

/// The options of `score`, `update` and `merge`.
struct ModelOptions {
    std::string fState;                 // score, update
    std::vector<std::string> fvStates;  // merge
    std::string fPredicted;
    std::string fProbabilities;
    std::int32_t fMaxProbabilities = 25;
};

enum class Verb { Run, Select, Bayes, Score, Update, Merge, Describe, Completion };

/// What the program was asked to do.
struct ProgramOptions {
    Verb fVerb = Verb::Run;
    std::string fDataPath;
    embedded::OpenOptions fOpen;
    std::optional<std::uint64_t> fMemory;  // bytes; also in fOpen
    OutputOptions fOutput;

    // run
    std::string fCommandFile;  // "-" is standard input
    std::optional<std::string> fCommandText;

    SelectOptions fSelect;
    BayesOptions fBayes;
    ModelOptions fModel;
    std::optional<std::uint32_t> fSeed;
    bool fbShowCommand = false;

    // describe
    bool fbDescribeJson = false;
    std::optional<std::string> fWriteSchema;  // path; "-" is standard output

    std::string fShell;  // completion
};

}  // namespace app

#endif  // PREDSEL_APPS_OPTIONS_H

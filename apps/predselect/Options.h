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
    bool fbQuiet = false;
    ColorMode fColor = ColorMode::Auto;
    std::int32_t fWidth = 0;  // of text in columns; 0: the terminal's
};

/// The options of `select`, as they were given. A text that is empty was not given; numbers stay
/// texts, because the report shows limits as they were typed.
struct SelectOptions {
    std::string fTarget;
    std::string fTargetLevel;
    std::vector<std::string> fvFactors;
    std::vector<std::string> fvCovariates;
    std::vector<std::string> fvExcept;
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

enum class Verb { Run, Select, Describe, Completion };

/// What the program was asked to do.
struct ProgramOptions {
    Verb fVerb = Verb::Run;
    std::string fDataPath;
    embedded::OpenOptions fOpen;
    OutputOptions fOutput;

    // run
    std::string fCommandFile;  // "-" is standard input
    std::optional<std::string> fCommandText;

    SelectOptions fSelect;
    bool fbShowCommand = false;

    // describe
    bool fbDescribeJson = false;
    std::optional<std::string> fWriteSchema;  // path; "-" is standard output

    std::string fShell;  // completion
};

}  // namespace app

#endif  // PREDSEL_APPS_OPTIONS_H

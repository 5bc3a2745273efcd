// The shared library as a host of one's own would use it: loaded at run time, its one entry found
// by name.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

#include "embedded/CommandRunner.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/OpenDataSet.h"
#include "embedded/output/JsonRenderer.h"
#include "tests/support/CaseName.h"

namespace {

// What a shell command prints; nothing when it fails.
std::optional<std::string> OutputOf(const std::string& shellCommand) {
    std::FILE* pipe = popen(shellCommand.c_str(), "r");
    if (!pipe) return std::nullopt;
    std::string output;
    std::array<char, 4096> buffer{};
    for (std::size_t size = 0; (size = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
        output.append(buffer.data(), size);
    }
    const int status = pclose(pipe);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
    return output;
}

class LoadedLibrary {
 public:
    // RTLD_NOW: every symbol that the library leaves to the host has to be there.
    LoadedLibrary() : fpHandle(dlopen(PREDSELE_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
    ~LoadedLibrary() {
        if (fpHandle) dlclose(fpHandle);
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    bool IsLoaded() const { return fpHandle != nullptr; }
    embedded::ProcedureEntry Entry() const {
        return reinterpret_cast<embedded::ProcedureEntry>(dlsym(fpHandle, "PREDSELE"));
    }

 private:
    void* fpHandle;
};

std::string ReportThrough(embedded::ProcedureEntry entry, const std::string& dataPath,
                          const std::string& command) {
    embedded::CommandScript script = embedded::ParseCommandText(command, "command line");
    EXPECT_FALSE(script.fFault.has_value());
    embedded::DataSet data = embedded::OpenDataSet(dataPath);
    embedded::Report report;
    report.fVersion = PREDSELECT_VERSION;
    report.fvCommands = embedded::RunCommands(data, script.fvCommands, entry);
    return embedded::JsonRenderer::Render(report);
}

struct Run {
    const char* fName;
    const char* fData;
    const char* fCommand;
};

class PredseleLibrary : public testing::TestWithParam<Run> {};

TEST_P(PredseleLibrary, GivesTheReportOfTheProgram) {
    const LoadedLibrary library;
    ASSERT_TRUE(library.IsLoaded()) << dlerror();
    ASSERT_NE(library.Entry(), nullptr) << dlerror();
    const std::string dataPath = std::string(DATA_FOLDER) + "/" + GetParam().fData;
    const std::string loaded = ReportThrough(library.Entry(), dataPath, GetParam().fCommand);

    const auto linked = OutputOf(std::string(PREDSELECT_PROGRAM) + " run --json - --data '" +
                                 dataPath + "' -c '" + GetParam().fCommand + "' 2>/dev/null");
    ASSERT_TRUE(linked.has_value());
    EXPECT_NE(loaded.find("PredictorSummary"), std::string::npos);
    EXPECT_EQ(loaded, *linked);
}

INSTANTIATE_TEST_SUITE_P(
    Reports, PredseleLibrary,
    testing::Values(
        Run{"CategoricalTarget", "penguins.csv", "SELECTPRED species /PLOT SUMMARY;"},
        Run{"ContinuousTarget", "penguins.csv", "SELECTPRED body_mass_g;"},
        Run{"ManyCategories", "churn.csv", "SELECTPRED churn BY state /CRITERIA RANKING=LAMBDA;"},
        Run{"TwoCommands", "penguins.csv", "SELECTPRED sex; SELECTPRED island BY sex species;"}),
    testsupport::CaseName());

TEST(PredseleLibraryExports, AreTheEntryAlone) {
    const auto symbols =
        OutputOf(std::string(NM_PROGRAM) + " -D --defined-only --format=just-symbols '" +
                 PREDSELE_LIBRARY + "'");
    ASSERT_TRUE(symbols.has_value());
    EXPECT_EQ(*symbols, "PREDSELE\n");
}

TEST(PredseleLibraryExports, LeaveNoHostSymbolInside) {
    // Were the host linked in, its words would be the library's own and not those of the process.
    const auto symbols =
        OutputOf(std::string(NM_PROGRAM) + " -D --undefined-only '" + PREDSELE_LIBRARY + "'");
    ASSERT_TRUE(symbols.has_value());
    EXPECT_NE(symbols->find("pvGetCmnGlb"), std::string::npos);
}

}  // namespace

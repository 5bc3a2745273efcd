// Temporary folder, application and model files.
#include "host/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "embedded/CommandRunner.h"
#include "embedded/data/tests/TemporaryFiles.h"
#include "host/Output.h"

namespace {

namespace fs = std::filesystem;
using embedded::CommandReport;
using embedded::CommandStatus;
using embedded::RunOptions;
using embedded::TemporaryFiles;

std::string gModelPath;
std::string gTempPath;
std::vector<std::string> gSeen;  // names in the folder while the command runs

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

void WriteModel() {
    std::ofstream stream;
    ExtNameStr name;
    name.SetGeneric(gModelPath);
    if (!name.Open(stream, kOpenForWriting)) return;
    stream << "model";
    stream.close();
    gSeen = Names(fs::path(gModelPath).parent_path().string());
}

void WriteModelAndFail() {
    WriteModel();
    BpError(BpString("this went wrong", false), kBpErrorShow, kBpError);
}

CommandReport RunOne(embedded::ProcedureEntry entry, const RunOptions& options = {}) {
    embedded::DataSet data;
    return embedded::RunCommands(
               data, embedded::ParseCommandText("NAIVEBAYES y;", "test").fvCommands, entry, options)
        .front();
}

// Sets a variable of the environment as long as it lives.
class Environment {
 public:
    Environment(const char* name, const char* value) : fName(name) {
        if (const char* before = std::getenv(name)) fBefore = before;
        setenv(name, value, 1);
    }
    ~Environment() {
        if (fBefore) {
            setenv(fName, fBefore->c_str(), 1);
        } else {
            unsetenv(fName);
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

 private:
    const char* fName;
    std::optional<std::string> fBefore;
};

void AskForTempPath() { gTempPath = GetKoltTempPath(); }

TEST(HostFiles, TheTemporaryFolderEndsWithASeparator) {
    const Environment environment("TMPDIR", "/var/folder");
    RunOne(&AskForTempPath);
    EXPECT_EQ(gTempPath, "/var/folder/");
    RunOne(&AskForTempPath, {.fTempDir = "/mine/"});
    EXPECT_EQ(gTempPath, "/mine/");
}

TEST(HostFiles, WithoutAFolderInTheEnvironmentItIsTheSystems) {
    const Environment environment("TMPDIR", "");
    RunOne(&AskForTempPath);
    EXPECT_EQ(gTempPath, "/tmp/");
}

TEST(HostFiles, TheApplicationNamesItselfAndItsVersion) {
    const KoltAppParams* params = GetAppParams();
    EXPECT_EQ(params->fAppName, "predselect");
    EXPECT_FALSE(params->fAppVersion.empty());
    EXPECT_EQ(params->fCopyright, "Copyright (c) 2026 The predselect authors");
}

TEST(HostFiles, AModelFileComesToItsPlaceWhenTheCommandHasEndedWell) {
    const TemporaryFiles files;
    gModelPath = files.Write("model.xml", "before");
    const CommandReport report = RunOne(&WriteModel);
    EXPECT_EQ(report.fStatus, CommandStatus::Ok);
    EXPECT_EQ(report.fModelFile, gModelPath);
    EXPECT_EQ(gSeen.size(), 2U) << "the old one and a temporary one";
    EXPECT_EQ(Names(files.Directory()), std::vector<std::string>{"model.xml"});
    EXPECT_EQ(Content(gModelPath), "model");
}

TEST(HostFiles, ANewModelFileHasTheUsualMode) {
    const TemporaryFiles files;
    gModelPath = files.Path("model.xml");
    RunOne(&WriteModel);
    struct stat model {};
    struct stat usual {};
    ASSERT_EQ(stat(gModelPath.c_str(), &model), 0);
    ASSERT_EQ(stat(files.Write("usual", "").c_str(), &usual), 0);
    EXPECT_EQ(model.st_mode, usual.st_mode);
}

TEST(HostFiles, AFailedCommandLeavesTheOldModelFileAndNoOther) {
    const TemporaryFiles files;
    gModelPath = files.Write("model.xml", "before");
    const CommandReport report = RunOne(&WriteModelAndFail);
    EXPECT_EQ(report.fStatus, CommandStatus::Failed);
    EXPECT_FALSE(report.fModelFile);
    EXPECT_EQ(Names(files.Directory()), std::vector<std::string>{"model.xml"});
    EXPECT_EQ(Content(gModelPath), "before");
}

TEST(HostFiles, AModelFileInNoFolderIsAnErrorThatNamesIt) {
    const TemporaryFiles files;
    gModelPath = files.Path("none/model.xml");
    const CommandReport report = RunOne(&WriteModel);
    EXPECT_EQ(report.fStatus, CommandStatus::Failed);
    ASSERT_EQ(report.fvMessages.size(), 1U);
    EXPECT_EQ(report.fvMessages[0].fKey, "Model file ^1 cannot be written, ^2...");
    EXPECT_EQ(report.fvMessages[0].fText,
              "The model file " + gModelPath +
                  " cannot be written: No such file or directory. Check that its folder exists and "
                  "that you may write there, or name another file in /OUTFILE MODEL.");
    EXPECT_FALSE(report.fModelFile);
}

TEST(HostFiles, AFolderIsNoModelFile) {
    const TemporaryFiles files;
    gModelPath = files.Directory();
    const CommandReport report = RunOne(&WriteModel);
    ASSERT_EQ(report.fvMessages.size(), 1U);
    EXPECT_NE(report.fvMessages[0].fText.find("Is a directory"), std::string::npos);
}

TEST(HostFiles, TheCallerMayPlaceTheModelFile) {
    const TemporaryFiles files;
    gModelPath = files.Path("model.xml");
    std::string asked;
    RunOptions options;
    options.fPlaceModelFile = [&](const std::string& path) {
        asked = path;
        return files.Path("elsewhere");
    };
    const CommandReport report = RunOne(&WriteModelAndFail, options);
    EXPECT_EQ(report.fStatus, CommandStatus::Failed);
    EXPECT_EQ(asked, gModelPath);
    EXPECT_EQ(Names(files.Directory()), std::vector<std::string>{"elsewhere"})
        << "what becomes of it is the caller's";
}

TEST(HostFiles, TheReasonOfACallerThatRefusesIsTold) {
    gModelPath = "model.xml";
    RunOptions options;
    options.fPlaceModelFile = [](const std::string&) -> std::string {
        throw std::runtime_error("it is the data file");
    };
    const CommandReport report = RunOne(&WriteModel, options);
    ASSERT_EQ(report.fvMessages.size(), 1U);
    EXPECT_NE(report.fvMessages[0].fText.find("model.xml cannot be written: it is the data file."),
              std::string::npos);
}

}  // namespace

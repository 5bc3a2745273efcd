#ifndef PREDSEL_EMBEDDED_COMMAND_TESTS_COMMANDRUN_H
#define PREDSEL_EMBEDDED_COMMAND_TESTS_COMMANDRUN_H

#include <string>
#include <utility>
#include <vector>

#include "embedded/HostSession.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/output/Report.h"
#include "host/HostGlobals.h"

namespace embedded {

/// The first command of a text, running on a data set.
class CommandRun {
 public:
    /// Throws std::out_of_range when the text holds no command that can be read.
    CommandRun(std::string text, DataSet data)
        : fData(std::move(data)),
          fScript(ParseCommandText(std::move(text), "test.pred")),
          fSession(fData, fScript.fvCommands.at(0), fReport) {}
    explicit CommandRun(std::string text)
        : CommandRun(std::move(text), DataSetBuilder().Numbers("y", {1, 2}).Build()) {}

    const CommandTokens& Command() const { return fScript.fvCommands.front(); }
    const std::vector<ReportMessage>& Messages() const { return fReport.fvMessages; }
    /// The only message; a text that says so when there are none or several.
    std::string Message() const {
        if (Messages().size() == 1) return Messages().front().fText;
        std::string all = std::to_string(Messages().size()) + " messages:";
        for (const ReportMessage& message : Messages()) all += "\n" + message.fText;
        return all;
    }
    std::string Key() const { return Messages().empty() ? "" : Messages().front().fKey; }
    bool HasError() const { return pvGetCmnGlb()[kErrorWord] != 0; }

 private:
    DataSet fData;
    CommandScript fScript;
    CommandReport fReport;
    HostSession fSession;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_TESTS_COMMANDRUN_H

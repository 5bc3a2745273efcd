#ifndef PREDSEL_EMBEDDED_OUTPUT_TESTS_OUTPUTSESSION_H
#define PREDSEL_EMBEDDED_OUTPUT_TESTS_OUTPUTSESSION_H

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "embedded/HostSession.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/output/Report.h"
#include "host/Output.h"

namespace embedded {

// Dictionary indices of the session's variables.
inline constexpr std::int32_t kAge = 0;     // "age", labelled "Age in years"
inline constexpr std::int32_t kIncome = 1;  // "income", no label
inline constexpr std::int32_t kRegion = 2;  // "region", labelled "Region"; 1 is "North"
inline constexpr std::int32_t kCode = 3;    // "code", a string; "A" is "First"

/// A running command over a small dictionary.
class OutputSession : public testing::Test {
 protected:
    static ReportTable& LastTable(CommandReport& report) {
        return std::get<ReportTable>(report.fvItems.back());
    }
    ReportTable& Sent() { return LastTable(fReport); }

    DataSet fData = DataSetBuilder()
                        .Numbers("age", {31, 45})
                        .Label("Age in years")
                        .Numbers("income", {1, 2})
                        .Numbers("region", {1, 2})
                        .Label("Region")
                        .ValueLabel(1.0, "North")
                        .Strings("code", {"A", "B"})
                        .ValueLabel(std::string("A"), "First")
                        .Build();
    std::vector<CommandTokens> fCommands =
        ParseCommandText("SELECTPRED region;", "test").fvCommands;
    CommandReport fReport;
    HostSession fSession{fData, fCommands.front(), fReport};
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_TESTS_OUTPUTSESSION_H

#include "embedded/HostSession.h"

#include <algorithm>
#include <utility>

#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSet.h"
#include "embedded/output/Report.h"
#include "host/Assertion.h"
#include "host/HostGlobals.h"
#include "host/Output.h"

namespace embedded {
namespace {

HostSession* gActive = nullptr;

}  // namespace

HostSession::HostSession(DataSet& data, const CommandTokens& command, CommandReport& report,
                         RunOptions options)
    : fData(data),
      fCommand(command),
      fReport(report),
      fOptions(std::move(options)),
      fNewColumns(data.ColumnCount(), data.RowCount()) {
    PREDSEL_ASSERT(gActive == nullptr, "one session at a time");
    gActive = this;

    std::int64_t* words = pvGetCmnGlb();
    words[kErrorWord] = 0;
    words[kSplitFileCount] = static_cast<std::int64_t>(data.SplitIndices().size());

    CmaSysBlock& system = *pvGetCmaSys();
    std::fill(std::begin(system.fCommandName), std::end(system.fCommandName), '\0');
    const std::string& name = command.Name();
    const std::size_t most = std::size(system.fCommandName) - 1;
    std::copy_n(name.begin(), std::min(name.size(), most), std::begin(system.fCommandName));
}

HostSession::~HostSession() { gActive = nullptr; }

HostSession& HostSession::Active() {
    PREDSEL_ASSERT(gActive != nullptr, "a session is active");
    return *gActive;
}

const KOLT_Variable& HostSession::Variable(std::int32_t index) const {
    return index < fData.ColumnCount() ? fData.Variable(index) : fNewColumns.Variable(index);
}

std::string HostSession::PlaceModelFile(const std::string& path) {
    return fOptions.fPlaceModelFile ? fOptions.fPlaceModelFile(path) : fModelFiles.Place(path);
}

void HostSession::AddClosingNotes() const {
    constexpr std::int32_t kMissingValues = 4;
    for (const auto& [variable, cases] : fUnknownCases) {
        BpComposite text("^1: ^2", true);
        text.Add(BpVariable(variable, 2));
        text.Add(BpString(std::to_string(cases), false));
        text.Finish();
        AddNotes(kMissingValues, BpString("Cases With Unknown Category", true), text);
    }
}

void HostSession::Keep() {
    fModelFiles.Commit();
    fReport.fvSavedVariables = fNewColumns.MoveTo(fData);
}

}  // namespace embedded

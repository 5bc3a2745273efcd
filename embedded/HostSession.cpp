#include "embedded/HostSession.h"

#include <algorithm>

#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSet.h"
#include "host/Assertion.h"
#include "host/HostGlobals.h"

namespace embedded {
namespace {

HostSession* gActive = nullptr;

}  // namespace

HostSession::HostSession(DataSet& data, const CommandTokens& command, CommandReport& report)
    : fData(data), fCommand(command), fReport(report) {
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

}  // namespace embedded

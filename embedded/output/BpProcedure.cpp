// Messages and notes of the running procedure.
#include <string>
#include <utility>

#include "embedded/HostSession.h"
#include "embedded/output/ItemData.h"
#include "embedded/output/Report.h"
#include "host/HostGlobals.h"
#include "host/Output.h"

namespace {

embedded::CommandReport& RunningReport() { return embedded::HostSession::Active().Report(); }

embedded::MessageLevel LevelOf(std::int32_t level) {
    if (level >= kBpError) return embedded::MessageLevel::Error;
    return level == kBpWarning ? embedded::MessageLevel::Warning : embedded::MessageLevel::Note;
}

}  // namespace

void BpError(const BpItem& text, std::int32_t /*show*/, std::int32_t level) {
    auto& report = RunningReport();
    report.fvMessages.push_back({LevelOf(level), embedded::ItemKeyText(*text.Data()),
                                 embedded::ItemText(*text.Data(), report.fbFractionalWeights)});
    if (level >= kBpError) pvGetCmnGlb()[kErrorWord] = 1;
}

void AddNotes(std::int32_t group, const BpItem& title, const BpItem& text) {
    auto& report = RunningReport();
    const bool fractional = report.fbFractionalWeights;
    report.fvNotes.push_back({group, embedded::ItemText(*title.Data(), fractional),
                              embedded::ItemText(*text.Data(), fractional)});
}

void AddNotesWithGroup(std::int32_t group, const BpItem& title, const BpItem& heading,
                       const BpItem& text) {
    AddNotes(group, title, text);
    auto& report = RunningReport();
    std::string& noted = report.fvNotes.back().fText;
    noted = embedded::ItemText(*heading.Data(), report.fbFractionalWeights) + ": " + noted;
}

// All output goes to the active session; asking for it here finds a procedure that runs without
// one.
BpProcedure::BpProcedure(std::string_view /*name*/, std::int32_t /*kind*/) { RunningReport(); }

BpProcedure::~BpProcedure() = default;

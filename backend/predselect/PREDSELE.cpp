#include "backend/predselect/PREDSELE.h"

#include <array>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

#include "backend/predselect/PRSParser.h"
#include "backend/predselect/PRSUniFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "backend/predselect/SelOutput.h"
#include "host/CaseDelivery.h"
#include "host/CommandLanguage.h"
#include "host/Data.h"
#include "host/HostGlobals.h"
#include "host/Output.h"

namespace {

struct HostBlocks {
    std::int64_t* fpCmnGlb = nullptr;
    CmaSysBlock* fpCmaSys = nullptr;
};
HostBlocks gHost;

// Runs when the library is attached to the process. Always succeeds.
bool AttachHost() {
    gHost = {pvGetCmnGlb(), pvGetCmaSys()};
    return true;
}
[[maybe_unused]] const bool gAttached = AttachHost();

// Set by nobody; a debugger turns it on.
bool gDisplaySpecs;

constexpr std::int32_t kStatisticsProcedure = 5;  // the host's code for this kind of procedure

// Any host call may record an error, so the word is read afresh at every question.
bool ErrorRecorded() { return gHost.fpCmnGlb[kErrorWord] != 0; }

// The host's words that a run gives back as it found them. Not a destructor's work: an exception
// that escapes from a stage leaves the words alone.
class PreservedWords {
 public:
    PreservedWords() {
        for (std::size_t i = 0; i < kWords.size(); ++i) fValues[i] = gHost.fpCmnGlb[kWords[i]];
    }
    void WriteBack() const {
        for (std::size_t i = 0; i < kWords.size(); ++i) gHost.fpCmnGlb[kWords[i]] = fValues[i];
    }

 private:
    static constexpr std::array kWords{kSplitFileCount, kPreservedWordA, kPreservedWordB};
    std::array<std::int64_t, kWords.size()> fValues{};
};

// No predictor survived: 80010 or 80011.
bool NothingLeft(const FSStatus& status) { return status.fCode - 80010U < 2U; }

void RunSelection(const PRSValidSpecs& specs, ProcedureDataSource& source, BpProcedure& procedure) {
    PRSUniFactory factory(specs, source);
    SelOutput output(specs, factory, source, procedure);
    output.WriteMissingNotes();
    if (gDisplaySpecs) specs.Display(std::cout);

    if (ErrorRecorded()) return;
    const bool ran = factory.Run();
    if (ErrorRecorded() || !ran) return;
    if (!NothingLeft(factory.GetStatus())) {
        output.WriteTables();
    } else if (specs.GetPrintExcluded()) {
        output.WriteExcludedPredictors();
    }
}

// Everything between the parser's construction and the teardown. Each stage starts only while no
// error is recorded.
void RunStages(bool isSelect, PRSValidSpecs& specs, PRSParser& parser, ProcedureDataSource& source,
               BpProcedure& procedure) {
    if (!parser.Parse()) return;
    if (ErrorRecorded()) return;
    specs.FinishSpecs();
    if (!isSelect) {
        BpError(BpString("The classifier is not part of this version...", true), kBpErrorShow,
                kBpError);
        return;
    }
    if (!specs.GetFSSettings() || ErrorRecorded()) return;

    // The message does not end the run: the controller finds the empty data on its own.
    if (source.ColumnCount() == 0) UAInpAdaptMsg(source).NoValidCasesForSelect();
    RunSelection(specs, source, procedure);
}

}  // namespace

void PREDSELE() {
    const PreservedWords words;
    ProcedureDataSource source;
    PRSValidSpecs specs;
    const bool isSelect = AreStringsEqualCase(std::string(gHost.fpCmaSys->fCommandName, 3), "SEL");
    specs.SetUniVariable(isSelect);
    const std::string procedureName = isSelect ? "SelectPredictors" : "NaiveBayes";
    BpProcedure procedure(procedureName, kStatisticsProcedure);
    KOLT_TokenSequence tokens(true);
    // Before parsing: the parser's test for a categorical target sees settled levels.
    if (isSelect) AdjustMeasurementLevels(source);
    PRSParser parser(tokens, specs, source);
    RunStages(isSelect, specs, parser, source, procedure);
    words.WriteBack();
}

#include "backend/predselect/PREDSELE.h"

#include <array>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

#include "backend/predselect/NaiveOutput.h"
#include "backend/predselect/PRSMultiFactory.h"
#include "backend/predselect/PRSParser.h"
#include "backend/predselect/PRSUniFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "backend/predselect/SavedState.h"
#include "backend/predselect/SelOutput.h"
#include "featureselect/IFSAlgorithm.h"
#include "host/CaseDelivery.h"
#include "host/CommandLanguage.h"
#include "host/Data.h"
#include "host/EngineState.h"
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

// The host may keep what the engine has learned.
template <class Engine>
void OfferState(const char* commandName, Engine* engine) {
    if (engine != nullptr && !ErrorRecorded()) OfferEngineState(SavedState(commandName, *engine));
}

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
    OfferState("SELECTPRED", factory.GetAlgorithm());
}

// The stages before the run: true when the engine has something to work on.
bool PrepareClassifier(const PRSValidSpecs& specs, PRSMultiFactory& factory,
                       const NaiveOutput& output) {
    if (ErrorRecorded()) return false;
    if (!factory.CheckTrainingData() || ErrorRecorded()) return false;
    if (factory.BuildVarList()) return true;
    // The one report of a run whose variables make no model.
    if (specs.GetPrintExcluded()) output.WriteExcludedPredictors();
    return false;
}

void RunClassifier(const PRSValidSpecs& specs, ProcedureDataSource& source,
                   BpProcedure& procedure) {
    PRSMultiFactory factory(specs, source);
    const NaiveOutput output(specs, factory, source, procedure);
    output.WriteMissingNotes();
    const bool prepared = PrepareClassifier(specs, factory, output);
    if (prepared && gDisplaySpecs) specs.Display(std::cout);

    const bool ran = prepared && !ErrorRecorded() && factory.Run();
    if (ErrorRecorded()) return;
    if (!ran) {
        factory.ReportFailure();
    } else if (factory.GetAlgorithm() != nullptr) {
        output.WriteTables();
        OfferState("NAIVEBAYES", factory.GetAlgorithm());
    }
}

// How many 8-byte slots the new variables fill in each case. As many probabilities as were asked
// for: how many categories the target has is not known yet.
std::uint32_t SlotsOfSavedVariables(const PRSValidSpecs& specs, const ProcedureDataSource& source) {
    constexpr std::uint32_t kSlotBytes = 8;
    std::uint32_t slots = 0;
    if (!specs.GetPredValName().IsEmpty()) {
        const auto type =
            static_cast<std::uint32_t>(source.GetVariable(specs.GetDependVar()).GetType());
        slots = type <= kSlotBytes ? 1 : (type + kSlotBytes - 1) / kSlotBytes;
    }
    if (!specs.GetPredProbRoot().IsEmpty()) {
        slots += static_cast<std::uint32_t>(specs.GetMaxPredProbs());
    }
    return slots;
}

// Everything between the parser's construction and the teardown. Each stage starts only while no
// error is recorded.
void RunStages(bool isSelect, PRSValidSpecs& specs, PRSParser& parser, ProcedureDataSource& source,
               BpProcedure& procedure) {
    if (!parser.Parse()) return;
    if (ErrorRecorded()) return;
    specs.FinishSpecs();
    const bool hasSettings =
        isSelect ? specs.GetFSSettings() != nullptr : specs.GetNBSettings() != nullptr;
    if (!hasSettings || ErrorRecorded()) return;

    if (source.ColumnCount() == 0) {
        // The message does not end the run: the controller finds the empty data on its own.
        UAInpAdaptMsg(source).NoValidCasesForSelect();
    } else if (!isSelect) {
        const std::uint32_t slots = SlotsOfSavedVariables(specs, source);
        if (slots > 0) source.SetMaxObsAdded(slots);
    }
    if (isSelect) {
        RunSelection(specs, source, procedure);
    } else {
        RunClassifier(specs, source, procedure);
    }
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

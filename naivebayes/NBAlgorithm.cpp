#include "naivebayes/NBAlgorithm.h"

#include <ostream>

#include "naivebayes/NBDocument.h"
#include "naivebayes/NBPMMLWriter.h"
#include "naivebayes/NBVersion.h"
#include "naivebayes/data/INBVariable.h"

NBAlgorithm::NBAlgorithm(const NaiveBayesSettings& settings, const NBVarList& varList)
    : fSettings(settings),
      fVarList(varList),
      fInterrupt{settings.fpStopProcessor},
      fNumInputs(fVarList.GetNumInputVars()),
      fOutput(*fVarList.GetVariable(fVarList.GetTargetIndex()), fVarList.GetTargetIndex()) {}

NBAlgorithm::NBAlgorithm() = default;
NBAlgorithm::~NBAlgorithm() = default;

std::string NBAlgorithm::GetVersionString() const {
    return std::string(NBVersion::kComponent) + '\n' + std::string(NBVersion::kCopyright);
}

NBStatus NBAlgorithm::GetStatus() { return fInterrupt.IsStopped() ? ResetModel() : fStatus; }

void NBAlgorithm::GetRecordCounts(double& weightOut, double& excludedWeightOut,
                                  std::int32_t& recordsOut, std::int32_t& excludedOut) const {
    weightOut = fWeight;
    excludedWeightOut = fExcludedWeight;
    recordsOut = fNumRecords;
    excludedOut = fNumExcluded;
}

INBAlgorithm::CategoryCounts NBAlgorithm::GetTargetCategoryCounts(std::int32_t category) const {
    if (category < 0 || category >= fOutput.GetNumCategories()) return {};
    return {fOutput.GetUnweightedCount(category), fOutput.GetWeightedCount(category)};
}

NBStatus NBAlgorithm::WritePMML(std::ostream& stream, const NBWriteOptions* options) {
    if (fInterrupt.IsStopped()) return NBStatus(NBCode::kInterrupted, false);
    if (fStatus.IsError()) return fStatus;
    if (!fbModelBuilt) return NBStatus(NBCode::kNotBuilt, true);
    const auto document = NBPMMLWriter::MakeDocument(fVarList, fvInputs, fOutput, fWeight, options);
    NBDocument::Write(stream, nullptr, *document, options);
    return fInterrupt.IsStopped() ? NBStatus(NBCode::kInterrupted, false) : NBStatus();
}

void NBAlgorithm::Display(std::ostream& out) const {
    out << "Start of NBAlgorithm display\n";
    out << "Model built? " << (fbModelBuilt ? "Yes" : "No") << '\n';
    out << "Record count: " << fNumRecords << '\n';
    out << "The target: ";
    fOutput.Display(out);
    out << "The model has " << fvInputs.size() << " predictors.\n";
    for (std::size_t i = 0; i < fvInputs.size(); ++i) {
        out << "Predictor " << i << ": ";
        fvInputs[i].Display(out);
    }
    out << "End of NBAlgorithm display\n";
}

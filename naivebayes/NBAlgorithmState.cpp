// The saved state, and what a restored one must be before anything trusts it.

#include <cstddef>
#include <istream>
#include <ostream>

#include "naivebayes/IOException.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBVersion.h"
#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBContVar.h"
#include "naivebayes/data/NBVarListFields.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

namespace {

constexpr Persistence::SavedClass kSaved{
    .fTag = "NBAlgorithm 1.00",
    .fName = "NBAlgorithm 1.00",
    .fBinaryFailure = "Error reading NBAlgorithm!\n",
    .fXMLFailure = "Error reading NBAlgorithm!\n",
};

/// Whether the parts of a variable agree, so that records can be prepared with it.
bool IsVariableConsistent(const INBVariable& variable) {
    const std::int32_t categories = variable.GetNumCategories();
    const INBEncoder* encoder = variable.GetEncoderConst();
    const auto* continuous = dynamic_cast<const NBContVar*>(&variable);
    if (continuous == nullptr) {
        return encoder != nullptr && categories >= 1 && encoder->GetNumCodes() <= categories;
    }
    if (variable.GetRole() == NBRole::kTarget) return false;
    if (encoder != nullptr) return categories >= 2 && encoder->GetNumCodes() == categories;
    // A candidate whose bins are left to the first search.
    return variable.GetRole() == NBRole::kPossibleInput && categories < 2 &&
           continuous->GetMin() < continuous->GetMax();
}

}  // namespace

template <class Self, class Archive>
void NBAlgorithm::Fields(Self&& self, Archive& archive) {
    archive(kSaved, self.fNumInputs, self.fNumRecords, self.fWeight, self.fNumExcluded,
            self.fExcludedWeight, self.fOutput,
            Persistence::Elements{self.fNumInputs, self.fvInputs}, self.fSettings, self.fVarList,
            Persistence::Check{[&self] { return self.IsConsistent(); }});
}

bool NBAlgorithm::IsConsistent() const {
    if (fNumInputs < 1 || fNumRecords < 0 || fNumExcluded < 0) return false;
    if (!IsTargetConsistent()) return false;
    std::size_t next = 0;
    for (std::int32_t i = 0; i < fVarList.GetNumVariables(); ++i) {
        const INBVariable& variable = *fVarList.GetVariable(i);
        const std::int32_t role = variable.GetRole();
        // Weights are not read back, so nothing may stand for one.
        if (role == NBRole::kWeight || (role == NBRole::kTarget && i != fOutput.GetVarIndex()))
            return false;
        const bool isInput = role == NBRole::kInput;
        if (!isInput && role != NBRole::kPossibleInput && role != NBRole::kTarget) continue;
        if (!IsVariableConsistent(variable)) return false;
        if (!isInput) continue;
        if (next == fvInputs.size()) return false;
        const auto recordIndex = static_cast<std::int32_t>(next) + 1;
        if (!IsTableConsistent(fvInputs[next], i, recordIndex)) return false;
        ++next;
    }
    return next == fvInputs.size();
}

bool NBAlgorithm::IsTargetConsistent() const {
    const std::int32_t index = fOutput.GetVarIndex();
    if (index < 0 || index != fVarList.GetTargetIndex() ||
        fVarList.GetRole(index) != NBRole::kTarget) {
        return false;
    }
    return fOutput.GetNumCategories() == fVarList.GetVariable(index)->GetNumCategories();
}

bool NBAlgorithm::IsTableConsistent(const NBayesInput& table, std::int32_t varIndex,
                                    std::int32_t recordIndex) const {
    return table.GetVarIndex() == varIndex && table.GetAdjustedRecordIndex() == recordIndex &&
           table.GetNumCategories() == fVarList.GetVariable(varIndex)->GetNumCategories() &&
           table.GetNumTargetCategories() == fOutput.GetNumCategories();
}

void NBAlgorithm::Wire() {
    fOutput.SetVariable(fVarList.GetVariable(fOutput.GetVarIndex()));
    for (NBayesInput& table : fvInputs) {
        table.SetVariable(fVarList.GetVariable(table.GetVarIndex()));
    }
    fpPreparator = std::make_unique<NBDataPreparator>(fVarList, false, fNumRecords, fInterrupt);
    fpPreparator->MakeCollapsedEncoders(fvInputs);
    fbModelBuilt = true;
}

NBStatus NBAlgorithm::CheckSaving(const std::ostream& stream) {
    if (fInterrupt.IsStopped()) return NBStatus(NBCode::kInterrupted, false);
    if (fStatus.IsError()) return fStatus;
    if (!fbModelBuilt) return NBStatus(NBCode::kNothingToSave, false);
    return stream.good() ? NBStatus() : NBStatus(NBCode::kStreamFailed, false);
}

NBStatus NBAlgorithm::SaveBinary(std::ostream& stream) {
    const NBStatus status = CheckSaving(stream);
    if (status.IsError()) return status;
    Persistence::SaveBinary(*this, stream);
    return stream.good() ? NBStatus() : NBStatus(NBCode::kStreamFailed, false);
}

NBStatus NBAlgorithm::SaveXML(std::ostream& stream) {
    const NBStatus status = CheckSaving(stream);
    if (status.IsError()) return status;
    const auto docType = MCCommonXML::XMLDocType::Create("MCXMLRoot", "savexml.dtd");
    MCCommonXML::StartRoot(stream, *docType, NBVersion::kCopyright);
    Persistence::SaveXML(*this, stream, 1);
    MCCommonXML::EndRoot(stream, *docType);
    return stream.good() ? NBStatus() : NBStatus(NBCode::kStreamFailed, false);
}

std::int64_t NBAlgorithm::RestoreBinary(std::istream& stream) {
    const std::int64_t bytes = Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
    Wire();
    return bytes;
}

std::int64_t NBAlgorithm::RestoreXML(MCCommonXML::XMLReader& document) {
    const std::int64_t elements = Persistence::RestoreXML<MCNaive::IOException>(*this, document);
    Wire();
    return elements;
}

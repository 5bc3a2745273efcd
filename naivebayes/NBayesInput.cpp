#include "naivebayes/NBayesInput.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "naivebayes/IOException.h"
#include "naivebayes/NBCodeMap.h"
#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/INBVariable.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

void NBayesInput::Setup(const INBVariable& variable, std::int32_t numTargetCategories,
                        std::int32_t varIndex, std::int32_t recordIndex) {
    SetShape(variable.GetNumCategories(), numTargetCategories);
    fpVariable = &variable;
    fVarIndex = varIndex;
    fRecordIndex = recordIndex;
    fAdjustedRecordIndex = recordIndex;
}

std::int32_t NBayesInput::MergeFrom(const NBayesInput& other, INBEncoder* thisEncoder,
                                    const INBEncoder* otherEncoder,
                                    std::int32_t numTargetCategories,
                                    const std::vector<std::int32_t>& targetCodeMap,
                                    double totalWeight) {
    const std::vector<std::int32_t> codeMap =
        NBCodeMap::Make(thisEncoder, otherEncoder, other.fNumCategories);
    const std::int32_t numBefore = fNumCategories;
    ExtendShape(thisEncoder == nullptr ? fNumCategories : thisEncoder->GetNumCodes(),
                numTargetCategories);
    // Of a model from elsewhere nothing says that its encoders fit its tables.
    const std::int32_t numTargets = std::min(numTargetCategories, other.fNumTargetCategories);
    for (std::int32_t i = 0; i < other.fNumCategories; ++i) {
        const std::int32_t category = NBCodeMap::Find(codeMap, i, fNumCategories);
        for (std::int32_t t = 0; category >= 0 && t < numTargets; ++t) {
            const std::int32_t target = NBCodeMap::Find(targetCodeMap, t, fNumTargetCategories);
            if (target < 0) continue;
            AddCount(category, target,
                     other.fCounts[static_cast<std::size_t>(i)][static_cast<std::size_t>(t)]);
        }
    }
    UpdateProbabilities(totalWeight);
    if (fNumCategories > numBefore) NBCodeMap::CopyLabels(thisEncoder, otherEncoder, codeMap);
    return fNumCategories;
}

std::int64_t NBayesInput::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBayesInput::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBayesInput::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBayesInput::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBayesInput::Display(std::ostream& out) const {
    out << "Begin NBayesInput object. \nVariable name: "
        << (fpVariable == nullptr ? std::string() : fpVariable->GetName()) << '\n'
        << " Index in varlist: " << fVarIndex << " Index in Record: " << fRecordIndex
        << " Adjusted Index in Record: " << fAdjustedRecordIndex << '\n';
    DisplayTable(out, "P_{mk}^j");
    out << "End of NBayesInput display.\n";
}

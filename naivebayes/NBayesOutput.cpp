#include "naivebayes/NBayesOutput.h"

#include <limits>
#include <ostream>

#include "naivebayes/IOException.h"
#include "naivebayes/NBCodeMap.h"
#include "naivebayes/NBPMMLWriter.h"
#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/INBVariable.h"
#include "persistence/BinaryArchive.h"
#include "persistence/Display.h"
#include "persistence/XMLArchive.h"

namespace {

/// Adds within the range: a count that was restored may be anything.
void AddCapped(std::int32_t& count, std::int32_t more) {
    constexpr std::int64_t kLowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int32_t>::max();
    count = static_cast<std::int32_t>(std::clamp(std::int64_t{count} + more, kLowest, kHighest));
}

}  // namespace

NBayesOutput::NBayesOutput(const INBVariable& variable, std::int32_t varIndex)
    : fpVariable(&variable), fVarIndex(varIndex), fNumCategories(variable.GetNumCategories()) {
    Clear();
}

void NBayesOutput::Clear() {
    const auto size = static_cast<std::size_t>(std::max(fNumCategories, 0));
    fWeightedCounts.assign(size, 0.0);
    fUnweightedCounts.assign(size, 0);
    fPi.assign(size, 0.0);
}

double NBayesOutput::AddRecord(std::int32_t category, double weight) {
    const auto k = static_cast<std::size_t>(category);
    AddCapped(fUnweightedCounts[k], 1);
    return fWeightedCounts[k] += weight;
}

std::int32_t NBayesOutput::ComputePriors(double totalWeight) {
    const double threshold = 1.0 / totalWeight;
    std::int32_t numNonEmpty = 0;
    for (const double weight : fWeightedCounts) {
        if (weight > 0.0) ++numNonEmpty;
    }
    for (std::size_t k = 0; k < fPi.size(); ++k) {
        fPi[k] = (threshold + fWeightedCounts[k]) / (totalWeight + numNonEmpty * threshold);
    }
    return numNonEmpty;
}

void NBayesOutput::MergeFrom(const NBayesOutput& other, INBEncoder* thisEncoder,
                             const INBEncoder* otherEncoder, std::vector<std::int32_t>& codeMapOut,
                             double& totalWeightOut) {
    codeMapOut = NBCodeMap::Make(thisEncoder, otherEncoder, other.fNumCategories);
    const bool grows = thisEncoder != nullptr && thisEncoder->GetNumCodes() > fNumCategories;
    if (grows) {
        fNumCategories = thisEncoder->GetNumCodes();
        const auto size = static_cast<std::size_t>(fNumCategories);
        fWeightedCounts.resize(size, 0.0);
        fUnweightedCounts.resize(size, 0);
        fPi.resize(size, 0.0);
    }
    for (std::int32_t i = 0; i < other.fNumCategories; ++i) {
        const std::int32_t category = NBCodeMap::Find(codeMapOut, i, fNumCategories);
        if (category < 0) continue;
        fWeightedCounts[static_cast<std::size_t>(category)] += other.GetWeightedCount(i);
        AddCapped(fUnweightedCounts[static_cast<std::size_t>(category)],
                  other.GetUnweightedCount(i));
    }
    totalWeightOut = 0.0;
    for (const double weight : fWeightedCounts) totalWeightOut += weight;
    ComputePriors(totalWeightOut);
    if (grows) NBCodeMap::CopyLabels(thisEncoder, otherEncoder, codeMapOut);
}

std::unique_ptr<MCCommonXML::XMLElement> NBayesOutput::MakePMML() const {
    auto bayesOutput = std::make_unique<MCCommonXML::XMLElement>("BayesOutput");
    bayesOutput->AddAttribute("fieldName", fpVariable->GetName());
    MCCommonXML::XMLElement& counts = bayesOutput->AddChild("TargetValueCounts");
    for (std::int32_t t = 0; t < fNumCategories; ++t) {
        MCCommonXML::XMLElement& count = counts.AddChild("TargetValueCount");
        NBPMMLWriter::AddCategoryValue(count, fpVariable->GetEncoderConst(), t);
        count.AddAttribute("count", GetWeightedCount(t));
    }
    return bayesOutput;
}

std::int64_t NBayesOutput::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBayesOutput::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBayesOutput::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBayesOutput::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBayesOutput::Display(std::ostream& out) const {
    out << "Begin NBayesOutput object. \nIndex in variable list: " << fVarIndex << '\n';
    Persistence::DisplayVector(out, "Weighted Counts ", fWeightedCounts);
    Persistence::DisplayVector(out, "Unweighted Counts ", fUnweightedCounts);
    Persistence::DisplayVector(out, "Pi_k   ", fPi);
    out << "End of NBayesOutput display.\n";
}

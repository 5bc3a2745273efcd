#include <cstdint>
#include <string>

#include "host/Xml.h"
#include "naivebayes/NBDocument.h"
#include "naivebayes/NBSubsetSearch.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBVarList.h"

namespace {

void AddVariable(MCCommonXML::XMLElement& element, const INBVariable& variable,
                 std::int32_t numCategories) {
    element.AddAttribute("variableName", variable.GetName());
    const std::string& label = variable.GetLabel();
    if (!label.empty()) element.AddAttribute("variableLabel", label);
    element.AddAttribute("numberOfCategories", numCategories);
}

}  // namespace

NBStatus NBSubsetSearch::WriteSelectionXML(std::ostream& stream, bool usedTestData,
                                           const NBWriteOptions* options) const {
    if (fInterrupt.IsStopped()) return NBStatus();
    const auto addReferences = [this](MCCommonXML::XMLElement& subset, std::int32_t size) {
        for (std::int32_t position = 0; position < size; ++position) {
            const std::int32_t table = fvSelectedOrder[static_cast<std::size_t>(position)];
            subset.AddChild("PredictorRef")
                .AddAttribute("predictorIndex",
                              fvInputs[static_cast<std::size_t>(table)].GetVarIndex());
        }
    };
    const auto numSubsets = static_cast<std::int32_t>(fvBestSubsets.size());

    MCCommonXML::XMLElement root("NaiveBayesAttrSelection");
    root.AddAttribute("version", "1.0");
    root.AddAttribute("subsetChoiceType", numSubsets == 0 ? "exactNumber" : "maxNumber");
    root.AddAttribute("numberOfPredictors", ChainLength());
    root.AddAttribute("numberOfSubsets", numSubsets == 0 ? 1 : numSubsets);
    if (numSubsets > 0) root.AddAttribute("criterion", usedTestData ? "testData" : "BIC");
    NBDocument::AddHeader(root, options);

    MCCommonXML::XMLElement& target = root.AddChild("Target");
    target.AddAttribute("targetIndex", fOutput.GetVarIndex());
    AddVariable(target, *fOutput.GetVariable(), fOutput.GetNumCategories());
    for (const std::int32_t table : fvSelectedOrder) {
        const NBayesInput& input = fvInputs[static_cast<std::size_t>(table)];
        MCCommonXML::XMLElement& predictor = root.AddChild("Predictor");
        predictor.AddAttribute("predictorIndex", input.GetVarIndex());
        AddVariable(predictor, *input.GetVariable(), input.GetNumCategories());
    }

    std::int32_t rank = 0;
    for (const NBSubset& best : fvBestSubsets) {
        MCCommonXML::XMLElement& subset = root.AddChild("Subset");
        subset.AddAttribute("numberOfPredictors", best.fSize);
        subset.AddAttribute("criterionValue", best.fCriterion);
        subset.AddAttribute("rankOrder", rank++);
        addReferences(subset, best.fSize);
    }
    if (numSubsets == 0) {
        MCCommonXML::XMLElement& subset = root.AddChild("Subset");
        subset.AddAttribute("numberOfPredictors", ChainLength());
        addReferences(subset, ChainLength());
    }
    NBDocument::Write(
        stream, MCCommonXML::XMLDocType::Create("NaiveBayesAttrSelection", "nbasoutput.dtd").get(),
        root, options);
    return NBStatus();
}

#include "naivebayes/NBPMMLWriter.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "naivebayes/NBDocument.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"
#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/INBUserMissing.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBCatNumEncoder.h"
#include "naivebayes/data/NBStringEncoder.h"
#include "naivebayes/data/NBVarList.h"

namespace {

using MCCommonXML::XMLElement;

constexpr const char* kNamespace = "http://www.dmg.org/PMML-4_3";
constexpr const char* kSchemaInstance = "http://www.w3.org/2001/XMLSchema-instance";
constexpr const char* kSchemaLocation = "http://www.dmg.org/PMML-4_3 pmml-4-3.xsd";

bool IsCategorical(const INBVariable& variable) {
    const std::int32_t level = variable.GetMeasureLevel();
    return level == NBMeasureLevel::kNumericCat || level == NBMeasureLevel::kStringCat;
}

void AddCategories(XMLElement& field, const INBVariable& variable) {
    const INBEncoder* const encoder = variable.GetEncoderConst();
    const std::int32_t numCodes = encoder == nullptr ? 0 : encoder->GetNumCodes();
    const std::int32_t numCategories = variable.GetNumCategories();
    // Where categories have no code, labels may stand at the wrong ones.
    const std::vector<std::string>* const labels =
        encoder != nullptr && numCodes == numCategories ? encoder->GetCategoryLabels() : nullptr;
    for (std::int32_t code = 0; code < std::max(numCodes, numCategories); ++code) {
        XMLElement& value = field.AddChild("Value");
        NBPMMLWriter::AddCategoryValue(value, encoder, code);
        const auto at = static_cast<std::size_t>(code);
        if (labels != nullptr && at < labels->size() && !(*labels)[at].empty()) {
            value.AddAttribute("displayValue", (*labels)[at]);
        }
        value.AddAttribute("property", "valid");
    }
}

void AddDataField(XMLElement& dictionary, const INBVariable& variable) {
    XMLElement& field = dictionary.AddChild("DataField");
    field.AddAttribute("name", variable.GetName());
    if (const std::string& label = variable.GetLabel(); !label.empty()) {
        field.AddAttribute("displayName", label);
    }
    const std::int32_t level = variable.GetMeasureLevel();
    if (level == NBMeasureLevel::kContinuous) {
        field.AddAttribute("optype", "continuous");
    } else if (IsCategorical(variable)) {
        field.AddAttribute("optype", "categorical");
    }
    field.AddAttribute("dataType", level == NBMeasureLevel::kStringCat ? "string" : "float");
    if (const INBUserMissing* const missing = variable.GetUserMissing()) {
        for (auto& element : missing->MakePMMLElements()) field.AddChild(std::move(element));
    }
    if (IsCategorical(variable)) AddCategories(field, variable);
}

/// The variables of the model; a search leaves others in the list.
void AddDataDictionary(XMLElement& root, const NBVarList& varList) {
    XMLElement& dictionary = root.AddChild("DataDictionary");
    for (std::int32_t i = 0; i < varList.GetNumVariables(); ++i) {
        const std::int32_t role = varList.GetRole(i);
        if (role == NBRole::kInput || role == NBRole::kTarget) {
            AddDataField(dictionary, *varList.GetVariable(i));
        }
    }
    dictionary.AddAttribute("numberOfFields", static_cast<double>(dictionary.Children().size()));
}

void AddMiningSchema(XMLElement& model, const std::vector<NBayesInput>& inputs,
                     const NBayesOutput& output) {
    XMLElement& schema = model.AddChild("MiningSchema");
    for (const NBayesInput& input : inputs) {
        schema.AddChild("MiningField").AddAttribute("name", input.GetVariable()->GetName());
    }
    XMLElement& target = schema.AddChild("MiningField");
    target.AddAttribute("name", output.GetVariable()->GetName());
    target.AddAttribute("usageType", "predicted");
}

}  // namespace

namespace NBPMMLWriter {

std::unique_ptr<XMLElement> MakeDocument(const NBVarList& varList,
                                         const std::vector<NBayesInput>& inputs,
                                         const NBayesOutput& output, double totalWeight,
                                         const NBWriteOptions* options) {
    auto root = std::make_unique<XMLElement>("PMML");
    root->AddAttribute("version", "4.3");
    root->AddAttribute("xmlns", kNamespace);
    root->AddAttribute("xmlns:xsi", kSchemaInstance);
    root->AddAttribute("xsi:schemaLocation", kSchemaLocation);
    NBDocument::AddHeader(*root, options);
    AddDataDictionary(*root, varList);
    XMLElement& model = root->AddChild("NaiveBayesModel");
    model.AddAttribute("functionName", "classification");
    model.AddAttribute("threshold", 1.0 / totalWeight);
    AddMiningSchema(model, inputs, output);
    XMLElement& bayesInputs = model.AddChild("BayesInputs");
    const INBEncoder& targetEncoder = *output.GetVariable()->GetEncoderConst();
    for (const NBayesInput& input : inputs) bayesInputs.AddChild(input.MakePMML(targetEncoder));
    model.AddChild(output.MakePMML());
    return root;
}

void AddCategoryValue(XMLElement& element, const INBEncoder* encoder, std::int32_t code) {
    if (encoder != nullptr && code >= encoder->GetNumCodes()) encoder = nullptr;
    if (const auto* const numeric = dynamic_cast<const NBCatNumEncoder*>(encoder)) {
        element.AddAttribute("value", numeric->Decode(code));
    } else if (const auto* const text = dynamic_cast<const NBStringEncoder*>(encoder)) {
        element.AddAttribute("value", text->Decode(code));
    } else {
        element.AddAttribute("value", code);
    }
}

}  // namespace NBPMMLWriter

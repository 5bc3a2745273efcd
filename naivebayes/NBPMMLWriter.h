#ifndef PREDSEL_NAIVEBAYES_NBPMMLWRITER_H
#define PREDSEL_NAIVEBAYES_NBPMMLWRITER_H

#include <cstdint>
#include <memory>
#include <vector>

#include "host/Xml.h"
#include "naivebayes/NBWriteOptions.h"

class INBEncoder;
class NBVarList;
class NBayesInput;
class NBayesOutput;

/// Makes the model a PMML 4.3 document (Data Mining Group, 2016) with a NaiveBayesModel.
/// Probabilities are not written: a reader forms them from the counts and the threshold.
namespace NBPMMLWriter {

/// The whole tree, for NBDocument::Write. The threshold is 1/totalWeight. inputs and output have
/// their variables set, from varList. options may be null.
std::unique_ptr<MCCommonXML::XMLElement> MakeDocument(const NBVarList& varList,
                                                      const std::vector<NBayesInput>& inputs,
                                                      const NBayesOutput& output,
                                                      double totalWeight,
                                                      const NBWriteOptions* options);

/// Adds the attribute "value": the category that the code stands for, as a number or a string, or
/// the code itself where the encoder does not know it. encoder: of categories, may be null.
void AddCategoryValue(MCCommonXML::XMLElement& element, const INBEncoder* encoder,
                      std::int32_t code);

}  // namespace NBPMMLWriter

#endif  // PREDSEL_NAIVEBAYES_NBPMMLWRITER_H

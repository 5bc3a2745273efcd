#ifndef PREDSEL_NAIVEBAYES_NBPMMLWRITER_H
#define PREDSEL_NAIVEBAYES_NBPMMLWRITER_H

#include <memory>
#include <vector>

#include "host/Xml.h"
#include "naivebayes/NBWriteOptions.h"

class NBVarList;
class NBayesInput;
class NBayesOutput;

/// The model as a PMML 4.3 document (Data Mining Group, 2016) with a NaiveBayesModel. Probabilities
/// are not written: a reader forms them from the counts and the threshold, 1/totalWeight.
/// inputs and output have their variables set, from varList. options may be null.
/// NBDocument::Write writes it.
std::unique_ptr<MCCommonXML::XMLElement> MakeNBPMML(const NBVarList& varList,
                                                    const std::vector<NBayesInput>& inputs,
                                                    const NBayesOutput& output, double totalWeight,
                                                    const NBWriteOptions* options);

#endif  // PREDSEL_NAIVEBAYES_NBPMMLWRITER_H

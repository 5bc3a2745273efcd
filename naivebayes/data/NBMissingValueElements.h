#ifndef PREDSEL_NAIVEBAYES_DATA_NBMISSINGVALUEELEMENTS_H
#define PREDSEL_NAIVEBAYES_DATA_NBMISSINGVALUEELEMENTS_H

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "host/Xml.h"

/// What numeric and string definitions of user-missing values say alike of their discrete values.
namespace NBMissingValueElements {

/// Adds one PMML Value element per value.
template <class Value>
void Append(const std::vector<Value>& values, const std::vector<std::string>& labels,
            std::vector<std::unique_ptr<MCCommonXML::XMLElement>>& elementsOut) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        auto element = std::make_unique<MCCommonXML::XMLElement>("Value");
        element->AddAttribute("value", values[i]);
        if (i < labels.size() && !labels[i].empty()) {
            element->AddAttribute("displayValue", labels[i]);
        }
        element->AddAttribute("property", "missing");
        elementsOut.push_back(std::move(element));
    }
}

template <class Value>
void Display(const std::vector<Value>& values, const std::vector<std::string>& labels,
             std::ostream& out) {
    out << "Discrete missing values:\n";
    for (std::size_t i = 0; i < values.size(); ++i) {
        out << i << ": " << values[i]
            << ", label = " << (i < labels.size() ? labels[i] : std::string()) << '\n';
    }
}

}  // namespace NBMissingValueElements

#endif  // PREDSEL_NAIVEBAYES_DATA_NBMISSINGVALUEELEMENTS_H

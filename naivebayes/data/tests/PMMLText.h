#ifndef PREDSEL_NAIVEBAYES_DATA_TESTS_PMMLTEXT_H
#define PREDSEL_NAIVEBAYES_DATA_TESTS_PMMLTEXT_H

#include <string>
#include <vector>

#include "naivebayes/data/INBUserMissing.h"

namespace variabletest {

/// Each element as its name and its attributes in order: Value value="1" property="missing".
inline std::vector<std::string> PMMLOf(const INBUserMissing& definition) {
    std::vector<std::string> texts;
    for (const auto& element : definition.MakePMMLElements()) {
        std::string text = element->Name();
        for (const auto& [name, value] : element->Attributes()) {
            text += ' ' + name + "=\"" + value + '"';
        }
        texts.push_back(text);
    }
    return texts;
}

}  // namespace variabletest

#endif  // PREDSEL_NAIVEBAYES_DATA_TESTS_PMMLTEXT_H

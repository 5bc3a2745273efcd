#ifndef PREDSEL_NAIVEBAYES_DATA_NBENCODERDISPLAY_H
#define PREDSEL_NAIVEBAYES_DATA_NBENCODERDISPLAY_H

#include <cstddef>
#include <ostream>

#include "naivebayes/data/INBUserMissing.h"

/// What the displays of encoders have in common.
namespace NBEncoderDisplay {

/// Seven values to a line, however many there are.
template <class Values>
void List(const Values& values, std::ostream& out) {
    constexpr std::size_t kPerLine = 7;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) out << (i % kPerLine == 0 ? '\n' : ' ');
        out << values[i];
    }
    out << '\n';
}

/// Nothing without a definition.
inline void UserMissing(const INBUserMissing* definition, std::ostream& out) {
    if (definition == nullptr) return;
    out << "\t\tUser-missing values for this encoder:\n\t\t";
    definition->Display(out);
}

}  // namespace NBEncoderDisplay

#endif  // PREDSEL_NAIVEBAYES_DATA_NBENCODERDISPLAY_H

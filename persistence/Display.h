#ifndef PREDSEL_PERSISTENCE_DISPLAY_H
#define PREDSEL_PERSISTENCE_DISPLAY_H

// What the debugging displays of persistent classes share. Numbers take the stream's own format,
// so a caller that needs all digits sets its precision.

#include <cstddef>
#include <iomanip>
#include <ostream>
#include <string_view>
#include <type_traits>
#include <vector>

#include "host/Records.h"

namespace Persistence {

/// The value; "<missing>" for the missing value, "true" or "false" for a bool.
template <class T>
void DisplayValue(std::ostream& out, const T& value) {
    if constexpr (std::is_same_v<T, bool>) {
        out << (value ? "true" : "false");
    } else if constexpr (std::is_same_v<T, double>) {
        if (value == MCMV::gMissingValue) {
            out << "<missing>";
        } else {
            out << value;
        }
    } else {
        out << value;
    }
}

/// The name and the size, then the values in lines of ten.
template <class T>
void DisplayVector(std::ostream& out, std::string_view name, const std::vector<T>& values) {
    constexpr std::size_t kValuesPerLine = 10;
    constexpr int kFieldWidth = 6;
    if (values.empty()) {
        out << name << ": <empty>\n";
        return;
    }
    out << name << " (" << values.size()
        << (values.size() == 1 ? " element): \n" : " elements): \n");
    for (std::size_t i = 0; i < values.size(); ++i) {
        const T value = values[i];
        out << std::setw(kFieldWidth);
        DisplayValue(out, value);
        if ((i + 1) % kValuesPerLine == 0 || i + 1 == values.size()) out << '\n';
    }
}

}  // namespace Persistence

#endif  // PREDSEL_PERSISTENCE_DISPLAY_H

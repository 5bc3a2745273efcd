#ifndef PREDSEL_FEATURESELECT_FSDISPLAY_H
#define PREDSEL_FEATURESELECT_FSDISPLAY_H

#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

#include "featureselect/FSScaled.h"
#include "persistence/Display.h"

/// What the debugging displays of the engine's classes share. Numbers take the stream's own
/// format, so a caller that needs all digits sets its precision.
namespace FSDisplay {

/// "label" and the value, or "<missing>" for the missing value, on a line of its own.
void Line(std::ostream& out, std::string_view label, double value);
void Line(std::ostream& out, std::string_view label, std::int32_t value);

/// The nearest double, and a remark where the number is beyond the largest one.
void Line(std::ostream& out, std::string_view label, const FSScaled& value);

/// A vector with its name and size, ten values a line in fields of width 6.
template <class T>
void Vector(std::ostream& out, std::string_view name, const std::vector<T>& values) {
    Persistence::DisplayVector(out, name, values);
}

/// "Start of NAME display" and "End of NAME display", each on a line of its own.
void Start(std::ostream& out, std::string_view className);
void End(std::ostream& out, std::string_view className);

}  // namespace FSDisplay

#endif  // PREDSEL_FEATURESELECT_FSDISPLAY_H

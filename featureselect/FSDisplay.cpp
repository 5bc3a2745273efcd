#include "featureselect/FSDisplay.h"

namespace FSDisplay {

void Line(std::ostream& out, std::string_view label, double value) {
    out << label;
    Persistence::DisplayValue(out, value);
    out << '\n';
}

void Line(std::ostream& out, std::string_view label, std::int32_t value) {
    out << label << value << '\n';
}

void Line(std::ostream& out, std::string_view label, const FSScaled& value) {
    out << label << value.Value();
    if (value.IsBeyondDouble()) out << " (the largest double; the number is beyond it)";
    out << '\n';
}

void Start(std::ostream& out, std::string_view className) {
    out << "Start of " << className << " display\n";
}

void End(std::ostream& out, std::string_view className) {
    out << "End of " << className << " display\n";
}

}  // namespace FSDisplay

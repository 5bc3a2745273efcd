#include "featureselect/FSDisplay.h"

#include <cstddef>
#include <iomanip>

#include "host/Records.h"

namespace {

constexpr std::size_t kValuesPerLine = 10;
constexpr int kFieldWidth = 6;

void Field(std::ostream& out, bool value) { out << (value ? "true" : "false"); }
void Field(std::ostream& out, std::int32_t value) { out << value; }
void Field(std::ostream& out, double value) { FSDisplay::Value(out, value); }

template <class Element>
void WriteVector(std::ostream& out, std::string_view name, const std::vector<Element>& values) {
    if (values.empty()) {
        out << name << ": <empty>\n";
        return;
    }
    out << name << " (" << values.size()
        << (values.size() == 1 ? " element): \n" : " elements): \n");
    for (std::size_t i = 0; i < values.size(); ++i) {
        out << std::setw(kFieldWidth);
        Field(out, values[i]);
        if ((i + 1) % kValuesPerLine == 0 || i + 1 == values.size()) out << '\n';
    }
}

}  // namespace

namespace FSDisplay {

void Value(std::ostream& out, double value) {
    if (value == MCMV::gMissingValue) {
        out << "<missing>";
    } else {
        out << value;
    }
}

void Line(std::ostream& out, std::string_view label, double value) {
    out << label;
    Value(out, value);
    out << '\n';
}

void Line(std::ostream& out, std::string_view label, std::int32_t value) {
    out << label << value << '\n';
}

void Vector(std::ostream& out, std::string_view name, const std::vector<bool>& values) {
    WriteVector(out, name, values);
}

void Vector(std::ostream& out, std::string_view name, const std::vector<std::int32_t>& values) {
    WriteVector(out, name, values);
}

void Vector(std::ostream& out, std::string_view name, const std::vector<double>& values) {
    WriteVector(out, name, values);
}

void Start(std::ostream& out, std::string_view className) {
    out << "Start of " << className << " display\n";
}

void End(std::ostream& out, std::string_view className) {
    out << "End of " << className << " display\n";
}

}  // namespace FSDisplay

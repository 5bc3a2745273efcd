#ifndef PREDSEL_EMBEDDED_OUTPUT_REPORTTABLE_H
#define PREDSEL_EMBEDDED_OUTPUT_REPORTTABLE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace embedded {

/// What a heading, or an element of a list, is whatever the language and the labels: nothing, a
/// number, or a text (string-table key, variable name, value of a string variable).
using ReportKey = std::variant<std::monostate, double, std::string>;

/// What a cell holds: nothing (missing), the unrounded number, the text, or the elements of a list.
using ReportValue = std::variant<std::monostate, double, std::string, std::vector<ReportKey>>;

/// How a cell is laid out: numbers by their kind, texts, lists of several texts.
enum class ReportFormat { Count, Percent, Significance, GeneralStat, Coefficient, Text, List };

/// A group or category of a dimension with what it holds.
struct ReportHeading {
    std::string fText;
    ReportKey fKey;
    bool fbShown = true;                    // false: the heading leaves no trace, its children stay
    std::vector<std::string> fvNotes;       // footnotes on the heading
    std::vector<ReportHeading> fvChildren;  // empty: a leaf, where cells may lie
};

enum class ReportAxis { Row, Column };

/// One dimension of a table. Its leaves are numbered from 0, depth first; a dimension without
/// headings has one leaf that shows nothing.
struct ReportDimension {
    std::string fName;   // its key
    std::string fTitle;  // its text
    ReportAxis fAxis = ReportAxis::Row;
    std::int32_t fOrder = 1;  // on its axis; 1 is innermost, growing outwards
    bool fbTitleShown = true;
    std::vector<ReportHeading> fvHeadings;
};

struct ReportCell {
    std::vector<std::size_t> fvAt;  // for each dimension of the table, the number of the leaf
    ReportValue fValue;
    std::string fText;  // the value as shown; lines end with '\n'
    ReportFormat fFormat = ReportFormat::Text;
    std::vector<std::string> fvNotes;  // footnotes
    /// Natural logarithm of a number that may be too small for a double; minus infinity: exactly 0.
    std::optional<double> fLogarithm = std::nullopt;
};

/// A pivot table, complete.
struct ReportTable {
    std::string fId;
    std::string fTitle;
    std::optional<std::string> fCaption;
    std::int32_t fMinDataColumnWidth = 0;  // points
    std::vector<ReportDimension> fvDimensions;
    std::vector<ReportCell> fvCells;  // row by row as laid out
};

/// The dimensions of one axis, outermost first.
std::vector<std::size_t> AxisDimensions(const ReportTable& table, ReportAxis axis);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_REPORTTABLE_H

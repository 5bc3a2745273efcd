#ifndef PREDSEL_EMBEDDED_OUTPUT_TABLELAYOUT_H
#define PREDSEL_EMBEDDED_OUTPUT_TABLELAYOUT_H

#include <cstddef>
#include <string>
#include <vector>

#include "embedded/output/ReportTable.h"

namespace embedded {

/// A heading above columns or before rows.
struct LayoutHeading {
    std::string fText;
    const ReportHeading* fpHeading = nullptr;  // null: a dimension's title. Borrowed from the table
    std::vector<std::size_t> fvFootnotes;      // numbers in TableLayout::fvFootnotes, as in cells
};

/// The headings of one row or column, outermost first.
using LayoutPath = std::vector<LayoutHeading>;

struct LayoutCell {
    const ReportCell* fpCell = nullptr;  // null: nothing there. Borrowed from the table
    std::vector<std::size_t> fvFootnotes;
};

/// A pivot table spread out as a grid, as text and page show it. Borrows from the table.
///
/// An axis of one dimension shows all its headings. Where dimensions cross, only those combinations
/// appear that have a cell. A title of a column dimension stands above its headings; those of the
/// row dimensions stand together above the row headings.
struct TableLayout {
    explicit TableLayout(const ReportTable& table);

    /// True when the first `depth + 1` headings of two neighbours are the same ones.
    static bool Shares(const LayoutPath& a, const LayoutPath& b, std::size_t depth);

    /// Headings of the longest path.
    static std::size_t Depth(const std::vector<LayoutPath>& paths);

    std::string fRowTitle;  // empty: not shown
    std::vector<LayoutPath> fvRows;
    std::vector<LayoutPath> fvColumns;
    std::vector<std::vector<LayoutCell>> fvCells;  // by row, then column
    std::vector<std::string> fvFootnotes;          // in reading order, each text once
};

/// The mark of a footnote: a to z without q, which has no superscript form, then aa, bb and so on.
std::string FootnoteMark(std::size_t number);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_TABLELAYOUT_H

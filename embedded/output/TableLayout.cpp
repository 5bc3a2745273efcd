#include "embedded/output/TableLayout.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>

namespace embedded {

namespace {

/// The headings from the top of a dimension down to one leaf.
using Trail = std::vector<const ReportHeading*>;

void CollectTrails(const std::vector<ReportHeading>& headings, Trail& above,
                   std::vector<Trail>& out) {
    for (const ReportHeading& heading : headings) {
        above.push_back(&heading);
        if (heading.fvChildren.empty())
            out.push_back(above);
        else
            CollectTrails(heading.fvChildren, above, out);
        above.pop_back();
    }
}

/// One axis: its leaves combined, and where a cell lies on it.
class Axis {
 public:
    using Place = std::vector<std::size_t>;  // leaves of the axis' dimensions, outermost first

    Axis(const ReportTable& table, ReportAxis axis)
        : fTable(table),
          fvDimensions(AxisDimensions(table, axis)),
          fbColumns(axis == ReportAxis::Column) {
        // A dimension without headings crosses nothing.
        std::erase_if(fvDimensions,
                      [&table](std::size_t d) { return table.fvDimensions[d].fvHeadings.empty(); });
        for (const std::size_t d : fvDimensions) {
            Trail above;
            CollectTrails(table.fvDimensions[d].fvHeadings, above, fvTrails.emplace_back());
        }
        CollectPlaces();
    }

    std::size_t IndexOf(const ReportCell& cell) const { return fIndex.at(PlaceOf(cell)); }

    /// The headings of every place, in order. Their footnotes are numbered by the caller.
    std::vector<LayoutPath> Paths() const {
        std::vector<LayoutPath> paths;
        for (const auto& entry : fIndex) paths.push_back(PathOf(entry.first));
        return paths;
    }

 private:
    Place PlaceOf(const ReportCell& cell) const {
        Place place;
        for (const std::size_t d : fvDimensions) place.push_back(cell.fvAt[d]);
        return place;
    }

    void CollectPlaces() {
        if (fvDimensions.size() == 1) {
            for (std::size_t leaf = 0; leaf < fvTrails.front().size(); ++leaf) fIndex[{leaf}] = 0;
        } else {
            for (const ReportCell& cell : fTable.fvCells) fIndex[PlaceOf(cell)] = 0;
        }
        std::size_t next = 0;
        for (auto& entry : fIndex) entry.second = next++;
    }

    LayoutPath PathOf(const Place& place) const {
        LayoutPath path;
        for (std::size_t i = 0; i < place.size(); ++i) {
            const ReportDimension& dimension = fTable.fvDimensions[fvDimensions[i]];
            if (fbColumns && dimension.fbTitleShown && !dimension.fTitle.empty())
                path.push_back({dimension.fTitle, nullptr, {}});
            for (const ReportHeading* heading : fvTrails[i][place[i]])
                if (heading->fbShown) path.push_back({heading->fText, heading, {}});
        }
        return path;
    }

    const ReportTable& fTable;
    std::vector<std::size_t> fvDimensions;
    bool fbColumns;
    std::vector<std::vector<Trail>> fvTrails;  // by dimension of the axis, then leaf
    std::map<Place, std::size_t> fIndex;       // sorted: row by row as laid out
};

std::string JoinedRowTitles(const ReportTable& table) {
    std::string titles;
    for (const std::size_t d : AxisDimensions(table, ReportAxis::Row)) {
        const ReportDimension& dimension = table.fvDimensions[d];
        if (!dimension.fbTitleShown || dimension.fTitle.empty()) continue;
        if (!titles.empty()) titles += " / ";
        titles += dimension.fTitle;
    }
    return titles;
}

/// The numbers of notes; a text that comes up for the first time gets the next one.
std::vector<std::size_t> FootnoteNumbers(const std::vector<std::string>& notes,
                                         std::vector<std::string>& known) {
    std::vector<std::size_t> numbers;
    for (const std::string& note : notes) {
        const auto found = std::find(known.begin(), known.end(), note);
        numbers.push_back(static_cast<std::size_t>(std::distance(known.begin(), found)));
        if (found == known.end()) known.push_back(note);
    }
    return numbers;
}

void NumberHeadings(LayoutPath& path, std::vector<std::string>& known) {
    for (LayoutHeading& heading : path)
        if (heading.fpHeading != nullptr)
            heading.fvFootnotes = FootnoteNumbers(heading.fpHeading->fvNotes, known);
}

}  // namespace

TableLayout::TableLayout(const ReportTable& table) : fRowTitle(JoinedRowTitles(table)) {
    const Axis rows(table, ReportAxis::Row);
    const Axis columns(table, ReportAxis::Column);
    fvRows = rows.Paths();
    fvColumns = columns.Paths();
    fvCells.assign(fvRows.size(), std::vector<LayoutCell>(fvColumns.size()));
    for (const ReportCell& cell : table.fvCells)
        fvCells[rows.IndexOf(cell)][columns.IndexOf(cell)].fpCell = &cell;

    for (LayoutPath& column : fvColumns) NumberHeadings(column, fvFootnotes);
    for (std::size_t r = 0; r < fvRows.size(); ++r) {
        NumberHeadings(fvRows[r], fvFootnotes);
        for (LayoutCell& cell : fvCells[r])
            if (cell.fpCell != nullptr)
                cell.fvFootnotes = FootnoteNumbers(cell.fpCell->fvNotes, fvFootnotes);
    }
}

bool TableLayout::Shares(const LayoutPath& a, const LayoutPath& b, std::size_t depth) {
    if (a.size() <= depth || b.size() <= depth) return false;
    for (std::size_t i = 0; i <= depth; ++i)
        if (a[i].fpHeading != b[i].fpHeading) return false;
    return true;
}

std::size_t TableLayout::Depth(const std::vector<LayoutPath>& paths) {
    std::size_t depth = 0;
    for (const LayoutPath& path : paths) depth = std::max(depth, path.size());
    return depth;
}

std::string FootnoteMark(std::size_t number) {
    constexpr std::string_view kLetters = "abcdefghijklmnoprstuvwxyz";
    return std::string(number / kLetters.size() + 1, kLetters[number % kLetters.size()]);
}

}  // namespace embedded

#include "embedded/output/HtmlRenderer.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "embedded/output/CompositeText.h"
#include "embedded/output/InlineSvg.h"
#include "embedded/output/ReportStyle.h"
#include "embedded/output/Sha256.h"
#include "embedded/output/ShowableText.h"
#include "embedded/output/TableLayout.h"
#include "embedded/strings/StringTable.h"
#include "embedded/xml/XmlText.h"

namespace embedded {

namespace {

std::string Escaped(std::string_view text) { return EscapeXml(ShowableText(text)); }

/// A start tag; attributes are pairs of name and text.
std::string Tag(std::string_view name,
                std::initializer_list<std::pair<std::string_view, std::string>> attributes) {
    std::string out = "<" + std::string(name);
    for (const auto& [attribute, value] : attributes)
        if (!value.empty()) out += " " + std::string(attribute) + "=\"" + Escaped(value) + "\"";
    return out + ">";
}

std::string Element(std::string_view name, std::string_view className, std::string_view text) {
    return Tag(name, {{"class", std::string(className)}}) + Escaped(text) + "</" +
           std::string(name) + ">\n";
}

std::string Marks(const std::vector<std::size_t>& footnotes) {
    std::string marks;
    for (const std::size_t number : footnotes)
        marks += (marks.empty() ? "" : ", ") + FootnoteMark(number);
    return marks.empty() ? "" : "<sup>" + marks + "</sup>";
}

/// Of the attribute colspan or rowspan; nothing for 1.
std::string Span(std::size_t cells) { return cells > 1 ? std::to_string(cells) : ""; }

bool IsNumber(const ReportCell& cell) {
    return cell.fFormat != ReportFormat::Text && cell.fFormat != ReportFormat::List;
}

/// The rows of one pivot table.
class TableMarkup {
 public:
    explicit TableMarkup(const ReportTable& table)
        : fLayout(table),
          fStubDepth(std::max<std::size_t>(TableLayout::Depth(fLayout.fvRows), 1)),
          fHeadDepth(TableLayout::Depth(fLayout.fvColumns)) {}

    const std::vector<std::string>& Footnotes() const { return fLayout.fvFootnotes; }
    bool IsEmpty() const { return fLayout.fvRows.empty() && fLayout.fvColumns.empty(); }

    std::string Write() const {
        std::string out;
        if (fHeadDepth > 0 || !fLayout.fRowTitle.empty()) {
            out += "<thead>\n";
            for (std::size_t level = 0; level < std::max<std::size_t>(fHeadDepth, 1); ++level)
                out += "<tr>" + HeadRow(level) + "</tr>\n";
            out += "</thead>\n";
        }
        out += "<tbody>\n";
        for (std::size_t r = 0; r < fLayout.fvRows.size(); ++r)
            out += "<tr>" + StubCells(r) + DataCells(r) + "</tr>\n";
        return out + "</tbody>\n";
    }

 private:
    /// Headings of one level; each heading reaches down to its columns.
    std::string HeadRow(std::size_t level) const {
        std::string out;
        if (level == 0) {
            const bool titled = !fLayout.fRowTitle.empty();
            out += Tag(titled ? "th" : "td", {{"scope", titled ? "col" : ""},
                                              {"colspan", Span(fStubDepth)},
                                              {"rowspan", Span(fHeadDepth)}}) +
                   Escaped(fLayout.fRowTitle) + (titled ? "</th>" : "</td>");
        }
        for (std::size_t c = 0; c < fLayout.fvColumns.size();) {
            const LayoutPath& path = fLayout.fvColumns[c];
            std::size_t end = c + 1;
            if (level < path.size()) {
                const bool leaf = level + 1 == path.size();
                while (!leaf && end < fLayout.fvColumns.size() &&
                       TableLayout::Shares(path, fLayout.fvColumns[end], level))
                    ++end;
                out += Tag("th", {{"scope", leaf ? "col" : "colgroup"},
                                  {"class", leaf && IsNumberColumn(c) ? "number" : ""},
                                  {"colspan", Span(end - c)},
                                  {"rowspan", leaf ? Span(fHeadDepth - level) : ""}}) +
                       Escaped(path[level].fText) + Marks(path[level].fvFootnotes) + "</th>";
            } else if (path.empty() && level == 0) {
                out += Tag("td", {{"rowspan", Span(fHeadDepth)}}) + "</td>";
            }
            c = end;
        }
        return out;
    }

    std::string StubCells(std::size_t row) const {
        const LayoutPath& path = fLayout.fvRows[row];
        if (path.empty()) return Tag("td", {{"colspan", Span(fStubDepth)}}) + "</td>";
        std::string out;
        for (std::size_t level = 0; level < path.size(); ++level) {
            const bool leaf = level + 1 == path.size();
            if (!leaf && row > 0 && TableLayout::Shares(fLayout.fvRows[row - 1], path, level))
                continue;
            std::size_t end = row + 1;
            while (!leaf && end < fLayout.fvRows.size() &&
                   TableLayout::Shares(path, fLayout.fvRows[end], level))
                ++end;
            out += Tag("th", {{"scope", leaf ? "row" : "rowgroup"},
                              {"rowspan", Span(end - row)},
                              {"colspan", leaf ? Span(fStubDepth - level) : ""}}) +
                   Escaped(path[level].fText) + Marks(path[level].fvFootnotes) + "</th>";
        }
        return out;
    }

    std::string DataCells(std::size_t row) const {
        std::string out;
        for (const LayoutCell& cell : fLayout.fvCells[row]) {
            if (cell.fpCell == nullptr) {
                out += "<td></td>";
                continue;
            }
            out += Tag("td", {{"class", IsNumber(*cell.fpCell) ? "number" : "text"}}) +
                   Escaped(cell.fpCell->fText) + Marks(cell.fvFootnotes) + "</td>";
        }
        return out;
    }

    bool IsNumberColumn(std::size_t column) const {
        return std::none_of(fLayout.fvCells.begin(), fLayout.fvCells.end(), [&](const auto& row) {
            return row[column].fpCell != nullptr && !IsNumber(*row[column].fpCell);
        });
    }

    TableLayout fLayout;
    std::size_t fStubDepth;
    std::size_t fHeadDepth;
};

class PageWriter {
 public:
    std::string Write(const Report& report) {
        const std::string title =
            CompositeText(TextOf("Report of predselect ^1"), {report.fVersion});
        std::string body = "<body>\n<header>" + Element("h1", "", title) + "</header>\n<main>\n";
        for (const CommandReport& command : report.fvCommands) body += Command(command);
        body += "</main>\n</body>\n</html>\n";

        const std::string style(ReportStyle());
        fvStyles.push_back(style);
        return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\" />\n" +
               Void("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", Policy()}}) +
               Void("meta",
                    {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}}) +
               Element("title", "", title) + "<style>" + style + "</style>\n</head>\n" + body;
    }

 private:
    static std::string Void(
        std::string_view name,
        std::initializer_list<std::pair<std::string_view, std::string>> attributes) {
        std::string tag = Tag(name, attributes);
        tag.replace(tag.size() - 1, 1, " />\n");
        return tag;
    }

    std::string Policy() const {
        std::set<std::string> hashes;
        for (const std::string& style : fvStyles) hashes.insert(Sha256Base64(style));
        std::string policy = "default-src 'none'; base-uri 'none'; form-action 'none'; style-src";
        for (const std::string& hash : hashes) policy += " 'sha256-" + hash + "'";
        return policy;
    }

    std::string NewId(const std::string& stem) {
        std::string id = stem + std::to_string(++fIds);
        fUsedIds.insert(id);
        return id;
    }

    std::string Command(const CommandReport& command) {
        std::string out = "<section>\n" + Element("h2", "command", command.fCommand);
        if (command.fStatus == CommandStatus::Failed)
            out += Element("p", "status", TextOf("The command failed."));
        if (command.fStatus == CommandStatus::Interrupted)
            out += Element("p", "status", TextOf("The command was interrupted."));
        for (const ReportMessage& message : command.fvMessages) out += Message(message);
        if (!command.fvNotes.empty()) {
            out += Element("h3", "", TextOf("Notes")) + "<dl class=\"notes\">\n";
            for (const ReportNote& note : command.fvNotes)
                out += Element("dt", "", note.fTitle) + Element("dd", "", note.fText);
            out += "</dl>\n";
        }
        for (const ReportItem& item : command.fvItems) {
            if (const auto* table = std::get_if<ReportTable>(&item))
                out += Table(*table);
            else
                out += Chart(std::get<ReportChart>(item));
        }
        return out + "</section>\n";
    }

    static std::string Message(const ReportMessage& message) {
        std::string_view level = TextOf("Note");
        std::string name = "note";
        if (message.fLevel == MessageLevel::Warning) {
            level = TextOf("Warning");
            name = "warning";
        } else if (message.fLevel == MessageLevel::Error) {
            level = TextOf("Error");
            name = "error";
        }
        return Tag("p", {{"class", "message " + name}}) + "<strong>" + Escaped(level) +
               ":</strong> " + Escaped(message.fText) + "</p>\n";
    }

    /// A table that may be wider than the page: it can be reached and scrolled with the keyboard.
    static std::string Scrollable(const std::string& captionId, std::string_view caption,
                                  const std::string& rows) {
        return Tag("div", {{"class", "scroll"},
                           {"role", "group"},
                           {"aria-labelledby", captionId},
                           {"tabindex", "0"}}) +
               "\n<table>\n" + Tag("caption", {{"id", captionId}}) + Escaped(caption) +
               "</caption>\n" + rows + "</table>\n</div>\n";
    }

    std::string Table(const ReportTable& table) {
        const TableMarkup markup(table);
        std::string out = "<div class=\"table\">\n";
        if (markup.IsEmpty())
            out +=
                Element("h3", "", table.fTitle) + Element("p", "", TextOf("The table is empty."));
        else
            out += Scrollable(NewId("table-"), table.fTitle, markup.Write());
        out += "<div class=\"under\">\n";
        const auto& footnotes = markup.Footnotes();
        for (std::size_t i = 0; i < footnotes.size(); ++i)
            out += "<p><sup>" + FootnoteMark(i) + "</sup> " + Escaped(footnotes[i]) + "</p>\n";
        if (table.fCaption) out += Element("p", "", *table.fCaption);
        return out + "</div>\n</div>\n";
    }

    std::string Chart(const ReportChart& chart) {
        InlineSvg svg(chart.fSvg, NewId("chart-") + "-", fUsedIds);
        for (std::string& style : svg.fvStyles) fvStyles.push_back(std::move(style));
        std::string out =
            "<figure>\n" + Element("figcaption", "", chart.fTitle) + svg.fMarkup + "\n";
        if (!chart.fvDataColumns.empty())
            out += "<details>\n" + Element("summary", "", TextOf("Chart data")) +
                   Scrollable(NewId("table-"), chart.fTitle, ChartRows(chart)) + "</details>\n";
        return out + "</figure>\n";
    }

    /// The first cell of a row is its heading.
    static std::string ChartRows(const ReportChart& chart) {
        std::string out = "<thead>\n<tr>";
        for (std::size_t c = 0; c < chart.fvDataColumns.size(); ++c) {
            const bool number =
                std::any_of(chart.fvDataRows.begin(), chart.fvDataRows.end(),
                            [c](const auto& row) { return c < row.size() && row[c].fbNumber; });
            out += Tag("th", {{"scope", "col"}, {"class", number ? "number" : ""}}) +
                   Escaped(chart.fvDataColumns[c]) + "</th>";
        }
        out += "</tr>\n</thead>\n<tbody>\n";
        for (const auto& row : chart.fvDataRows) {
            out += "<tr>";
            for (std::size_t c = 0; c < row.size(); ++c)
                out += c == 0 ? "<th scope=\"row\">" + Escaped(row[c].fText) + "</th>"
                              : Tag("td", {{"class", row[c].fbNumber ? "number" : "text"}}) +
                                    Escaped(row[c].fText) + "</td>";
            out += "</tr>\n";
        }
        return out + "</tbody>\n";
    }

    std::size_t fIds = 0;
    std::set<std::string> fUsedIds;
    std::vector<std::string> fvStyles;  // of the page, the charts' first
};

}  // namespace

std::string HtmlRenderer::Render(const Report& report) { return PageWriter().Write(report); }

}  // namespace embedded

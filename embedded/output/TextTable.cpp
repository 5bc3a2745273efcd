#include "embedded/output/TextTable.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/output/DisplayWidth.h"
#include "embedded/output/TableLayout.h"
#include "embedded/strings/StringTable.h"

namespace embedded {

namespace {

constexpr std::size_t kGap = 2;              // blanks between columns
constexpr std::size_t kIndent = 2;           // of a row below its group, of a line that goes on
constexpr std::size_t kHeadingWidth = 16;    // headings of narrower columns are wrapped to this
constexpr std::size_t kLeastTextWidth = 12;  // to which columns of text may shrink
constexpr std::size_t kPointsPerColumn = 6;  // of a terminal's font, about

using Lines = std::vector<std::string>;

std::string Pad(std::string_view text, std::size_t width, bool right) {
    const std::size_t used = DisplayWidth(text);
    const std::string blanks(width > used ? width - used : 0, ' ');
    return right ? blanks + std::string(text) : std::string(text) + blanks;
}

std::string Centre(std::string_view text, std::size_t width) {
    const std::size_t used = DisplayWidth(text);
    const std::size_t before = width > used ? (width - used) / 2 : 0;
    return Pad(std::string(before, ' ') + std::string(text), width, false);
}

void AppendTrimmed(std::string& out, std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    out += line + '\n';
}

/// Footnote marks as they stand behind a text.
std::string Marks(const std::vector<std::size_t>& footnotes, const TextStyle& style) {
    // The letters of FootnoteMark in their superscript form.
    constexpr std::array<std::string_view, 25> kSuperscripts = {
        "ᵃ", "ᵇ", "ᶜ", "ᵈ", "ᵉ", "ᶠ", "ᵍ", "ʰ", "ⁱ", "ʲ", "ᵏ", "ˡ", "ᵐ",
        "ⁿ", "ᵒ", "ᵖ", "ʳ", "ˢ", "ᵗ", "ᵘ", "ᵛ", "ʷ", "ˣ", "ʸ", "ᶻ"};
    std::string out;
    for (const std::size_t number : footnotes) {
        if (style.fbAscii) {
            out += "(" + FootnoteMark(number) + ")";
            continue;
        }
        for (std::size_t i = 0; i < FootnoteMark(number).size(); ++i)
            out += kSuperscripts[number % kSuperscripts.size()];
    }
    return out;
}

/// A heading is one line of words, whatever breaks its text has.
std::string HeadingText(const LayoutHeading& heading, const TextStyle& style) {
    std::string text = heading.fText;
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text + Marks(heading.fvFootnotes, style);
}

bool IsText(const ReportCell& cell) {
    return cell.fFormat == ReportFormat::Text || cell.fFormat == ReportFormat::List;
}

/// Where the decimal mark of a number stands; numbers with an exponent are aligned as wholes.
struct NumberShape {
    bool fbDecimal = false;
    std::size_t fBefore = 0;
    std::size_t fAfter = 0;
};

NumberShape ShapeOf(std::string_view text) {
    if (text.find_first_of("e\xE2") != std::string_view::npos)  // exponent, infinity
        return {false, DisplayWidth(text), 0};
    const std::size_t mark = std::min(text.find_first_of(".%"), text.size());
    return {true, mark, text.size() - mark};
}

/// One line of the row headings.
struct StubLine {
    std::string fText;
    std::size_t fIndent = 0;
    std::size_t fRow = 0;
    bool fbCells = false;  // false: a group's heading above its rows
};

/// One data column: what it needs and what it gets.
class Column {
 public:
    Column(const TableLayout& layout, std::size_t index, std::size_t minimum,
           const TextStyle& style) {
        for (const auto& row : layout.fvCells) {
            const LayoutCell& cell = row[index];
            if (cell.fpCell == nullptr) continue;
            fMarks = std::max(fMarks, DisplayWidth(Marks(cell.fvFootnotes, style)));
            Measure(*cell.fpCell);
        }
        fContent = std::max(fContent, fBefore + fAfter);
        fWidth = fContent + fMarks;
        if (fbText) fWidth = std::max(fWidth, minimum);
        const LayoutPath& path = layout.fvColumns[index];
        if (path.empty()) return;
        const std::string heading = HeadingText(path.back(), style);
        const std::size_t wanted =
            std::min(DisplayWidth(heading), std::max(WidestWord(heading), kHeadingWidth));
        if (fbText)
            fWidth = std::max(fWidth, wanted);
        else
            fWidth = std::max(fWidth, wanted + fMarks);
    }

    std::size_t Width() const { return fWidth; }
    bool IsLeft() const { return fbText; }
    void Widen(std::size_t by) { fWidth += by; }

    /// Columns by which a column of text could be narrower.
    std::size_t Slack() const {
        return fbText && fWidth > kLeastTextWidth ? fWidth - kLeastTextWidth : 0;
    }
    void Shrink(std::size_t by) { fWidth -= by; }

    Lines Heading(const std::string& text) const {
        const std::size_t room = fbText ? fWidth : fWidth - fMarks;
        Lines lines = WrapText(text, std::max<std::size_t>(room, 1));
        for (std::string& line : lines) line = Pad(Pad(line, room, !fbText), fWidth, false);
        return lines;
    }

    Lines Cell(const LayoutCell& cell, const TextStyle& style) const {
        if (cell.fpCell == nullptr) return {};
        const std::string marks = Marks(cell.fvFootnotes, style);
        if (IsText(*cell.fpCell)) {
            Lines lines = WrapText(cell.fpCell->fText + marks, fWidth, kIndent);
            for (std::string& line : lines) line = Pad(line, fWidth, false);
            return lines;
        }
        const NumberShape shape = ShapeOf(cell.fpCell->fText);
        std::string text = cell.fpCell->fText;
        if (shape.fbDecimal) text.append(fAfter - shape.fAfter, ' ');
        return {Pad(Pad(text, fWidth - fMarks, true) + marks, fWidth, false)};
    }

 private:
    void Measure(const ReportCell& cell) {
        if (IsText(cell)) {
            fbText = true;
            for (const std::string& line : WrapText(cell.fText, std::string::npos))
                fContent = std::max(fContent, DisplayWidth(line));
            return;
        }
        const NumberShape shape = ShapeOf(cell.fText);
        if (shape.fbDecimal) {
            fBefore = std::max(fBefore, shape.fBefore);
            fAfter = std::max(fAfter, shape.fAfter);
        } else {
            fContent = std::max(fContent, shape.fBefore);
        }
    }

    bool fbText = false;
    std::size_t fBefore = 0;   // widest part before a decimal mark
    std::size_t fAfter = 0;    // widest part from the decimal mark on
    std::size_t fContent = 0;  // widest cell
    std::size_t fMarks = 0;    // room for footnote marks, apart so that numbers stay aligned
    std::size_t fWidth = 0;
};

class TableText {
 public:
    TableText(const ReportTable& table, const TextStyle& style)
        : fTable(table), fStyle(style), fLayout(table) {}

    std::string Write() {
        fOut = TextTitle(fTable.fTitle, fStyle) + '\n';
        if (fLayout.fvRows.empty() && fLayout.fvColumns.empty()) {
            fOut += std::string(TextOf("The table is empty.")) + '\n';
        } else {
            MakeStub();
            MakeColumns();
            std::size_t first = 0;
            do {
                const std::size_t end = PanelEnd(first);
                if (first > 0) fOut += '\n';
                WritePanel(first, end);
                first = end;
            } while (first < fvColumns.size());
        }
        WriteFooter();
        return std::move(fOut);
    }

 private:
    void MakeStub() {
        for (std::size_t r = 0; r < fLayout.fvRows.size(); ++r) {
            const LayoutPath& path = fLayout.fvRows[r];
            for (std::size_t level = 0; level + 1 < path.size(); ++level)
                if (r == 0 || !TableLayout::Shares(fLayout.fvRows[r - 1], path, level))
                    fvStub.push_back({HeadingText(path[level], fStyle), level * kIndent, r, false});
            if (path.empty())
                fvStub.push_back({"", 0, r, true});
            else
                fvStub.push_back(
                    {HeadingText(path.back(), fStyle), (path.size() - 1) * kIndent, r, true});
        }
        fStubWidth = DisplayWidth(fLayout.fRowTitle);
        for (const StubLine& line : fvStub)
            fStubWidth = std::max(fStubWidth, line.fIndent + DisplayWidth(line.fText));
    }

    void MakeColumns() {
        const auto minimum =
            static_cast<std::size_t>(std::max(fTable.fMinDataColumnWidth, 0)) / kPointsPerColumn;
        for (std::size_t c = 0; c < fLayout.fvColumns.size(); ++c)
            fvColumns.emplace_back(fLayout, c, minimum, fStyle);
        WidenForSpans();
        if (fStyle.fWidth == 0) return;
        // Row headings give way first, then columns of text; what is still too wide becomes panels.
        if (const std::size_t total = TotalWidth(0, fvColumns.size()); total > fStyle.fWidth) {
            const std::size_t columns = total - fStubWidth;
            const std::size_t left = fStyle.fWidth - std::min(fStyle.fWidth, columns);
            const std::size_t least = std::max<std::size_t>(fStyle.fWidth * 2 / 5, 10);
            fStubWidth = std::min(fStubWidth, std::max(least, left));
        }
        for (Column& column : fvColumns) {
            const std::size_t total = TotalWidth(0, fvColumns.size());
            if (total > fStyle.fWidth)
                column.Shrink(std::min(column.Slack(), total - fStyle.fWidth));
        }
        for (Column& column : fvColumns) {  // a panel of one column fits
            const std::size_t alone = fStubWidth + StubGap() + column.Width();
            if (alone > fStyle.fWidth)
                column.Shrink(std::min(column.Slack(), alone - fStyle.fWidth));
        }
    }

    std::size_t StubGap() const { return fStubWidth > 0 ? kGap : 0; }

    /// A heading over several columns is at least as wide as its widest word.
    void WidenForSpans() {
        for (std::size_t level = 0; level < TableLayout::Depth(fLayout.fvColumns); ++level)
            for (std::size_t c = 0; c < fvColumns.size(); c = SpanEnd(c, level, fvColumns.size())) {
                const LayoutPath& path = fLayout.fvColumns[c];
                if (level + 1 >= path.size()) continue;
                const std::size_t end = SpanEnd(c, level, fvColumns.size());
                const std::size_t needed = WidestWord(HeadingText(path[level], fStyle));
                const std::size_t width = SpanWidth(c, end);
                if (needed > width) fvColumns[end - 1].Widen(needed - width);
            }
    }

    /// One past the last column that shares the heading of a column at a level.
    std::size_t SpanEnd(std::size_t column, std::size_t level, std::size_t limit) const {
        std::size_t end = column + 1;
        while (end < limit &&
               TableLayout::Shares(fLayout.fvColumns[column], fLayout.fvColumns[end], level))
            ++end;
        return end;
    }

    std::size_t SpanWidth(std::size_t first, std::size_t end) const {
        std::size_t width = (end - first - 1) * kGap;
        for (std::size_t c = first; c < end; ++c) width += fvColumns[c].Width();
        return width;
    }

    std::size_t TotalWidth(std::size_t first, std::size_t end) const {
        return first == end ? fStubWidth : fStubWidth + StubGap() + SpanWidth(first, end);
    }

    std::size_t PanelEnd(std::size_t first) const {
        std::size_t end = std::min(first + 1, fvColumns.size());
        while (end < fvColumns.size() &&
               (fStyle.fWidth == 0 || TotalWidth(first, end + 1) <= fStyle.fWidth))
            ++end;
        return end < fvColumns.size() ? EndBetweenGroups(first, end) : end;
    }

    /// A panel that would end inside a group ends before the group, or before the subgroup when it
    /// holds nothing else.
    std::size_t EndBetweenGroups(std::size_t first, std::size_t end) const {
        for (std::size_t level = 0; level < TableLayout::Depth(fLayout.fvColumns); ++level) {
            std::size_t start = end;
            while (start > first &&
                   TableLayout::Shares(fLayout.fvColumns[start - 1], fLayout.fvColumns[end], level))
                --start;
            if (start > first) return start;
        }
        return end;
    }

    void WritePanel(std::size_t first, std::size_t end) {
        std::string rule;
        for (std::size_t i = 0; i < TotalWidth(first, end); ++i) rule += Rule();
        rule += '\n';
        fOut += rule;
        if (WriteHeadings(first, end)) fOut += rule;
        for (const StubLine& line : fvStub) WriteRow(line, first, end);
        fOut += rule;
    }

    std::string_view Rule() const { return fStyle.fbAscii ? "-" : "─"; }

    /// Headings of the columns, a line of the table for each level, the lowest last.
    bool WriteHeadings(std::size_t first, std::size_t end) {
        std::size_t depth = 0;
        for (std::size_t c = first; c < end; ++c)
            depth = std::max(depth, fLayout.fvColumns[c].size());
        for (std::size_t level = 0; level + 1 < depth; ++level) {
            std::vector<Lines> blocks;
            std::string ruled;
            for (std::size_t c = first; c < end;) {
                const LayoutPath& path = fLayout.fvColumns[c];
                const bool spans = level + 1 < path.size();
                const std::size_t next = spans ? SpanEnd(c, level, end) : c + 1;
                const std::size_t width = SpanWidth(c, next);
                Lines lines;
                if (spans)
                    for (const auto& line : WrapText(HeadingText(path[level], fStyle), width))
                        lines.push_back(Centre(line, width));
                if (!ruled.empty()) ruled.append(kGap, ' ');
                for (std::size_t i = 0; i < width; ++i) ruled += spans ? Rule() : " ";
                lines.resize(std::max<std::size_t>(lines.size(), 1), std::string(width, ' '));
                blocks.push_back(std::move(lines));
                c = next;
            }
            WriteBlocks({}, std::move(blocks), true);
            AppendTrimmed(fOut, std::string(fStubWidth + StubGap(), ' ') + ruled);
        }
        if (depth == 0 && fLayout.fRowTitle.empty()) return false;
        std::vector<Lines> blocks;
        for (std::size_t c = first; c < end; ++c) {
            const LayoutPath& path = fLayout.fvColumns[c];
            blocks.push_back(
                fvColumns[c].Heading(path.empty() ? "" : HeadingText(path.back(), fStyle)));
        }
        WriteBlocks(WrapText(fLayout.fRowTitle, std::max<std::size_t>(fStubWidth, 1)),
                    std::move(blocks), true);
        return true;
    }

    void WriteRow(const StubLine& line, std::size_t first, std::size_t end) {
        const std::size_t indent = std::min(line.fIndent, fStubWidth / 2);
        Lines stub = WrapText(line.fText, std::max<std::size_t>(fStubWidth - indent, 1), kIndent);
        for (std::string& text : stub) text.insert(0, indent, ' ');
        std::vector<Lines> blocks;
        for (std::size_t c = first; line.fbCells && c < end; ++c) {
            blocks.push_back(fvColumns[c].Cell(fLayout.fvCells[line.fRow][c], fStyle));
            if (blocks.back().empty()) blocks.back().emplace_back(fvColumns[c].Width(), ' ');
        }
        WriteBlocks(std::move(stub), std::move(blocks), false);
    }

    /// Texts side by side, aligned at their first or last line. Each block's lines are padded.
    void WriteBlocks(Lines stub, std::vector<Lines> blocks, bool bottom) {
        std::size_t height = std::max<std::size_t>(stub.size(), 1);
        for (const Lines& block : blocks) height = std::max(height, block.size());
        const auto fill = [&](Lines& lines, const std::string& blank) {
            lines.insert(bottom ? lines.begin() : lines.end(), height - lines.size(), blank);
        };
        fill(stub, "");
        for (Lines& block : blocks) fill(block, std::string(DisplayWidth(block.front()), ' '));
        for (std::size_t i = 0; i < height; ++i) {
            std::string line = Pad(stub[i], fStubWidth, false);
            for (std::size_t b = 0; b < blocks.size(); ++b)
                line += std::string(b == 0 ? StubGap() : kGap, ' ') + blocks[b][i];
            AppendTrimmed(fOut, std::move(line));
        }
    }

    void WriteFooter() {
        const std::size_t width = fStyle.fWidth == 0 ? std::string::npos : fStyle.fWidth;
        for (std::size_t i = 0; i < fLayout.fvFootnotes.size(); ++i) {
            const std::string mark = FootnoteMark(i) + ". ";
            for (const auto& line : WrapText(mark + fLayout.fvFootnotes[i], width, mark.size()))
                AppendTrimmed(fOut, line);
        }
        if (fTable.fCaption)
            for (const auto& line : WrapText(*fTable.fCaption, width)) AppendTrimmed(fOut, line);
    }

    const ReportTable& fTable;
    const TextStyle& fStyle;
    TableLayout fLayout;
    std::vector<StubLine> fvStub;
    std::size_t fStubWidth = 0;
    std::vector<Column> fvColumns;
    std::string fOut;
};

}  // namespace

std::string TextTitle(const std::string& title, const TextStyle& style) {
    std::string out;
    for (const auto& line : WrapText(title, style.fWidth == 0 ? std::string::npos : style.fWidth)) {
        if (!out.empty()) out += '\n';
        out += style.fbColor ? "\x1b[1m" + line + "\x1b[0m" : line;
    }
    return out;
}

std::string TextTable(const ReportTable& table, const TextStyle& style) {
    return TableText(table, style).Write();
}

}  // namespace embedded

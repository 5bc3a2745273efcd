#include "embedded/output/TextRenderer.h"

#include <algorithm>
#include <string_view>
#include <variant>
#include <vector>

#include "embedded/output/DisplayWidth.h"
#include "embedded/output/ShowableText.h"
#include "embedded/output/TextTable.h"
#include "embedded/strings/StringTable.h"

namespace embedded {

namespace {

constexpr std::string_view kBoldRed = "\x1b[1;31m";
constexpr std::string_view kBoldYellow = "\x1b[1;33m";
constexpr std::string_view kBold = "\x1b[1m";
constexpr std::string_view kPlain = "\x1b[0m";

constexpr std::size_t kNoteIndent = 2;

class ReportText {
 public:
    explicit ReportText(const TextStyle& style)
        : fStyle(style), fWidth(style.fWidth == 0 ? std::string::npos : style.fWidth) {}

    std::string Write(const Report& report) {
        const bool showCommands = fStyle.fbShowCommand || report.fvCommands.size() > 1;
        for (const CommandReport& command : report.fvCommands) {
            if (showCommands) Block(TextTitle(ShowableText(command.fCommand), fStyle) + '\n');
            Messages(command.fvMessages);
            Notes(command.fvNotes);
            for (const ReportItem& item : command.fvItems)
                if (const auto* table = std::get_if<ReportTable>(&item))
                    Block(TextTable(*table, fStyle));
            if (command.fStatus == CommandStatus::Failed)
                Block(Coloured(TextOf("The command failed."), kBoldRed) + '\n');
            if (command.fStatus == CommandStatus::Interrupted)
                Block(Coloured(TextOf("The command was interrupted."), kBoldRed) + '\n');
        }
        return std::move(fOut);
    }

 private:
    /// Lines that belong together, a blank line before them.
    void Block(const std::string& lines) {
        if (!fOut.empty()) fOut += '\n';
        fOut += lines;
    }

    std::string Coloured(std::string_view text, std::string_view colour) const {
        if (!fStyle.fbColor) return std::string(text);
        return std::string(colour) + std::string(text) + std::string(kPlain);
    }

    void Messages(const std::vector<ReportMessage>& messages) {
        for (const ReportMessage& message : messages) {
            std::string_view level = TextOf("Note");
            std::string_view colour = kBold;
            if (message.fLevel == MessageLevel::Warning) {
                level = TextOf("Warning");
                colour = kBoldYellow;
            } else if (message.fLevel == MessageLevel::Error) {
                level = TextOf("Error");
                colour = kBoldRed;
            }
            const std::string lead = std::string(level) + ": ";
            // Messages may hold a source line with a caret under it: such lines are not wrapped.
            const bool prepared = message.fText.find('\n') != std::string::npos;
            std::string lines;
            for (const auto& line : WrapText(lead + ShowableText(message.fText),
                                             prepared ? std::string::npos : fWidth, kNoteIndent))
                lines += line + '\n';
            lines.replace(0, level.size(), Coloured(level, colour));
            Block(lines);
        }
    }

    void Notes(const std::vector<ReportNote>& notes) {
        if (notes.empty()) return;
        std::size_t titleWidth = 0;
        for (const ReportNote& note : notes)
            titleWidth = std::max(titleWidth, DisplayWidth(note.fTitle));
        const std::size_t column = kNoteIndent + titleWidth + 2;
        const std::size_t room = fWidth > column + 20 ? fWidth - column : 20;
        std::string lines = TextTitle(std::string(TextOf("Notes")), fStyle) + '\n';
        for (const ReportNote& note : notes) {
            std::string line = std::string(kNoteIndent, ' ') + note.fTitle;
            line.append(titleWidth + 2 - DisplayWidth(note.fTitle), ' ');
            for (const auto& text : WrapText(note.fText, room)) {
                lines += line + text + '\n';
                line.assign(column, ' ');
            }
        }
        Block(lines);
    }

    const TextStyle& fStyle;
    std::size_t fWidth;
    std::string fOut;
};

}  // namespace

std::string TextRenderer::Render(const Report& report, const TextStyle& style) {
    return ReportText(style).Write(report);
}

}  // namespace embedded

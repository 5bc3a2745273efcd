#ifndef PREDSEL_EMBEDDED_OUTPUT_REPORT_H
#define PREDSEL_EMBEDDED_OUTPUT_REPORT_H

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "embedded/output/ReportTable.h"

namespace embedded {

/// What a run did with the cases, the files and the variables, in one line.
struct ReportNote {
    std::int32_t fGroup = 0;  // as AddNotes counts groups
    std::string fTitle;
    std::string fText;
};

enum class MessageLevel { Note, Warning, Error };

struct ReportMessage {
    MessageLevel fLevel = MessageLevel::Note;
    std::string fKey;   // string-table key; the text itself when it has none
    std::string fText;  // as shown; line breaks are kept
    /// The command language refused the command. The lines after the first are then a line of the
    /// command and a caret under it: for fixed-width type, not wrapped, blanks kept.
    bool fbCommandLanguage = false;
};

/// A chart in the forms in which renderers pass it on.
struct ReportChart {
    /// The chart's numbers, for readers who cannot see it.
    struct DataCell {
        std::string fText;
        bool fbNumber = false;
    };

    std::string fId;
    std::string fTitle;
    std::string fVegaLite;  // a JSON object
    std::string fSvg;       // one <svg> element, no prolog, no scripts, no style attributes
    std::vector<std::string> fvDataColumns;         // headings of the data table
    std::vector<std::vector<DataCell>> fvDataRows;  // one cell a column
};

using ReportItem = std::variant<ReportTable, ReportChart>;

enum class CommandStatus { Ok, Failed, Interrupted };

/// All that one command shows. Filled by the host while the command runs, then only read.
struct CommandReport {
    std::string fCommand;  // the command as written
    CommandStatus fStatus = CommandStatus::Ok;
    std::vector<ReportNote> fvNotes;
    std::vector<ReportMessage> fvMessages;
    std::vector<ReportItem> fvItems;            // tables and charts as they were made
    std::vector<std::string> fvSavedVariables;  // names of new variables as they were made
    std::optional<std::string> fModelFile;
    bool fbFractionalWeights = false;  // set while cases are read; counts then show two decimals
};

struct Report {
    std::string fVersion;  // of the program
    std::vector<CommandReport> fvCommands;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_REPORT_H

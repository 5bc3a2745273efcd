#ifndef PREDSEL_EMBEDDED_COMMAND_SOURCETEXT_H
#define PREDSEL_EMBEDDED_COMMAND_SOURCETEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace embedded {

/// A place in a text: line and column from 1, the column in characters. Line 0 is no place.
struct TextPlace {
    std::int32_t fLine = 0;
    std::int32_t fColumn = 0;
    bool IsKnown() const { return fLine > 0; }
    bool operator==(const TextPlace&) const = default;
};

/// The text that commands are read from, kept for messages that show a line of it. Bytes are kept
/// as they are, a byte order mark at the beginning left out. LF, CRLF and a lone CR end a line.
class SourceText {
 public:
    /// The name stands before line and column in messages: a file's name or "command line".
    SourceText(std::string name, std::string text);

    const std::string& Name() const { return fName; }
    const std::string& Text() const { return fText; }
    /// A line, counted from 1, without its end; empty when there is no such line.
    std::string_view Line(std::int32_t line) const;

 private:
    std::string fName;
    std::string fText;
    std::vector<std::size_t> fvLineStarts;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_SOURCETEXT_H

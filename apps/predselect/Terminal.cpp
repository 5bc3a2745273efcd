#include "apps/predselect/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include "embedded/output/ShowableText.h"

namespace app {
namespace {

constexpr std::int32_t kWidthElsewhere = 100;
constexpr std::int32_t kLeastWidth = 20;

std::int32_t FromEnvironment() {
    const char* text = std::getenv("COLUMNS");
    std::int32_t width = 0;
    if (text) std::from_chars(text, text + std::strlen(text), width);
    return width;
}

std::int32_t TerminalWidth(int descriptor) {
    if (isatty(descriptor) == 0) return kWidthElsewhere;
    if (const std::int32_t width = FromEnvironment(); width >= kLeastWidth) return width;
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col >= kLeastWidth) {
        return size.ws_col;
    }
    return kWidthElsewhere;
}

// A terminal that obeys escape sequences.
bool IsCapable(int descriptor) {
    const char* kind = std::getenv("TERM");
    return isatty(descriptor) != 0 && kind && std::strcmp(kind, "dumb") != 0;
}

}  // namespace

std::int32_t TextWidth(std::int32_t asked) {
    return asked > 0 ? asked : TerminalWidth(STDOUT_FILENO);
}

std::int32_t ErrorTerminalWidth() { return TerminalWidth(STDERR_FILENO); }

bool UseColor(ColorMode mode) {
    if (mode != ColorMode::Auto) return mode == ColorMode::Always;
    const char* noColor = std::getenv("NO_COLOR");
    return IsCapable(STDOUT_FILENO) && (!noColor || *noColor == '\0');
}

std::string OneLine(std::string_view text) {
    std::string line = embedded::ShowableText(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

bool ProgressIsSeen() { return IsCapable(STDERR_FILENO); }

}  // namespace app

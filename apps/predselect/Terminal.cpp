#include "apps/predselect/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <cstring>

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

}  // namespace

std::int32_t TextWidth(std::int32_t asked) {
    if (asked > 0) return asked;
    if (isatty(STDOUT_FILENO) == 0) return kWidthElsewhere;
    if (const std::int32_t width = FromEnvironment(); width >= kLeastWidth) return width;
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= kLeastWidth) {
        return size.ws_col;
    }
    return kWidthElsewhere;
}

bool UseColor(ColorMode mode) {
    if (mode != ColorMode::Auto) return mode == ColorMode::Always;
    const char* noColor = std::getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && (!noColor || *noColor == '\0');
}

bool ProgressIsSeen() { return isatty(STDERR_FILENO) != 0; }

}  // namespace app

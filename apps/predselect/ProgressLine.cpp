#include "apps/predselect/ProgressLine.h"

#include <fmt/format.h>

#include <cstdio>

#include "apps/predselect/Terminal.h"

namespace app {
namespace {

using namespace std::chrono_literals;

// 1234567 -> 1,234,567
std::string Grouped(std::int64_t number) {
    std::string text = std::to_string(number);
    for (std::size_t at = text.size(); at > 3;) text.insert(at -= 3, ",");
    return text;
}

// At most so many characters; the paths in it may hold anything.
std::string Shortened(const std::string& text, std::int32_t most) {
    std::string shown;
    std::int32_t characters = 0;
    for (const char c : text) {
        const bool startsCharacter = (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
        if (startsCharacter && ++characters > most) break;
        shown += static_cast<unsigned char>(c) < ' ' || c == '\x7f' ? '?' : c;
    }
    return shown;
}

}  // namespace

ProgressLine::~ProgressLine() {
    if (fbShown) Write("");
}

void ProgressLine::Show(const std::string& phase) { Write(phase + " ..."); }

void ProgressLine::OnProgress(const ProgressReport& report) {
    const auto now = std::chrono::steady_clock::now();
    if (now - fLast < 100ms) return;
    fLast = now;
    const std::int64_t rows = report.GetInteger("records");
    const std::int64_t total = report.GetInteger("totalRecords");
    const double elapsed = report.GetDouble("elapsedTime");
    std::string text = fmt::format("Reading cases: {} of {} rows", Grouped(rows), Grouped(total));
    if (elapsed > 0.5 && rows > 0) {
        const double rate = static_cast<double>(rows) / elapsed;
        text += fmt::format(", {} rows/s, {:.0f} s left", Grouped(static_cast<std::int64_t>(rate)),
                            static_cast<double>(total - rows) / rate);
    }
    Write(text);
}

// Cut to one line of the terminal: a line that wraps could not be wiped.
void ProgressLine::Write(const std::string& text) {
    std::fputs(("\r\x1b[K" + Shortened(text, ErrorTerminalWidth() - 1)).c_str(), stderr);
    std::fflush(stderr);
    fbShown = !text.empty();
}

}  // namespace app

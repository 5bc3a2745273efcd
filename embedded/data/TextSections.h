#ifndef PREDSEL_EMBEDDED_DATA_TEXTSECTIONS_H
#define PREDSEL_EMBEDDED_DATA_TEXTSECTIONS_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/TextDialect.h"

namespace embedded {

/// Consecutive records of a delimited text, to be read on their own.
struct TextSection {
    /// Bytes that may be read behind a section's last one.
    static constexpr std::size_t kRoomBehind = 64;

    std::string_view fText;
    std::int64_t fRows = 0;
    /// Without quotes; every line is a record and ends at a line feed.
    bool fbPlain = false;
    /// If plain: lines may have a carriage return before the line feed.
    bool fbReturns = false;
};

/// A text in sections, and what its bytes are.
struct SectionedText {
    std::vector<TextSection> fvSections;  // none without a record
    std::deque<std::string> fvCopies;     // of sections without room behind them
    std::int64_t fRows = 0;
    bool fbPlain = true;  // every section is
    bool fbZeroes = false;
    bool fbBeyondAscii = false;
    bool fbUnterminated = false;  // ends within quotes; the sections are then of no use
};

/// Cuts the records from `begin` on into sections of about sectionBytes, on up to `threads`
/// threads. Borrows the text. `begin` follows a line end. `done` is told of bytes that are not
/// needed for now.
SectionedText CutIntoSections(std::string_view text, std::size_t begin, TextDialect dialect,
                              std::size_t sectionBytes, std::int32_t threads,
                              const std::function<void(std::string_view)>& done);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_TEXTSECTIONS_H

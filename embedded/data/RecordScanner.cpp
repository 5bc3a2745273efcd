#include "embedded/data/RecordScanner.h"

#include <cstring>

namespace embedded {

bool RecordScanner::Next() {
    const char* const begin = fText.data();
    const char* const end = begin + fText.size();
    const char* at = begin + fPosition;
    while (at < end && (*at == '\n' || *at == '\r')) {
        fNextLine += *at == '\n' || at + 1 == end || at[1] != '\n' ? 1 : 0;
        ++at;
    }
    if (at == end) {
        fPosition = fText.size();
        return false;
    }
    fBegin = static_cast<std::size_t>(at - begin);
    fLine = fNextLine;
    fFieldCount = 1;
    bool fieldStart = true;
    while (at < end) {
        const char letter = *at;
        if (letter == '\n' || letter == '\r') {
            break;
        }
        ++at;
        if (letter == fDialect.fDelimiter) {
            ++fFieldCount;
            fieldStart = true;
            continue;
        }
        if (!fieldStart || letter != fDialect.fQuote || fDialect.fQuote == '\0') {
            fieldStart = false;
            continue;
        }
        fieldStart = false;
        while (true) {
            const auto* quote = static_cast<const char*>(
                std::memchr(at, letter, static_cast<std::size_t>(end - at)));
            const char* const stop = quote == nullptr ? end : quote;
            for (; at < stop; ++at) {
                fNextLine +=
                    *at == '\n' || (*at == '\r' && (at + 1 == end || at[1] != '\n')) ? 1 : 0;
            }
            if (quote == nullptr) {
                fbUnterminated = true;
                break;
            }
            ++at;
            if (at == end || *at != letter) {
                break;
            }
            ++at;
        }
    }
    fEnd = static_cast<std::size_t>(at - begin);
    if (at < end) {
        at += *at == '\r' && at + 1 < end && at[1] == '\n' ? 2 : 1;
        ++fNextLine;
    }
    fPosition = static_cast<std::size_t>(at - begin);
    return true;
}

std::vector<std::string> SplitRecord(std::string_view record, TextDialect dialect) {
    std::vector<std::string> cells(1);
    bool fieldStart = true;
    bool quoted = false;
    for (std::size_t at = 0; at < record.size(); ++at) {
        const char letter = record[at];
        const bool isQuote = dialect.fQuote != '\0' && letter == dialect.fQuote;
        if (quoted) {
            if (!isQuote) {
                cells.back().push_back(letter);
            } else if (at + 1 < record.size() && record[at + 1] == letter) {
                cells.back().push_back(letter);
                ++at;
            } else {
                quoted = false;
            }
        } else if (letter == dialect.fDelimiter) {
            cells.emplace_back();
            fieldStart = true;
            continue;
        } else if (fieldStart && isQuote) {
            quoted = true;
        } else {
            cells.back().push_back(letter);
        }
        fieldStart = false;
    }
    return cells;
}

}  // namespace embedded

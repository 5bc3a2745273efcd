#include "embedded/data/DialectDetection.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "embedded/data/RecordScanner.h"

namespace embedded {
namespace {

constexpr int kSampleRecords = 200;
constexpr std::size_t kSampleBytes = std::size_t{1} << 18U;

struct Fit {
    double fShare = 0;  // of the sample's records that have as many fields as the header
    std::int32_t fFields = 1;
};

Fit FitOf(std::string_view text, TextDialect dialect) {
    RecordScanner scanner(text, dialect);
    Fit fit;
    if (!scanner.Next()) {
        return fit;
    }
    fit.fFields = scanner.FieldCount();
    int records = 1;
    int alike = 1;
    while (records < kSampleRecords && scanner.Position() < kSampleBytes && scanner.Next()) {
        ++records;
        alike += scanner.FieldCount() == fit.fFields ? 1 : 0;
    }
    fit.fShare = static_cast<double>(alike) / records;
    return fit;
}

TextDialect BestDelimiter(std::string_view text, char quote) {
    TextDialect best{',', quote};
    Fit bestFit;
    for (const char delimiter : {',', ';', '\t', '|'}) {
        const Fit fit = FitOf(text, {delimiter, quote});
        if (fit.fFields < 2) {
            continue;
        }
        if (bestFit.fFields < 2 || fit.fShare > bestFit.fShare ||
            (fit.fShare == bestFit.fShare && fit.fFields > bestFit.fFields)) {
            best.fDelimiter = delimiter;
            bestFit = fit;
        }
    }
    return best;
}

// How many fields of a record stand in single quotes from end to end; -1 when a single quote stands
// at only one end of a field.
int CountSingleQuoted(std::string_view record, char delimiter) {
    int count = 0;
    std::size_t at = 0;
    while (true) {
        const std::size_t begin = at;
        const bool quoted = at < record.size() && record[at] == '\'';
        if (quoted) {
            for (++at; at < record.size(); ++at) {
                if (record[at] == '\'' && (at + 1 == record.size() || record[at + 1] != '\'')) {
                    break;
                }
                at += record[at] == '\'' ? 1U : 0U;  // a doubled quote
            }
            ++at;
            ++count;
        } else {
            at = std::min(record.find(delimiter, at), record.size());
        }
        const bool ends = at >= record.size();
        if (quoted ? !ends && record[at] != delimiter : at > begin && record[at - 1] == '\'') {
            return -1;
        }
        if (ends) {
            return at > record.size() ? -1 : count;
        }
        ++at;
    }
}

// Whether single quotes stand around fields rather than within words.
bool AreSingleQuotesQuotes(std::string_view text, char delimiter) {
    const std::string_view sample = text.substr(0, kSampleBytes);
    if (sample.find('"') != std::string_view::npos || sample.find('\'') == std::string_view::npos) {
        return false;
    }
    RecordScanner scanner(sample, {delimiter, '\''});
    int quoted = 0;
    for (int records = 0; records < kSampleRecords && scanner.Next(); ++records) {
        const bool cutShort = scanner.Position() == sample.size() && sample.size() < text.size();
        if (cutShort) {
            break;
        }
        const int count = CountSingleQuoted(scanner.Record(), delimiter);
        if (count < 0) {
            return false;
        }
        quoted += count;
    }
    return quoted > 0;
}

}  // namespace

TextDialect DetectDialect(std::string_view text, std::optional<char> delimiter,
                          std::optional<char> quote) {
    const auto settle = [&](char mark) {
        return delimiter ? TextDialect{*delimiter, mark} : BestDelimiter(text, mark);
    };
    if (quote) {
        return settle(*quote);
    }
    const TextDialect withSingle = settle('\'');
    if (AreSingleQuotesQuotes(text, withSingle.fDelimiter)) {
        return withSingle;
    }
    return settle('"');
}

}  // namespace embedded

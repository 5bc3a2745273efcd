#include "embedded/data/TextSections.h"

#include <algorithm>
#include <cstring>

#include "embedded/data/RecordScanner.h"
#include "embedded/threads/ParallelTasks.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace embedded {
namespace {

/// What one look at the bytes of a piece says. A piece starts behind a line end, or where the
/// records start.
struct PieceFacts {
    std::int64_t fLineFeeds = 0;
    bool fbZeroes = false;
    bool fbBeyondAscii = false;
    bool fbQuotes = false;
    bool fbReturns = false;
    bool fbEmptyLines = false;  // two line feeds in a row
};

void LookAtBytes(std::string_view bytes, std::size_t from, char quote, char before,
                 PieceFacts& facts) {
    for (std::size_t at = from; at < bytes.size(); ++at) {
        const char letter = bytes[at];
        facts.fLineFeeds += letter == '\n' ? 1 : 0;
        facts.fbEmptyLines = facts.fbEmptyLines || (letter == '\n' && before == '\n');
        facts.fbZeroes = facts.fbZeroes || letter == '\0';
        facts.fbBeyondAscii = facts.fbBeyondAscii || static_cast<unsigned char>(letter) >= 0x80;
        facts.fbQuotes = facts.fbQuotes || (letter == quote && quote != '\0');
        facts.fbReturns = facts.fbReturns || letter == '\r';
        before = letter;
    }
}

#if defined(__SSE2__)
PieceFacts FactsOf(std::string_view bytes, char quote) {
    PieceFacts facts;
    const std::size_t head = std::min<std::size_t>(bytes.size(), 16);
    LookAtBytes(bytes.substr(0, head), 0, quote, '\n', facts);
    const __m128i feed = _mm_set1_epi8('\n');
    const __m128i back = _mm_set1_epi8('\r');
    const __m128i mark = _mm_set1_epi8(quote);
    const __m128i zero = _mm_setzero_si128();
    __m128i quotes = zero;
    __m128i returns = zero;
    __m128i zeroes = zero;
    __m128i beyond = zero;
    __m128i empty = zero;
    __m128i total = zero;
    std::size_t at = head;
    while (at + 16 <= bytes.size()) {
        __m128i counts = zero;  // by lane, at most 255
        const std::size_t stop = std::min(bytes.size() - 15, at + std::size_t{255} * 16);
        for (; at < stop; at += 16) {
            const auto* place = reinterpret_cast<const __m128i*>(bytes.data() + at);
            const __m128i letters = _mm_loadu_si128(place);
            const __m128i before =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes.data() + at - 1));
            const __m128i feeds = _mm_cmpeq_epi8(letters, feed);
            counts = _mm_sub_epi8(counts, feeds);
            empty = _mm_or_si128(empty, _mm_and_si128(feeds, _mm_cmpeq_epi8(before, feed)));
            quotes = _mm_or_si128(quotes, _mm_cmpeq_epi8(letters, mark));
            returns = _mm_or_si128(returns, _mm_cmpeq_epi8(letters, back));
            zeroes = _mm_or_si128(zeroes, _mm_cmpeq_epi8(letters, zero));
            beyond = _mm_or_si128(beyond, letters);
        }
        total = _mm_add_epi64(total, _mm_sad_epu8(counts, zero));
    }
    alignas(16) std::int64_t sums[2];
    _mm_store_si128(reinterpret_cast<__m128i*>(sums), total);
    facts.fLineFeeds += sums[0] + sums[1];
    const auto any = [](__m128i bits) { return _mm_movemask_epi8(bits) != 0; };
    facts.fbZeroes = facts.fbZeroes || any(zeroes);
    facts.fbBeyondAscii = facts.fbBeyondAscii || any(beyond);
    facts.fbQuotes = facts.fbQuotes || (quote != '\0' && any(quotes));
    facts.fbReturns = facts.fbReturns || any(returns);
    facts.fbEmptyLines = facts.fbEmptyLines || any(empty);
    if (at < bytes.size()) {
        LookAtBytes(bytes, at, quote, bytes[at - 1], facts);
    }
    return facts;
}
#else
PieceFacts FactsOf(std::string_view bytes, char quote) {
    PieceFacts facts;
    LookAtBytes(bytes, 0, quote, '\n', facts);
    return facts;
}
#endif

// Whether every carriage return stands before a line feed and behind some other letter.
bool AreReturnsPartOfLineEnds(std::string_view bytes) {
    for (std::size_t at = 0; (at = bytes.find('\r', at)) != std::string_view::npos; at += 2) {
        if (at == 0 || bytes[at - 1] == '\n' || at + 1 == bytes.size() || bytes[at + 1] != '\n') {
            return false;
        }
    }
    return true;
}

/// A stretch of bytes whose first letter is the first of a record, unless quotes reach into it.
struct Piece {
    std::size_t fBegin = 0;
    std::size_t fEnd = 0;
    PieceFacts fFacts;
    bool fbPlain = false;
    // If its first letter is the first of a record:
    std::size_t fNext = 0;  // behind the records that start in it
    std::int64_t fRows = 0;
    bool fbUnterminated = false;
    bool fbKnown = true;  // these; not when a record seems to go on for long
};

// Records that start from fBegin to fEnd; looks no further than to `limit`.
void CountRecords(std::string_view text, std::size_t limit, TextDialect dialect, Piece& piece) {
    RecordScanner scanner(text.substr(piece.fBegin, limit - piece.fBegin), dialect);
    piece.fRows = 0;
    while (piece.fBegin + scanner.Position() < piece.fEnd && scanner.Next()) {
        ++piece.fRows;
    }
    piece.fNext = piece.fBegin + scanner.Position();
    piece.fbUnterminated = scanner.IsUnterminated();
    // A record that reaches the limit may go on behind it.
    piece.fbKnown = limit == text.size() || piece.fNext < limit;
}

void LookAt(std::string_view text, TextDialect dialect, std::size_t sectionBytes, Piece& piece) {
    const std::string_view bytes = text.substr(piece.fBegin, piece.fEnd - piece.fBegin);
    piece.fFacts = FactsOf(bytes, dialect.fQuote);
    piece.fbPlain = !piece.fFacts.fbQuotes && !piece.fFacts.fbEmptyLines && bytes.back() == '\n' &&
                    (!piece.fFacts.fbReturns || AreReturnsPartOfLineEnds(bytes));
    if (piece.fbPlain) {
        piece.fRows = piece.fFacts.fLineFeeds;
        piece.fNext = piece.fEnd;
    } else {
        const std::size_t limit = std::min(text.size() - piece.fEnd, sectionBytes) + piece.fEnd;
        CountRecords(text, limit, dialect, piece);
    }
}

std::vector<Piece> CutIntoPieces(std::string_view text, std::size_t begin, std::size_t bytes) {
    std::vector<Piece> pieces;
    // Lines mostly end as the one before the records does.
    const char lineEnd = begin > 0 && text[begin - 1] == '\r' ? '\r' : '\n';
    const auto add = [&pieces](std::size_t from, std::size_t to) {
        Piece piece;
        piece.fBegin = from;
        piece.fEnd = to;
        pieces.push_back(piece);
    };
    // The last letters apart: there is nothing to read behind them.
    std::size_t tail = begin;
    if (text.size() - begin > TextSection::kRoomBehind) {
        const std::size_t last = text.rfind(lineEnd, text.size() - TextSection::kRoomBehind - 1);
        tail = last == std::string_view::npos ? begin : std::max(begin, last + 1);
    }
    while (begin < tail) {
        std::size_t end = tail;
        if (tail - begin > bytes) {
            const std::size_t next = text.find(lineEnd, begin + bytes - 1);
            end = next == std::string_view::npos ? tail : std::min(tail, next + 1);
        }
        add(begin, end);
        begin = end;
    }
    if (begin < text.size()) {
        add(begin, text.size());
    }
    return pieces;
}

}  // namespace

SectionedText CutIntoSections(std::string_view text, std::size_t begin, TextDialect dialect,
                              std::size_t sectionBytes, std::int32_t threads,
                              const std::function<void(std::string_view)>& done) {
    std::vector<Piece> pieces = CutIntoPieces(text, begin, sectionBytes);
    RunTasks(threads, static_cast<std::int32_t>(pieces.size()), [&](std::int32_t number) {
        Piece& piece = pieces[static_cast<std::size_t>(number)];
        LookAt(text, dialect, sectionBytes, piece);
        done(text.substr(piece.fBegin, piece.fEnd - piece.fBegin));
    });
    SectionedText result;
    std::size_t next = begin;  // where the next record may start
    for (Piece& piece : pieces) {
        result.fbZeroes = result.fbZeroes || piece.fFacts.fbZeroes;
        result.fbBeyondAscii = result.fbBeyondAscii || piece.fFacts.fbBeyondAscii;
        if (next >= piece.fEnd) {
            continue;  // within quotes of a record before it
        }
        if (next != piece.fBegin || !piece.fbKnown) {
            piece.fBegin = next;
            piece.fbPlain = false;
            CountRecords(text, text.size(), dialect, piece);
        }
        next = piece.fNext;
        result.fbPlain = result.fbPlain && piece.fbPlain;
        result.fbUnterminated = piece.fbUnterminated;
        if (piece.fRows == 0) {
            continue;
        }
        TextSection section;
        section.fText = text.substr(piece.fBegin, piece.fNext - piece.fBegin);
        section.fRows = piece.fRows;
        section.fbPlain = piece.fbPlain;
        section.fbReturns = piece.fFacts.fbReturns;
        if (text.size() - piece.fNext < TextSection::kRoomBehind) {
            std::string& copy = result.fvCopies.emplace_back(section.fText);
            copy.append(TextSection::kRoomBehind, '\0');
            section.fText = std::string_view(copy).substr(0, section.fText.size());
        }
        result.fvSections.push_back(section);
        result.fRows += piece.fRows;
    }
    return result;
}

}  // namespace embedded

#include "embedded/data/CellIndex.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace embedded {
namespace {

constexpr std::size_t kBlock = 64;
/// Of text; with the places of its cells it should stay in a cache of the second level.
constexpr std::int64_t kTileBytes = 192 << 10;
/// Fewer would have each column's dictionary brought into the cache for too few cells.
constexpr std::int64_t kLeastTileRows = 64;
constexpr std::int64_t kMostTileRows = 2048;

// One bit for each of 64 bytes that is one of the two letters, the first byte the lowest bit.
#if defined(__SSE2__)
inline std::uint64_t Matches(const char* bytes, char one, char other) {
    const __m128i first = _mm_set1_epi8(one);
    const __m128i second = _mm_set1_epi8(other);
    std::uint64_t bits = 0;
    for (std::size_t quarter = 0; quarter < 4; ++quarter) {
        const __m128i letters =
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16 * quarter));
        const __m128i found =
            _mm_or_si128(_mm_cmpeq_epi8(letters, first), _mm_cmpeq_epi8(letters, second));
        bits |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(found)))
                << (16 * quarter);
    }
    return bits;
}
#else
inline std::uint64_t Matches(const char* bytes, char one, char other) {
    std::uint64_t bits = 0;
    for (unsigned at = 0; at < kBlock; ++at) {
        bits |= static_cast<std::uint64_t>(bytes[at] == one || bytes[at] == other) << at;
    }
    return bits;
}
#endif

// Without the instruction, which not every processor has, the library's is a call.
inline unsigned CountBits(std::uint64_t bits) {
    bits -= (bits >> 1U) & 0x5555555555555555U;
    bits = (bits & 0x3333333333333333U) + ((bits >> 2U) & 0x3333333333333333U);
    bits = (bits + (bits >> 4U)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<unsigned>((bits * 0x0101010101010101U) >> 56U);
}

}  // namespace

CellIndex::CellIndex(const TextSection& section, TextDialect dialect, std::int32_t columns)
    : fSection(section), fDialect(dialect), fColumns(columns) {
    // A line without a letter is a cell of a single column, but no record.
    fbFast =
        section.fbPlain && columns > 1 && dialect.fDelimiter != '\n' && dialect.fDelimiter != '\r';
    fStride = static_cast<std::size_t>(columns) + (fbFast ? 0 : 1);
    const auto bytes = static_cast<std::int64_t>(section.fText.size());
    const std::int64_t rowBytes =
        std::max<std::int64_t>(bytes / std::max<std::int64_t>(section.fRows, 1), 1);
    fSuitableRows =
        static_cast<std::int32_t>(std::clamp(kTileBytes / rowBytes, kLeastTileRows, kMostTileRows));
    fvPlaces.resize(1);
    fvPlaces[0] = std::numeric_limits<std::uint32_t>::max();  // before the first letter
}

bool CellIndex::Next(std::int32_t maxRows) {
    fFirstRow += fRows;
    fRows = 0;
    return !fbMalformed && (fbFast ? NextPlain(maxRows) : NextCareful(maxRows));
}

void CellIndex::FindPlaces(std::size_t wanted) {
    if (fvPlaces.size() < wanted + 2 * kBlock + 1) {
        fvPlaces.resize(wanted + 2 * kBlock + 1);
    }
    const char* const text = fSection.fText.data();
    const std::size_t size = fSection.fText.size();
    std::uint32_t* out = fvPlaces.data() + 1 + fCount;
    const std::uint32_t* const enough = fvPlaces.data() + 1 + wanted;
    while (out < enough && fScanned < size) {
        std::uint64_t bits = Matches(text + fScanned, fDialect.fDelimiter, '\n');
        if (size - fScanned < kBlock) {
            bits &= (std::uint64_t{1} << (size - fScanned)) - 1;
        }
        const auto base = static_cast<std::uint32_t>(fScanned);
        const auto count = CountBits(bits);
        // Eight at a time, some of them too many: cheaper than to guess the end each time.
        for (unsigned written = 0; written < count; written += 8) {
            for (unsigned step = 0; step < 8; ++step) {
                out[written + step] = base + static_cast<std::uint32_t>(std::countr_zero(bits));
                bits &= bits - 1;
            }
        }
        out += count;
        fScanned += kBlock;
    }
    fCount = static_cast<std::size_t>(out - fvPlaces.data()) - 1;
}

bool CellIndex::NextPlain(std::int32_t maxRows) {
    const auto columns = static_cast<std::size_t>(fColumns);
    // What was found beyond the rows before.
    fCount -= fUsed;
    std::memmove(fvPlaces.data(), fvPlaces.data() + fUsed, (fCount + 1) * sizeof(std::uint32_t));
    fUsed = 0;
    const std::int64_t left = fSection.fRows - fFirstRow;
    const auto rows = static_cast<std::size_t>(std::min<std::int64_t>(left, maxRows));
    const std::size_t wanted = rows * columns;
    FindPlaces(left == static_cast<std::int64_t>(rows) ? wanted + 1 : wanted);
    // All rows together have as many line feeds as there are rows; if each row's last place is one,
    // then no other is.
    fbMalformed = fCount < wanted || (left == static_cast<std::int64_t>(rows) && fCount > wanted);
    const char* const text = fSection.fText.data();
    for (std::size_t row = 1; row <= rows && !fbMalformed; ++row) {
        fbMalformed = text[fvPlaces[row * columns]] != '\n';
    }
    if (fbMalformed || rows == 0) {
        return false;
    }
    fRows = static_cast<std::int32_t>(rows);
    fUsed = wanted;
    fPosition = std::size_t{fvPlaces[wanted]} + 1;
    return true;
}

bool CellIndex::NextCareful(std::int32_t maxRows) {
    fCount = 0;
    while (fRows < maxRows && TakeRecord()) {
        ++fRows;
    }
    return fRows > 0 && !fbMalformed;
}

// The record's places: before its first cell and behind each of them.
bool CellIndex::TakeRecord() {
    const char* const begin = fSection.fText.data();
    const char* const end = begin + fSection.fText.size();
    const char* at = begin + fPosition;
    while (at < end && (*at == '\n' || *at == '\r')) {
        ++at;
    }
    fPosition = static_cast<std::size_t>(at - begin);
    if (at == end) {
        return false;
    }
    if (fvPlaces.size() < fCount + fStride) {
        fvPlaces.resize(std::max(2 * fvPlaces.size(), fCount + fStride));
    }
    const auto place = [begin](const char* letter) {
        return static_cast<std::uint32_t>(letter - begin);
    };
    std::uint32_t* out = fvPlaces.data() + fCount;
    const std::uint32_t* const outEnd = out + fStride;
    const char delimiter = fDialect.fDelimiter;
    const char quote = fDialect.fQuote;
    *out++ = place(at) - 1;
    while (true) {
        if (quote != '\0' && at < end && *at == quote && *at != delimiter) {
            ++at;
            while (at < end) {
                const auto* close = static_cast<const char*>(
                    std::memchr(at, quote, static_cast<std::size_t>(end - at)));
                at = close == nullptr ? end : close + 1;
                if (at == end || *at != quote) {
                    break;
                }
                ++at;
            }
        }
        while (at < end && *at != delimiter && *at != '\n' && *at != '\r') {
            ++at;
        }
        if (out == outEnd) {
            fbMalformed = true;
            return false;
        }
        *out++ = place(at);
        if (at == end || *at == '\n' || *at == '\r') {
            break;
        }
        ++at;
    }
    fbMalformed = out != outEnd;
    fPosition = static_cast<std::size_t>(at - begin);
    fCount += fStride;
    return !fbMalformed;
}

std::string_view CellIndex::Unquoted(std::string_view cell, std::string& buffer) const {
    const std::size_t close = cell.find(fDialect.fQuote, 1);
    if (close + 1 == cell.size()) {
        return cell.substr(1, close - 1);
    }
    buffer.clear();
    bool quoted = true;
    for (std::size_t at = 1; at < cell.size(); ++at) {
        if (quoted && cell[at] == fDialect.fQuote) {
            if (at + 1 < cell.size() && cell[at + 1] == fDialect.fQuote) {
                ++at;
            } else {
                quoted = false;
                continue;
            }
        }
        buffer.push_back(cell[at]);
    }
    return buffer;
}

}  // namespace embedded

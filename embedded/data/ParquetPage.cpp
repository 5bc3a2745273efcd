#include "embedded/data/ParquetPage.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <variant>

#include "host/Records.h"

namespace embedded {
namespace {

constexpr std::size_t kPack = 8;  // values of a bit-packed group

// The lowest byte first.
void PutLittle(std::uint64_t number, std::size_t bytes, std::uint8_t* out) {
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(out, &number, bytes);
    } else {
        for (std::size_t i = 0; i < bytes; ++i) {
            out[i] = static_cast<std::uint8_t>(number >> (8 * i));
        }
    }
}

// Eight places become as many bytes as each has bits.
template <class Entry>
void Pack(const Entry* places, unsigned width, std::uint8_t* out) {
    std::uint64_t bits = 0;
    if (width <= kPack) {
        for (std::size_t i = 0; i < kPack; ++i) bits |= std::uint64_t{places[i]} << (i * width);
        PutLittle(bits, sizeof bits, out);  // what is too much is written over by the next
        return;
    }
    unsigned count = 0;
    for (std::size_t i = 0; i < kPack; ++i) {
        bits |= std::uint64_t{places[i]} << count;
        count += width;
        if (count >= 32) {
            PutLittle(bits, 4, out);
            out += 4;
            bits >>= 32U;
            count -= 32;
        }
    }
    PutLittle(bits, count / 8, out);
}

template <class Entry>
bool AreEqual(const Entry* places) {
    Entry different = 0;
    for (std::size_t i = 1; i < kPack; ++i) {
        different = static_cast<Entry>(different | (places[i] ^ places[0]));
    }
    return different == 0;
}

}  // namespace

// What is written below never takes more.
void ParquetPage::Begin(std::size_t rows, std::size_t bytesPerRow) {
    constexpr std::size_t kHeads = 64;
    const std::size_t most = kHeads + rows + rows * bytesPerRow;
    if (fvBytes.size() < most) fvBytes.resize(most);
    fSize = 0;
    fValid = 0;
}

void ParquetPage::PutVarint(std::size_t number) {
    for (; number >= 0x80; number >>= 7U) {
        fvBytes[fSize++] = static_cast<std::uint8_t>(number | 0x80U);
    }
    fvBytes[fSize++] = static_cast<std::uint8_t>(number);
}

// Puts the levels. makePut(where what follows them begins) gives put, and put(value, place among
// those that are there) is called for each row: what is put for a missing one is put over by the
// next.
template <class Value, class MakePut>
void ParquetPage::TakeValid(std::span<const Value> rows, Value missing, MakePut makePut) {
    fSize = 4;  // the length of what follows of the levels
    const bool all = std::find(rows.begin(), rows.end(), missing) == rows.end();
    const std::size_t groups = (rows.size() + kPack - 1) / kPack;
    PutVarint(all ? rows.size() << 1U : (groups << 1U) | 1U);
    std::uint8_t* const levels = fvBytes.data() + fSize;
    fSize += all ? 1 : groups;
    PutLittle(fSize - 4, 4, fvBytes.data());
    const auto put = makePut(fvBytes.data() + fSize);
    if (all) {
        *levels = 1;
        for (const Value value : rows) put(value, fValid++);
        return;
    }
    std::size_t valid = 0;
    const auto take = [&](std::size_t from, std::size_t end) {
        unsigned bits = 0;
        for (std::size_t row = from; row < end; ++row) {
            put(rows[row], valid);
            const bool isThere = rows[row] != missing;
            bits |= unsigned{isThere} << (row - from);
            valid += isThere ? 1 : 0;
        }
        levels[from / kPack] = static_cast<std::uint8_t>(bits);
    };
    std::size_t row = 0;
    for (; row + kPack <= rows.size(); row += kPack) take(row, row + kPack);
    if (row < rows.size()) take(row, rows.size());
    fValid = valid;
}

void ParquetPage::SetNumbers(std::span<const double> rows) {
    Begin(rows.size(), sizeof(double));
    TakeValid(rows, MCMV::gMissingValue, [](std::uint8_t* behindLevels) {
        return [behindLevels](double value, std::size_t place) {
            PutLittle(std::bit_cast<std::uint64_t>(value), sizeof value,
                      behindLevels + place * sizeof value);
        };
    });
    fSize += fValid * sizeof(double);
}

template <class Entry>
void ParquetPage::SetEntries(std::span<const Entry> rows, std::size_t values) {
    if (!std::holds_alternative<Cells<Entry>>(fPlaces)) fPlaces = Cells<Entry>();
    Cells<Entry>& places = std::get<Cells<Entry>>(fPlaces);
    places.resize(rows.size());
    Begin(rows.size(), sizeof(Entry));
    TakeValid(rows, Entry{0}, [to = places.data()](std::uint8_t*) {
        return [to](Entry entry, std::size_t place) { to[place] = static_cast<Entry>(entry - 1U); };
    });
    const auto width = static_cast<unsigned>(std::bit_width(std::max<std::size_t>(values, 2) - 1));
    fvBytes[fSize++] = static_cast<std::uint8_t>(width);
    PutPlaces(std::span<const Entry>(places).first(fValid), width);
}

template <class Entry>
void ParquetPage::PutPlaces(std::span<const Entry> places, unsigned width) {
    // Shorter ones stay in the packed stretch, which they would break: the codec finds what repeats
    // there.
    constexpr std::size_t kShortestRun = 32;
    std::size_t done = 0;
    for (std::size_t at = 0; at + kPack <= places.size();) {
        std::size_t end = at + kPack;
        if (AreEqual(places.data() + at)) {
            while (end < places.size() && places[end] == places[at]) ++end;
        }
        if (end - at < kShortestRun) {
            at += kPack;
            continue;
        }
        PutPacked(places.subspan(done, at - done), width);
        PutVarint((end - at) << 1U);
        PutLittle(places[at], (width + 7) / 8, fvBytes.data() + fSize);
        fSize += (width + 7) / 8;
        done = at = end;
    }
    PutPacked(places.subspan(done), width);
}

template <class Entry>
void ParquetPage::PutPacked(std::span<const Entry> places, unsigned width) {
    if (places.empty()) return;
    const std::size_t groups = (places.size() + kPack - 1) / kPack;
    PutVarint((groups << 1U) | 1U);
    std::uint8_t* out = fvBytes.data() + fSize;
    fSize += groups * width;
    std::size_t at = 0;
    for (; at + kPack <= places.size(); at += kPack, out += width) {
        Pack(places.data() + at, width, out);
    }
    if (at == places.size()) return;
    Entry last[kPack] = {};
    std::copy(places.begin() + static_cast<std::ptrdiff_t>(at), places.end(), last);
    Pack(last, width, out);
}

template void ParquetPage::SetEntries(std::span<const std::uint8_t>, std::size_t);
template void ParquetPage::SetEntries(std::span<const std::uint16_t>, std::size_t);
template void ParquetPage::SetEntries(std::span<const std::uint32_t>, std::size_t);

}  // namespace embedded

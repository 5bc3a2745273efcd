#ifndef BENCH_CSV_FIELDS_H
#define BENCH_CSV_FIELDS_H

// The least that splits a CSV file into fields: no quotes, no blanks, no check of anything.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#ifdef __AVX2__
#include <immintrin.h>
#endif

inline constexpr std::size_t kMaxLevels = 31;
inline constexpr std::size_t kMissingCode = kMaxLevels;
inline constexpr std::size_t kCodes = kMaxLevels + 1;
inline constexpr std::size_t kMaxClasses = 4;
// Bytes behind the end of a mapped file that can be read: zeros.
inline constexpr std::size_t kPadding = 4096;

// A file in memory with its header taken apart. A column is of the kind that its name begins with:
// y target, x scale, any other categorical.
class MappedTable {
 public:
    explicit MappedTable(const char* path) {
        const int file = open(path, O_RDONLY);
        struct stat status {};
        if (file < 0 || fstat(file, &status) != 0) throw std::runtime_error(path);
        const auto bytes = static_cast<std::size_t>(status.st_size);
        fLength = (bytes / kPadding + 2) * kPadding;
        void* room =
            mmap(nullptr, fLength, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (room == MAP_FAILED ||
            mmap(room, bytes, PROT_READ, MAP_PRIVATE | MAP_FIXED | MAP_POPULATE, file, 0) ==
                MAP_FAILED) {
            throw std::runtime_error("no room for the file");
        }
        close(file);
        fpStart = static_cast<const char*>(room);
        fpEnd = fpStart + bytes;
        const std::string_view all(fpStart, bytes);
        const std::string_view header = all.substr(0, all.find('\n'));
        for (std::size_t at = 0; at <= header.size();) {
            const std::size_t comma = std::min(header.find(',', at), header.size());
            fvNames.emplace_back(header.substr(at, comma - at));
            at = comma + 1;
        }
        fpBody = fpStart + header.size() + 1;
    }
    MappedTable(const MappedTable&) = delete;
    MappedTable& operator=(const MappedTable&) = delete;
    ~MappedTable() { munmap(const_cast<char*>(fpStart), fLength); }

    const std::vector<std::string>& GetNames() const { return fvNames; }

    std::size_t TargetColumn() const {
        return static_cast<std::size_t>(std::find(fvNames.begin(), fvNames.end(), "y") -
                                        fvNames.begin());
    }

    // Whole rows in so many pieces of about the same length.
    std::vector<std::string_view> Pieces(std::size_t count) const {
        std::vector<std::string_view> pieces;
        const char* from = fpBody;
        const auto step = static_cast<std::size_t>(fpEnd - fpBody) / count;
        for (std::size_t i = 1; i <= count; ++i) {
            const char* to = fpEnd;
            const char* near = std::max(from, fpBody + i * step);
            if (i < count && near < fpEnd) {
                const void* line = std::memchr(near, '\n', static_cast<std::size_t>(fpEnd - near));
                if (line != nullptr) to = static_cast<const char*>(line) + 1;
            }
            pieces.emplace_back(from, static_cast<std::size_t>(to - from));
            from = to;
        }
        return pieces;
    }

 private:
    const char* fpStart = nullptr;  // owned, with fLength bytes mapped
    const char* fpBody = nullptr;
    const char* fpEnd = nullptr;
    std::size_t fLength = 0;
    std::vector<std::string> fvNames;
};

#ifdef __AVX2__
inline std::uint64_t Matches(const char* p, char wanted) {
    const __m256i pattern = _mm256_set1_epi8(wanted);
    const auto half = [&](const char* q) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(q));
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, pattern)));
    };
    return half(p) | static_cast<std::uint64_t>(half(p + 32)) << 32;
}
#else
inline std::uint64_t Matches(const char* p, char wanted) {
    std::uint64_t found = 0;
    for (unsigned i = 0; i < 64; ++i) found |= static_cast<std::uint64_t>(p[i] == wanted) << i;
    return found;
}
#endif

// Calls visit(first, last, endsRow) for every field of a piece; kPadding bytes follow its end.
template <class Visit>
void ForEachField(std::string_view piece, const Visit& visit) {
    const char* start = piece.data();
    const char* end = piece.data() + piece.size();
    for (const char* p = start; p < end; p += 64) {
        const std::uint64_t lines = Matches(p, '\n');
        std::uint64_t marks = lines | Matches(p, ',');
        if (end - p < 64) marks &= (std::uint64_t{1} << (end - p)) - 1;
        for (; marks != 0; marks &= marks - 1) {
            const int at = std::countr_zero(marks);
            visit(start, p + at, (lines >> at & 1) != 0);
            start = p + at + 1;
        }
    }
}

// Codes of short texts in the order of their first occurrence.
class LevelCodes {
 public:
    std::size_t operator()(const char* first, const char* last) {
        const auto length = static_cast<std::size_t>(last - first);
        if (length == 0) return kMissingCode;
        const std::uint64_t low = Bytes(first, length);
        const std::uint64_t high = length > 8 ? Bytes(first + 8, length - 8) : 0;
        std::size_t slot = ((low ^ high * 31) * 0x9E3779B97F4A7C15U) >> 58U;
        while (fSlots[slot].fCode >= 0) {
            if (fSlots[slot].fLow == low && fSlots[slot].fHigh == high) {
                return static_cast<std::size_t>(fSlots[slot].fCode);
            }
            slot = (slot + 1) % fSlots.size();
        }
        if (fvLabels.size() == kMaxLevels || length > 16)
            throw std::runtime_error("not a short category");
        fSlots[slot] = {low, high, static_cast<int>(fvLabels.size())};
        fvLabels.emplace_back(first, length);
        return fvLabels.size() - 1;
    }

    const std::vector<std::string>& GetLabels() const { return fvLabels; }

 private:
    struct Slot {
        std::uint64_t fLow = 0;
        std::uint64_t fHigh = 0;
        int fCode = -1;
    };

    static std::uint64_t Bytes(const char* p, std::size_t length) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, p, 8);
        return length < 8 ? bytes & ((std::uint64_t{1} << (8 * length)) - 1) : bytes;
    }

    std::array<Slot, 64> fSlots;
    std::vector<std::string> fvLabels;
};

// A decimal number of at most 18 digits, without an exponent.
inline double ShortNumber(const char* first, const char* last) {
    static constexpr std::array<double, 19> kPowers{1,    1e1,  1e2,  1e3,  1e4,  1e5,  1e6,
                                                    1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13,
                                                    1e14, 1e15, 1e16, 1e17, 1e18};
    const bool negative = *first == '-';
    std::uint64_t digits = 0;
    std::size_t decimals = 0;
    for (const char* p = first + (negative ? 1 : 0); p < last; ++p) {
        if (*p == '.') {
            decimals = static_cast<std::size_t>(last - p - 1);
        } else {
            digits = digits * 10 + static_cast<std::uint64_t>(*p - '0');
        }
    }
    const double number = static_cast<double>(digits) / kPowers[decimals];
    return negative ? -number : number;
}

#endif

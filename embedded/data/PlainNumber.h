#ifndef PREDSEL_EMBEDDED_DATA_PLAINNUMBER_H
#define PREDSEL_EMBEDDED_DATA_PLAINNUMBER_H

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace embedded {

/// The most letters of a number that ReadPlainNumber reads.
inline constexpr std::uint32_t kPlainNumberLetters = 16;

namespace plain_number {

inline constexpr std::uint64_t kOnes = 0x0101010101010101U;

/// Place of the first byte of the word that is the letter, 8 if none is.
inline unsigned Find(std::uint64_t word, char letter) {
    const std::uint64_t other = word ^ (kOnes * static_cast<unsigned char>(letter));
    const std::uint64_t zero = (other - kOnes) & ~other & (kOnes << 7U);
    return static_cast<unsigned>(std::countr_zero(zero)) / 8;
}

/// The number of eight digits 0 to 9, the first of them in the lowest byte: two, then four, then
/// eight at a time (Lemire 2021, "Number parsing at a gigabyte per second").
inline std::uint64_t EightDigits(std::uint64_t digits) {
    digits = digits * 10 + (digits >> 8U);
    return ((digits & 0x000000FF000000FFU) * 0x000F424000000064U +
            ((digits >> 16U) & 0x000000FF000000FFU) * 0x0000271000000001U) >>
           32U;
}

}  // namespace plain_number

/// Reads a number of at most kPlainNumberLetters letters: an optional minus, digits, and perhaps a
/// mark with digits on both sides; below 2^53 without the mark, so that one division of two exact
/// numbers gives the exactly rounded value. False for everything else, which may be a number all
/// the same. Reads 17 bytes from `text` on, whatever the length.
inline bool ReadPlainNumber(const char* text, std::uint32_t length, char mark, double& value,
                            std::int32_t& decimals) {
    if constexpr (std::endian::native != std::endian::little) {
        return false;
    }
    constexpr std::array<double, 17> kPowers = {1,   1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7, 1e8,
                                                1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16};
    const bool negative = *text == '-';
    text += negative ? 1 : 0;
    length -= negative ? 1U : 0U;
    if (length - 1 >= kPlainNumberLetters) {  // none, too
        return false;
    }
    std::uint64_t low = 0;
    std::uint64_t high = 0;
    std::memcpy(&low, text, sizeof low);
    std::memcpy(&high, text + sizeof low, sizeof high);
    unsigned place = plain_number::Find(low, mark);
    if (place == 8 && length > 8) {
        place += plain_number::Find(high, mark);
    }
    unsigned digits = length;
    unsigned behind = 0;
    if (place < length) {
        behind = length - place - 1;
        --digits;
        if (place == 0 || behind == 0) {
            return false;
        }
        // Takes the mark out: what is behind it moves down by a byte.
        const std::uint64_t lowNext = low >> 8U | high << 56U;
        const std::uint64_t lowKept =
            place >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << (8 * place)) - 1;
        const std::uint64_t highKept = place <= 8 ? 0 : (std::uint64_t{1} << (8 * (place - 8))) - 1;
        low = (low & lowKept) | (lowNext & ~lowKept);
        high = (high & highKept) | (high >> 8U & ~highKept);
    }
    // The last digit goes to the last byte, zeros before the first one.
    constexpr std::uint64_t kZeros = plain_number::kOnes * '0';
    if (digits > 8) {
        const unsigned shift = 8 * (16 - digits);  // 0 to 56
        const std::uint64_t carried = shift == 0 ? 0 : low >> (64 - shift);
        const std::uint64_t zerosCarried = shift == 0 ? 0 : kZeros >> (64 - shift);
        high = (high << shift | carried) ^ (kZeros << shift | zerosCarried);
        low = low << shift ^ kZeros << shift;
    } else {
        high = low << (8 * (8 - digits)) ^ kZeros << (8 * (8 - digits));
        low = 0;
    }
    constexpr std::uint64_t kAboveNine = plain_number::kOnes * (0x80 - 10);
    if ((((low + kAboveNine) | low | (high + kAboveNine) | high) & plain_number::kOnes << 7U) !=
        0) {
        return false;
    }
    const std::uint64_t number =
        plain_number::EightDigits(low) * 100000000U + plain_number::EightDigits(high);
    if (number >= std::uint64_t{1} << 53U) {
        return false;
    }
    const double magnitude =
        static_cast<double>(static_cast<std::int64_t>(number)) / kPowers[behind];
    value = negative ? 0.0 - magnitude : magnitude;  // never -0
    decimals = static_cast<std::int32_t>(behind);
    return true;
}

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_PLAINNUMBER_H

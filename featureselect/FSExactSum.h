#ifndef PREDSEL_FEATURESELECT_FSEXACTSUM_H
#define PREDSEL_FEATURESELECT_FSEXACTSUM_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "featureselect/FSScaled.h"

/// A sum of doubles and of products of doubles without any rounding: a binary number as long as it
/// has to be (Kulisch 1971). It is the same whatever the order of what was added, and what was
/// added can be taken away again. One that met an infinity or a NaN is not a number from then on.
///
/// Kept as two's complement words of 64 bits, of which the lowest counts 2^(64 * fLowest). Words
/// are made where they are needed; a few have their place in the object.
class FSExactSum {
 public:
    FSExactSum() = default;
    explicit FSExactSum(double value) { Add(value); }
    FSExactSum(const FSExactSum& other) { *this = other; }
    FSExactSum(FSExactSum&&) noexcept = default;
    FSExactSum& operator=(const FSExactSum& other);
    FSExactSum& operator=(FSExactSum&&) noexcept = default;
    ~FSExactSum() = default;

    void Add(double value);
    void AddProduct(double a, double b);
    void AddProduct(double a, double b, double c);
    /// Adds number * 2^exponent; the number as two's complement, lowest word first, at most
    /// kMaxTermWords words.
    void AddWords(std::span<const std::uint64_t> number, std::int32_t exponent);
    /// Adds the sum of limbs[i] * 2^(kLimbBits * i + exponent); at most kMaxLimbs limbs, each as
    /// large as it likes.
    void AddLimbs(std::span<const std::int64_t> limbs, std::int32_t exponent);

    FSExactSum& operator+=(const FSExactSum& other);
    FSExactSum& operator-=(const FSExactSum& other);
    friend FSExactSum operator+(FSExactSum a, const FSExactSum& b) { return a += b; }
    friend FSExactSum operator-(FSExactSum a, const FSExactSum& b) { return a -= b; }
    friend FSExactSum operator*(const FSExactSum& a, const FSExactSum& b);
    /// Of the numbers; one that is not a number equals nothing.
    friend bool operator==(const FSExactSum& a, const FSExactSum& b);

    bool IsNumber() const { return !fbNotANumber; }
    /// -1, 0 or 1; 0 also for what is not a number.
    int Sign() const;
    /// The nearest double, of two equally near ones the even one. The largest double for all beyond
    /// it; NaN for what is not a number.
    double Value() const;
    /// The number to 106 bits.
    FSScaled Scaled() const;

    /// Canonical bytes, the same for every road to the number: a 16-bit count of words (0xFFFF: not
    /// a number), a 16-bit lowest place, the words; little-endian.
    void AppendTo(std::string& bytes) const;
    /// Reads them from the front of bytes and drops them there; nothing for bytes that no sum has
    /// written.
    static std::optional<FSExactSum> TakeFrom(std::string_view& bytes);

    static constexpr std::size_t kMaxTermWords = 8;
    static constexpr int kLimbBits = 48;
    static constexpr std::size_t kMaxLimbs = 8;

 private:
    static constexpr std::size_t kInlineWords = 4;
    static constexpr std::uint16_t kNotANumber = 0xFFFF;  // in place of the count

    std::span<std::uint64_t> Words();
    std::span<const std::uint64_t> Words() const;
    /// Without words that say nothing: zeros below, copies of the sign above.
    std::span<const std::uint64_t> CanonicalWords(std::int32_t& lowest) const;
    void AddAt(std::span<const std::uint64_t> number, std::int32_t lowest, bool subtract);
    void Cover(std::int32_t lowest, std::int32_t end);
    void PushTop(std::uint64_t word);
    void AddMantissa(std::span<const std::uint64_t> magnitude, std::int32_t exponent,
                     bool negative);

    std::array<std::uint64_t, kInlineWords> fInline{};
    std::unique_ptr<std::vector<std::uint64_t>> fpLong;  // instead of fInline, when there are more
    std::int32_t fLowest = 0;
    std::uint16_t fCount = 0;  // of the words in fInline; 0 is the number 0
    bool fbNotANumber = false;
};

#endif  // PREDSEL_FEATURESELECT_FSEXACTSUM_H

#include "featureselect/FSExactSum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "featureselect/FSDoubleParts.h"
#include "featureselect/FSExactBytes.h"

namespace {

constexpr int kWordBits = 64;
__extension__ typedef unsigned __int128 TwoWords;
__extension__ typedef __int128 SignedTwoWords;

std::int32_t FloorDivide(std::int32_t number, std::int32_t divisor) {
    return number >= 0 ? number / divisor : -((-number + divisor - 1) / divisor);
}

std::uint64_t SignOf(std::span<const std::uint64_t> words) {
    return words.empty() || words.back() >> 63 == 0 ? 0 : ~std::uint64_t{0};
}

// The magnitude of a two's complement number.
std::vector<std::uint64_t> Magnitude(std::span<const std::uint64_t> words, bool& negative) {
    std::vector<std::uint64_t> magnitude(words.begin(), words.end());
    negative = SignOf(words) != 0;
    if (!negative) return magnitude;
    std::uint64_t carry = 1;
    for (std::uint64_t& word : magnitude) {
        word = ~word + carry;
        carry = carry != 0 && word == 0 ? 1 : 0;
    }
    return magnitude;
}

// Bits of a magnitude from `from` upwards, count (at most 64) of them.
std::uint64_t BitsAt(std::span<const std::uint64_t> words, std::int64_t from, int count) {
    std::uint64_t bits = 0;
    for (int at = 0; at < count;) {
        const std::int64_t place = from + at;
        if (place < 0) {  // nothing there
            at += static_cast<int>(std::min<std::int64_t>(-place, count - at));
            continue;
        }
        const auto word = static_cast<std::size_t>(place / kWordBits);
        if (word >= words.size()) break;
        const auto offset = static_cast<int>(place % kWordBits);
        bits |= words[word] >> offset << at;
        at += kWordBits - offset;
    }
    return count == kWordBits ? bits : bits & ((std::uint64_t{1} << count) - 1);
}

bool AnyBitBelow(std::span<const std::uint64_t> words, std::int64_t place) {
    for (std::size_t at = 0; at < words.size(); ++at) {
        const std::int64_t start = static_cast<std::int64_t>(at) * kWordBits;
        if (start >= place) return false;
        const std::int64_t take = std::min<std::int64_t>(place - start, kWordBits);
        const std::uint64_t mask =
            take == kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << take) - 1;
        if ((words[at] & mask) != 0) return true;
    }
    return false;
}

// The place of the highest bit of a magnitude that is not 0.
std::int64_t HighestBit(std::span<const std::uint64_t> words) {
    std::size_t top = words.size();
    while (words[top - 1] == 0) --top;
    return static_cast<std::int64_t>(top) * kWordBits - 1 - std::countl_zero(words[top - 1]);
}

}  // namespace

FSExactSum& FSExactSum::operator=(const FSExactSum& other) {
    if (this == &other) return *this;
    fInline = other.fInline;
    fpLong = other.fpLong ? std::make_unique<std::vector<std::uint64_t>>(*other.fpLong) : nullptr;
    fLowest = other.fLowest;
    fCount = other.fCount;
    fbNotANumber = other.fbNotANumber;
    return *this;
}

std::span<std::uint64_t> FSExactSum::Words() {
    if (fpLong) return *fpLong;
    return std::span(fInline).first(fCount);
}

std::span<const std::uint64_t> FSExactSum::Words() const {
    if (fpLong) return *fpLong;
    return std::span(fInline).first(fCount);
}

void FSExactSum::Add(double value) {
    if (value == 0.0) return;
    if (!std::isfinite(value)) {
        fbNotANumber = true;
        return;
    }
    const FSDoubleParts parts(value);
    AddMantissa(std::array{parts.fMantissa}, parts.fExponent, parts.fbNegative);
}

void FSExactSum::AddProduct(double a, double b) {
    if (!std::isfinite(a) || !std::isfinite(b)) {
        fbNotANumber = true;
        return;
    }
    if (a == 0.0 || b == 0.0) return;
    const FSDoubleParts first(a);
    const FSDoubleParts second(b);
    const TwoWords product = TwoWords{first.fMantissa} * second.fMantissa;
    AddMantissa(std::array{static_cast<std::uint64_t>(product),
                           static_cast<std::uint64_t>(product >> kWordBits)},
                first.fExponent + second.fExponent, first.fbNegative != second.fbNegative);
}

void FSExactSum::AddProduct(double a, double b, double c) {
    if (!std::isfinite(a) || !std::isfinite(b) || !std::isfinite(c)) {
        fbNotANumber = true;
        return;
    }
    if (a == 0.0 || b == 0.0 || c == 0.0) return;
    const FSDoubleParts first(a);
    const FSDoubleParts second(b);
    const FSDoubleParts third(c);
    const TwoWords product = TwoWords{first.fMantissa} * second.fMantissa;
    const TwoWords low = TwoWords{static_cast<std::uint64_t>(product)} * third.fMantissa;
    const TwoWords high =
        TwoWords{static_cast<std::uint64_t>(product >> kWordBits)} * third.fMantissa +
        static_cast<std::uint64_t>(low >> kWordBits);
    AddMantissa(std::array{static_cast<std::uint64_t>(low), static_cast<std::uint64_t>(high),
                           static_cast<std::uint64_t>(high >> kWordBits)},
                first.fExponent + second.fExponent + third.fExponent,
                (first.fbNegative != second.fbNegative) != third.fbNegative);
}

// The magnitude, shifted to the words it falls into. Its highest bit is clear, so that it is a
// number above 0 in two's complement too.
void FSExactSum::AddMantissa(std::span<const std::uint64_t> magnitude, std::int32_t exponent,
                             bool negative) {
    const std::int32_t lowest = FloorDivide(exponent, kWordBits);
    const int shift = exponent - lowest * kWordBits;
    std::array<std::uint64_t, kMaxTermWords + 1> words{};
    for (std::size_t at = 0; at < magnitude.size(); ++at) {
        words[at] |= magnitude[at] << shift;
        if (shift > 0) words[at + 1] = magnitude[at] >> (kWordBits - shift);
    }
    std::size_t count = magnitude.size() + 1;
    while (count > 1 && words[count - 1] == 0 && words[count - 2] >> 63 == 0) --count;
    AddAt(std::span(words).first(count), lowest, negative);
}

void FSExactSum::AddLimbs(std::span<const std::int64_t> limbs, std::int32_t exponent) {
    // Digits of 48 bits, four of which make three words; what is above a digit moves up.
    std::array<std::uint64_t, kMaxTermWords> words{};
    SignedTwoWords rest = 0;
    std::size_t bit = 0;
    const auto put = [&](std::uint64_t digit, int bits) {
        const std::size_t at = bit / kWordBits;
        const auto offset = static_cast<int>(bit % kWordBits);
        words[at] |= digit << offset;
        if (offset + bits > kWordBits) words[at + 1] |= digit >> (kWordBits - offset);
        bit += static_cast<std::size_t>(bits);
    };
    constexpr std::uint64_t kDigit = (std::uint64_t{1} << kLimbBits) - 1;
    for (const std::int64_t limb : limbs) {
        rest += limb;
        put(static_cast<std::uint64_t>(rest) & kDigit, kLimbBits);
        rest >>= kLimbBits;
    }
    put(static_cast<std::uint64_t>(rest), kWordBits);
    const std::size_t used = (bit + kWordBits - 1) / kWordBits;
    if (bit % kWordBits != 0 && rest < 0) words[used - 1] |= ~std::uint64_t{0} << bit % kWordBits;
    AddWords(std::span(words).first(used), exponent);
}

void FSExactSum::AddWords(std::span<const std::uint64_t> number, std::int32_t exponent) {
    // Words that say nothing would make room for themselves.
    while (number.size() > 1 && number.back() == SignOf(number.first(number.size() - 1))) {
        number = number.first(number.size() - 1);
    }
    while (!number.empty() && number.front() == 0) {
        number = number.subspan(1);
        exponent += kWordBits;
    }
    if (number.empty()) return;
    const std::int32_t lowest = FloorDivide(exponent, kWordBits);
    const int shift = exponent - lowest * kWordBits;
    if (shift == 0) return AddAt(number, lowest, false);
    std::array<std::uint64_t, kMaxTermWords + 1> words{};
    std::uint64_t below = 0;
    for (std::size_t at = 0; at < number.size(); ++at) {
        words[at] = number[at] << shift | below;
        below = number[at] >> (kWordBits - shift);
    }
    words[number.size()] = SignOf(number) << shift | below;
    const bool fits = words[number.size()] == SignOf(std::span(words).first(number.size()));
    AddAt(std::span(words).first(number.size() + (fits ? 0 : 1)), lowest, false);
}

void FSExactSum::PushTop(std::uint64_t word) {
    if (fpLong) {
        fpLong->push_back(word);
    } else if (fCount < kInlineWords) {
        fInline[fCount++] = word;
    } else {
        fpLong = std::make_unique<std::vector<std::uint64_t>>(fInline.begin(), fInline.end());
        fpLong->push_back(word);
    }
}

// Makes words for the places from lowest up to, but not with, end.
void FSExactSum::Cover(std::int32_t lowest, std::int32_t end) {
    if (Words().empty()) fLowest = lowest;
    if (lowest < fLowest) {
        const auto more = static_cast<std::size_t>(fLowest - lowest);
        const std::size_t have = Words().size();
        if (!fpLong && have + more <= kInlineWords) {
            std::copy_backward(fInline.begin(), fInline.begin() + have,
                               fInline.begin() + have + more);
            std::fill_n(fInline.begin(), more, 0);
            fCount = static_cast<std::uint16_t>(have + more);
        } else {
            if (!fpLong) {
                fpLong = std::make_unique<std::vector<std::uint64_t>>(fInline.begin(),
                                                                      fInline.begin() + fCount);
            }
            fpLong->insert(fpLong->begin(), more, 0);
        }
        fLowest = lowest;
    }
    const std::uint64_t sign = SignOf(Words());
    while (fLowest + static_cast<std::int32_t>(Words().size()) < end) PushTop(sign);
}

void FSExactSum::AddAt(std::span<const std::uint64_t> number, std::int32_t lowest, bool subtract) {
    if (number.empty()) return;
    Cover(lowest, lowest + static_cast<std::int32_t>(number.size()));
    const std::span<std::uint64_t> words = Words();
    const std::uint64_t flip = subtract ? ~std::uint64_t{0} : 0;
    const std::uint64_t sign = SignOf(words);
    const std::uint64_t otherSign = SignOf(number) ^ flip;
    std::uint64_t carry = subtract ? 1 : 0;
    auto at = static_cast<std::size_t>(lowest - fLowest);
    for (std::size_t from = 0; from < number.size(); ++from, ++at) {
        const TwoWords sum = TwoWords{words[at]} + (number[from] ^ flip) + carry;
        words[at] = static_cast<std::uint64_t>(sum);
        carry = static_cast<std::uint64_t>(sum >> kWordBits);
    }
    // What stands above the number's words is its sign: all zeros or all ones.
    for (; at < words.size() && carry != (otherSign & 1); ++at) {
        const TwoWords sum = TwoWords{words[at]} + otherSign + carry;
        words[at] = static_cast<std::uint64_t>(sum);
        carry = static_cast<std::uint64_t>(sum >> kWordBits);
    }
    // Two numbers of one sign whose sum has another have outgrown the words.
    if (sign == otherSign && SignOf(words) != sign) PushTop(sign);
}

FSExactSum& FSExactSum::operator+=(const FSExactSum& other) {
    fbNotANumber = fbNotANumber || other.fbNotANumber;
    if (this == &other) return *this += FSExactSum(other);
    AddAt(other.Words(), other.fLowest, false);
    return *this;
}

FSExactSum& FSExactSum::operator-=(const FSExactSum& other) {
    fbNotANumber = fbNotANumber || other.fbNotANumber;
    if (this == &other) return *this -= FSExactSum(other);
    AddAt(other.Words(), other.fLowest, true);
    return *this;
}

FSExactSum operator*(const FSExactSum& a, const FSExactSum& b) {
    FSExactSum product;
    product.fbNotANumber = a.fbNotANumber || b.fbNotANumber;
    std::int32_t lowestA = 0;
    std::int32_t lowestB = 0;
    bool negativeA = false;
    bool negativeB = false;
    const auto first = Magnitude(a.CanonicalWords(lowestA), negativeA);
    const auto second = Magnitude(b.CanonicalWords(lowestB), negativeB);
    if (first.empty() || second.empty()) return product;
    std::vector<std::uint64_t> words(first.size() + second.size() + 1);
    for (std::size_t i = 0; i < first.size(); ++i) {
        std::uint64_t carry = 0;
        for (std::size_t j = 0; j < second.size(); ++j) {
            const TwoWords sum = TwoWords{first[i]} * second[j] + words[i + j] + carry;
            words[i + j] = static_cast<std::uint64_t>(sum);
            carry = static_cast<std::uint64_t>(sum >> kWordBits);
        }
        words[i + second.size()] = carry;
    }
    product.AddAt(words, lowestA + lowestB, negativeA != negativeB);
    return product;
}

bool operator==(const FSExactSum& a, const FSExactSum& b) {
    std::int32_t lowestA = 0;
    std::int32_t lowestB = 0;
    const auto first = a.CanonicalWords(lowestA);
    const auto second = b.CanonicalWords(lowestB);
    return a.IsNumber() && b.IsNumber() && lowestA == lowestB &&
           std::equal(first.begin(), first.end(), second.begin(), second.end());
}

std::span<const std::uint64_t> FSExactSum::CanonicalWords(std::int32_t& lowest) const {
    std::span<const std::uint64_t> words = Words();
    lowest = fLowest;
    while (words.size() > 1) {
        const std::uint64_t sign = SignOf(words.first(words.size() - 1));
        if (words.back() != sign) break;
        words = words.first(words.size() - 1);
    }
    while (!words.empty() && words.front() == 0) {
        words = words.subspan(1);
        ++lowest;
    }
    if (words.empty()) lowest = 0;
    return words;
}

int FSExactSum::Sign() const {
    const std::span<const std::uint64_t> words = Words();
    if (fbNotANumber) return 0;
    if (SignOf(words) != 0) return -1;
    return std::any_of(words.begin(), words.end(), [](std::uint64_t word) { return word != 0; });
}

double FSExactSum::Value() const {
    if (fbNotANumber) return std::numeric_limits<double>::quiet_NaN();
    std::int32_t lowest = 0;
    bool negative = false;
    const auto words = Magnitude(CanonicalWords(lowest), negative);
    if (words.empty()) return 0.0;
    constexpr std::int64_t kDigits = 53;
    constexpr std::int64_t kLowestPlace = -1074;  // of a double's last bit
    const std::int64_t base = std::int64_t{lowest} * kWordBits;
    const std::int64_t last =
        std::max(HighestBit(words) + base - (kDigits - 1), kLowestPlace) - base;
    std::uint64_t mantissa = BitsAt(words, last, static_cast<int>(kDigits));
    const bool half = BitsAt(words, last - 1, 1) != 0;
    if (half && ((mantissa & 1) != 0 || AnyBitBelow(words, last - 1))) ++mantissa;
    constexpr std::int64_t kBeyond = 2000;
    double value =
        std::ldexp(static_cast<double>(mantissa), static_cast<int>(std::min(last + base, kBeyond)));
    value = std::min(value, std::numeric_limits<double>::max());
    return negative ? -value : value;
}

FSScaled FSExactSum::Scaled() const {
    if (fbNotANumber) return FSScaled(std::numeric_limits<double>::quiet_NaN());
    std::int32_t lowest = 0;
    bool negative = false;
    const auto words = Magnitude(CanonicalWords(lowest), negative);
    if (words.empty()) return {};
    // Two pieces of 53 bits each, and a bit for the rest so that it rounds to the right side.
    constexpr int kDigits = 53;
    const std::int64_t first = HighestBit(words) - (kDigits - 1);
    const std::int64_t second = first - kDigits;
    const auto high = static_cast<double>(BitsAt(words, first, kDigits));
    const auto low = static_cast<double>(BitsAt(words, second, kDigits));
    const FSDoubleDouble sum = FSDoubleDouble::ExactSum(high, std::ldexp(low, -kDigits));
    return FSScaled(negative ? -sum : sum, first + std::int64_t{lowest} * kWordBits);
}

void FSExactSum::AppendTo(std::string& bytes) const {
    std::int32_t lowest = 0;
    const auto words = CanonicalWords(lowest);
    if (fbNotANumber) {
        FSExactBytes::Append(bytes, kNotANumber);
        FSExactBytes::Append(bytes, std::int16_t{0});
        return;
    }
    FSExactBytes::Append(bytes, static_cast<std::uint16_t>(words.size()));
    FSExactBytes::Append(bytes, static_cast<std::int16_t>(lowest));
    for (const std::uint64_t word : words) FSExactBytes::Append(bytes, word);
}

std::optional<FSExactSum> FSExactSum::TakeFrom(std::string_view& bytes) {
    std::string_view rest = bytes;
    std::uint16_t count = 0;
    std::int16_t lowest = 0;
    if (!FSExactBytes::Take(rest, count) || !FSExactBytes::Take(rest, lowest)) return std::nullopt;
    FSExactSum sum;
    if (count == kNotANumber) {
        sum.fbNotANumber = true;
    } else {
        if (rest.size() < count * sizeof(std::uint64_t)) return std::nullopt;
        std::vector<std::uint64_t> words(count);
        for (std::uint64_t& word : words) static_cast<void>(FSExactBytes::Take(rest, word));
        sum.AddAt(words, lowest, false);
        std::int32_t canonical = 0;
        if (sum.CanonicalWords(canonical).size() != count || canonical != lowest) {
            return std::nullopt;
        }
    }
    bytes = rest;
    return sum;
}

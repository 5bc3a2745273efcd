#include "embedded/data/ArrowColumn.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace embedded {
namespace {

[[noreturn]] void Malformed(const char* what) {
    throw std::invalid_argument(std::string("an Arrow array is malformed: ") + what);
}

// A value at a physical index of a buffer, which need not be aligned.
template <class Value>
Value At(const void* buffer, std::int64_t index) {
    Value value;
    std::memcpy(&value,
                static_cast<const char*>(buffer) + index * static_cast<std::int64_t>(sizeof value),
                sizeof value);
    return value;
}

bool Bit(const void* buffer, std::int64_t index) {
    return ((static_cast<const unsigned char*>(buffer)[index / 8] >> (index % 8)) & 1) != 0;
}

// ---- numbers ----

struct NumberType;
using NumberReader = double (*)(const ArrowArray&, std::int64_t index, const NumberType&);

struct NumberType {
    NumberReader fRead = nullptr;
    ColumnKind fKind = ColumnKind::kNumber;
    double fPerUnit = 1;          // elements in one day or second
    bool fbFloor = false;         // a part of a day does not count
    bool fbMayBeInexact = false;  // integers that doubles do not hold
    std::int32_t fBytes = 0;      // of a decimal
    std::int32_t fScale = 0;      // of a decimal
};

template <class Value>
double ReadPlain(const ArrowArray& array, std::int64_t index, const NumberType&) {
    return static_cast<double>(At<Value>(array.buffers[1], index));
}

double ReadBit(const ArrowArray& array, std::int64_t index, const NumberType&) {
    return Bit(array.buffers[1], index) ? 1 : 0;
}

template <class Value>
double ReadUnits(const ArrowArray& array, std::int64_t index, const NumberType& type) {
    const double value = static_cast<double>(At<Value>(array.buffers[1], index)) / type.fPerUnit;
    return type.fbFloor ? std::floor(value) : value;
}

// IEEE 754 binary16.
double ReadHalf(const ArrowArray& array, std::int64_t index, const NumberType&) {
    const auto bits = At<std::uint16_t>(array.buffers[1], index);
    const int exponent = (bits >> 10) & 0x1F;
    const int fraction = bits & 0x3FF;
    double value = 0;
    if (exponent == 0x1F) {
        value = fraction == 0 ? std::numeric_limits<double>::infinity()
                              : std::numeric_limits<double>::quiet_NaN();
    } else if (exponent == 0) {
        value = std::ldexp(fraction, -24);
    } else {
        value = std::ldexp(1024 + fraction, exponent - 25);
    }
    return (bits & 0x8000) != 0 ? -value : value;
}

// A little-endian two's complement integer of 4 to 32 bytes, times 10^-scale: written out in
// decimal digits and read again, which rounds once.
double ReadDecimal(const ArrowArray& array, std::int64_t index, const NumberType& type) {
    std::array<unsigned char, 32> bytes{};
    const auto width = static_cast<std::size_t>(type.fBytes);
    std::memcpy(bytes.data(),
                static_cast<const char*>(array.buffers[1]) + index * std::int64_t{type.fBytes},
                width);
    const bool negative = (bytes[width - 1] & 0x80) != 0;
    std::array<std::uint32_t, 8> limbs{};
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const unsigned char byte = at < width ? bytes[at] : (negative ? 0xFF : 0x00);
        limbs[at / 4] |= static_cast<std::uint32_t>(byte) << (8 * (at % 4));
    }
    if (negative) {
        std::uint64_t carry = 1;
        for (std::uint32_t& limb : limbs) {
            carry += static_cast<std::uint32_t>(~limb);
            limb = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
    }
    constexpr std::uint64_t kBillion = 1000000000;
    std::string digits;  // least significant first
    while (std::any_of(limbs.begin(), limbs.end(), [](std::uint32_t limb) { return limb != 0; })) {
        std::uint64_t rest = 0;
        for (std::size_t at = limbs.size(); at-- > 0;) {
            rest = rest << 32 | limbs[at];
            limbs[at] = static_cast<std::uint32_t>(rest / kBillion);
            rest %= kBillion;
        }
        for (int digit = 0; digit < 9; ++digit) {
            digits.push_back(static_cast<char>('0' + rest % 10));
            rest /= 10;
        }
    }
    if (digits.empty()) {
        return 0;
    }
    std::reverse(digits.begin(), digits.end());
    digits += "e" + std::to_string(-type.fScale);
    double value = 0;
    fast_float::from_chars(digits.data(), digits.data() + digits.size(), value);
    return negative ? -value : value;
}

std::optional<double> UnitsPerSecond(char unit) {
    switch (unit) {
        case 's':
            return 1;
        case 'm':
            return 1e3;
        case 'u':
            return 1e6;
        case 'n':
            return 1e9;
        default:
            return std::nullopt;
    }
}

std::optional<NumberType> DecimalType(std::string_view format) {
    std::array<std::int32_t, 3> parts = {0, 0, 128};  // precision, scale, bits
    const char* at = format.data() + 2;
    const char* const end = format.data() + format.size();
    for (std::int32_t& part : parts) {
        const auto result = std::from_chars(at, end, part);
        if (result.ec != std::errc()) {
            return std::nullopt;
        }
        at = result.ptr;
        if (at == end) {
            break;
        }
        ++at;
    }
    const std::int32_t bits = parts[2];
    if (bits != 32 && bits != 64 && bits != 128 && bits != 256) {
        return std::nullopt;
    }
    NumberType type{ReadDecimal};
    type.fBytes = bits / 8;
    type.fScale = parts[1];
    type.fbMayBeInexact = type.fScale <= 0;
    return type;
}

std::optional<NumberType> TemporalType(std::string_view format) {
    const auto units = [](NumberReader read, ColumnKind kind, double perUnit) {
        NumberType type{read, kind};
        type.fPerUnit = perUnit;
        return type;
    };
    if (format == "tdD") {
        return units(ReadUnits<std::int32_t>, ColumnKind::kDate, 1);
    }
    if (format == "tdm") {
        NumberType type = units(ReadUnits<std::int64_t>, ColumnKind::kDate, 86400e3);
        type.fbFloor = true;
        return type;
    }
    const auto perSecond = format.size() < 3 ? std::nullopt : UnitsPerSecond(format[2]);
    if (!perSecond) {
        return std::nullopt;
    }
    switch (format[1]) {
        case 't':
            return units(*perSecond < 1e6 ? ReadUnits<std::int32_t> : ReadUnits<std::int64_t>,
                         ColumnKind::kTime, *perSecond);
        case 's':
            return units(ReadUnits<std::int64_t>, ColumnKind::kDateTime, *perSecond);
        case 'D':  // a span of time, in seconds
            return units(ReadUnits<std::int64_t>, ColumnKind::kNumber, *perSecond);
        default:
            return std::nullopt;
    }
}

std::optional<NumberType> NumberTypeOf(std::string_view format) {
    if (format.size() == 1) {
        NumberType type;
        switch (format[0]) {
            case 'b':
                return NumberType{ReadBit, ColumnKind::kBoolean};
            case 'c':
                return NumberType{ReadPlain<std::int8_t>};
            case 'C':
                return NumberType{ReadPlain<std::uint8_t>};
            case 's':
                return NumberType{ReadPlain<std::int16_t>};
            case 'S':
                return NumberType{ReadPlain<std::uint16_t>};
            case 'i':
                return NumberType{ReadPlain<std::int32_t>};
            case 'I':
                return NumberType{ReadPlain<std::uint32_t>};
            case 'l':
                type.fRead = ReadPlain<std::int64_t>;
                type.fbMayBeInexact = true;
                return type;
            case 'L':
                type.fRead = ReadPlain<std::uint64_t>;
                type.fbMayBeInexact = true;
                return type;
            case 'e':
                return NumberType{ReadHalf};
            case 'f':
                return NumberType{ReadPlain<float>};
            case 'g':
                return NumberType{ReadPlain<double>};
            default:
                return std::nullopt;
        }
    }
    if (format.substr(0, 2) == "d:") {
        return DecimalType(format);
    }
    return format.substr(0, 1) == "t" ? TemporalType(format) : std::nullopt;
}

// ---- texts ----

using TextReader = std::string_view (*)(const ArrowArray&, std::int64_t index, std::int64_t width);

struct TextType {
    TextReader fRead = nullptr;
    std::int64_t fWidth = 0;    // bytes of each element, of a fixed-size type
    std::int64_t fBuffers = 3;  // at least
};

template <class Offset>
std::string_view ReadOffsets(const ArrowArray& array, std::int64_t index, std::int64_t) {
    const auto begin = At<Offset>(array.buffers[1], index);
    const auto end = At<Offset>(array.buffers[1], index + 1);
    if (begin < 0 || end < begin) {
        Malformed("offsets of texts do not ascend");
    }
    return {static_cast<const char*>(array.buffers[2]) + begin,
            static_cast<std::size_t>(end - begin)};
}

// A view of 16 bytes: length and, up to 12 bytes, the text itself; else 4 of its bytes, the number
// of the data buffer and the place in it.
std::string_view ReadView(const ArrowArray& array, std::int64_t index, std::int64_t) {
    const char* view = static_cast<const char*>(array.buffers[1]) + 16 * index;
    const auto length = At<std::int32_t>(view, 0);
    if (length < 0) {
        Malformed("a text has a negative length");
    }
    if (length <= 12) {
        return {view + 4, static_cast<std::size_t>(length)};
    }
    const auto buffer = At<std::int32_t>(view, 2);
    const auto offset = At<std::int32_t>(view, 3);
    // The last buffer holds the lengths of the data buffers.
    if (buffer < 0 || buffer + 3 >= array.n_buffers || offset < 0) {
        Malformed("a text lies outside the buffers");
    }
    return {static_cast<const char*>(array.buffers[buffer + 2]) + offset,
            static_cast<std::size_t>(length)};
}

std::string_view ReadFixed(const ArrowArray& array, std::int64_t index, std::int64_t width) {
    return {static_cast<const char*>(array.buffers[1]) + index * width,
            static_cast<std::size_t>(width)};
}

std::optional<TextType> TextTypeOf(std::string_view format) {
    if (format == "u" || format == "z") {
        return TextType{ReadOffsets<std::int32_t>};
    }
    if (format == "U" || format == "Z") {
        return TextType{ReadOffsets<std::int64_t>};
    }
    if (format == "vu" || format == "vz") {
        return TextType{ReadView};
    }
    if (format.substr(0, 2) == "w:") {
        std::int64_t width = 0;
        const char* const end = format.data() + format.size();
        const auto result = std::from_chars(format.data() + 2, end, width);
        if (result.ptr == end && result.ec == std::errc() && width >= 0) {
            return TextType{ReadFixed, width, 2};
        }
    }
    return std::nullopt;
}

// ---- keys of dictionaries ----

using KeyReader = std::int64_t (*)(const ArrowArray&, std::int64_t index);

template <class Key>
std::int64_t ReadKey(const ArrowArray& array, std::int64_t index) {
    return static_cast<std::int64_t>(At<Key>(array.buffers[1], index));
}

KeyReader KeyReaderOf(std::string_view format) {
    if (format.size() != 1) {
        return nullptr;
    }
    switch (format[0]) {
        case 'c':
            return ReadKey<std::int8_t>;
        case 'C':
            return ReadKey<std::uint8_t>;
        case 's':
            return ReadKey<std::int16_t>;
        case 'S':
            return ReadKey<std::uint16_t>;
        case 'i':
            return ReadKey<std::int32_t>;
        case 'I':
            return ReadKey<std::uint32_t>;
        case 'l':
            return ReadKey<std::int64_t>;
        case 'L':
            return ReadKey<std::uint64_t>;
        default:
            return nullptr;
    }
}

// ---- columns ----

// Physical indices of an array's elements that hold a value.
class Elements {
 public:
    Elements(const ArrowArray& array, std::int64_t buffers) : fArray(array) {
        if (array.n_buffers < buffers || array.buffers == nullptr || array.offset < 0) {
            Malformed("buffers are missing");
        }
        if (array.length > 0) {
            // Only the validity may be absent, and the bytes of texts that are all empty.
            if (array.buffers[1] == nullptr) {
                Malformed("the buffer of values is missing");
            }
        }
        fpValidity = array.null_count == 0 ? nullptr : array.buffers[0];
    }
    std::int64_t Physical(std::int64_t element) const { return fArray.offset + element; }
    bool IsValid(std::int64_t physical) const {
        return fpValidity == nullptr || Bit(fpValidity, physical);
    }

 private:
    const ArrowArray& fArray;
    const void* fpValidity;
};

void RequireElements(const ArrowArray& array, std::int64_t first, std::int64_t length) {
    if (first < 0 || length < 0 || array.length < first + length) {
        Malformed("it is shorter than its batch");
    }
}

class NullColumn : public ArrowColumn {
 public:
    void Append(const ArrowArray& array, std::int64_t first, std::int64_t length,
                const std::function<bool(std::int64_t)>& /*isRow*/) override {
        RequireElements(array, first, length);
        for (std::int64_t row = 0; row < length; ++row) {
            fNumbers.AppendMissing();
        }
    }
    ReadColumn Finish(std::shared_ptr<ColumnMemory> memory) && override {
        return {std::move(fNumbers).Finish(std::move(memory)), ColumnKind::kNumber, 0};
    }

 private:
    NumericColumnBuilder fNumbers;
};

class NumberColumn : public ArrowColumn {
 public:
    NumberColumn(const NumberType& type, KeyReader keys) : fType(type), fKeys(keys) {}

    void Append(const ArrowArray& array, std::int64_t first, std::int64_t length,
                const std::function<bool(std::int64_t)>& isRow) override {
        RequireElements(array, first, length);
        const Elements elements(array, 2);
        std::vector<double> values;  // of the dictionary, NaN for its nulls
        if (fKeys != nullptr) {
            if (array.dictionary == nullptr) {
                Malformed("the dictionary is missing");
            }
            const Elements entries(*array.dictionary, 2);
            for (std::int64_t entry = 0; entry < array.dictionary->length; ++entry) {
                const std::int64_t physical = entries.Physical(entry);
                values.push_back(entries.IsValid(physical)
                                     ? fType.fRead(*array.dictionary, physical, fType)
                                     : std::numeric_limits<double>::quiet_NaN());
            }
        }
        for (std::int64_t element = first; element < first + length; ++element) {
            const std::int64_t physical = elements.Physical(element);
            if ((isRow && !isRow(element)) || !elements.IsValid(physical)) {
                fNumbers.AppendMissing();
            } else if (fKeys == nullptr) {
                Take(fType.fRead(array, physical, fType));
            } else {
                const std::int64_t key = fKeys(array, physical);
                if (key < 0 || key >= static_cast<std::int64_t>(values.size())) {
                    Malformed("a key lies outside the dictionary");
                }
                Take(values[static_cast<std::size_t>(key)]);
            }
        }
    }

    ReadColumn Finish(std::shared_ptr<ColumnMemory> memory) && override {
        const Oddity infinite = fNumbers.Infinite();
        ReadColumn result{std::move(fNumbers).Finish(std::move(memory)), fType.fKind};
        result.fInfinite = infinite;
        result.fInexact = fInexact;
        return result;
    }

 private:
    void Take(double value) {
        if (fType.fbMayBeInexact && std::abs(value) >= kFirstInexactInteger) {
            fInexact.Note(fNumbers.Rows());
        }
        fNumbers.Append(value);
    }

    NumberType fType;
    KeyReader fKeys;
    NumericColumnBuilder fNumbers;
    Oddity fInexact;
};

class BytesColumn : public ArrowColumn {
 public:
    BytesColumn(const TextType& type, KeyReader keys, bool ordered, const TextSet* missingTexts)
        : fType(type), fKeys(keys), fbOrdered(ordered), fTexts(missingTexts) {}

    void Append(const ArrowArray& array, std::int64_t first, std::int64_t length,
                const std::function<bool(std::int64_t)>& isRow) override {
        RequireElements(array, first, length);
        const Elements elements(array, fKeys == nullptr ? fType.fBuffers : 2);
        std::vector<StringColumnBuilder::Token> tokens;  // of the dictionary
        if (fKeys != nullptr) {
            if (array.dictionary == nullptr) {
                Malformed("the dictionary is missing");
            }
            const Elements entries(*array.dictionary, fType.fBuffers);
            for (std::int64_t entry = 0; entry < array.dictionary->length; ++entry) {
                const std::int64_t physical = entries.Physical(entry);
                // Entries that no row has must not become categories: taken up when first met.
                tokens.push_back(entries.IsValid(physical) ? kNotTakenUp
                                                           : StringColumnBuilder::kMissingToken);
            }
        }
        for (std::int64_t element = first; element < first + length; ++element) {
            const std::int64_t physical = elements.Physical(element);
            if ((isRow && !isRow(element)) || !elements.IsValid(physical)) {
                fTexts.AppendMissing();
            } else if (fKeys == nullptr) {
                fTexts.Append(fType.fRead(array, physical, fType.fWidth));
            } else {
                const std::int64_t key = fKeys(array, physical);
                if (key < 0 || key >= static_cast<std::int64_t>(tokens.size())) {
                    Malformed("a key lies outside the dictionary");
                }
                StringColumnBuilder::Token& token = tokens[static_cast<std::size_t>(key)];
                if (token == kNotTakenUp) {
                    const ArrowArray& dictionary = *array.dictionary;
                    token = fTexts.Intern(
                        fType.fRead(dictionary, dictionary.offset + key, fType.fWidth));
                }
                fTexts.Append(token);
            }
        }
    }

    ReadColumn Finish(std::shared_ptr<ColumnMemory> memory) && override {
        const Oddity undecodable = fTexts.Undecodable();
        ReadColumn result{std::move(fTexts).Finish(std::move(memory)), ColumnKind::kString};
        result.fbOrdered = fbOrdered;
        result.fUndecodable = undecodable;
        return result;
    }

 private:
    static constexpr StringColumnBuilder::Token kNotTakenUp = -2;

    TextType fType;
    KeyReader fKeys;
    bool fbOrdered;
    StringColumnBuilder fTexts;
};

}  // namespace

std::unique_ptr<ArrowColumn> ArrowColumn::Make(const ArrowSchema& schema,
                                               const TextSet* missingTexts) {
    std::string_view format = schema.format;
    KeyReader keys = nullptr;
    if (schema.dictionary != nullptr) {
        keys = KeyReaderOf(format);
        if (keys == nullptr || schema.dictionary->dictionary != nullptr) {
            return nullptr;
        }
        format = schema.dictionary->format;
    }
    if (format == "n" && keys == nullptr) {
        return std::make_unique<NullColumn>();
    }
    if (const auto number = NumberTypeOf(format)) {
        return std::make_unique<NumberColumn>(*number, keys);
    }
    if (const auto text = TextTypeOf(format)) {
        const bool ordered = keys != nullptr && (schema.flags & ARROW_FLAG_DICTIONARY_ORDERED) != 0;
        return std::make_unique<BytesColumn>(*text, keys, ordered, missingTexts);
    }
    return nullptr;
}

}  // namespace embedded

#ifndef PREDSEL_FEATURESELECT_FSEXACTBYTES_H
#define PREDSEL_FEATURESELECT_FSEXACTBYTES_H

#include <bit>
#include <cstring>
#include <string>
#include <string_view>

/// Numbers in the canonical bytes of exact sums: as they stand in memory, little-endian.
namespace FSExactBytes {

static_assert(std::endian::native == std::endian::little, "the bytes are little-endian");

template <class Number>
void Append(std::string& bytes, const Number& number) {
    const std::size_t end = bytes.size();
    bytes.resize(end + sizeof number);
    std::memcpy(bytes.data() + end, &number, sizeof number);
}

/// Drops the number from the front of bytes; false, and nothing done, when they are too few.
template <class Number>
bool Take(std::string_view& bytes, Number& number) {
    if (bytes.size() < sizeof number) return false;
    std::memcpy(&number, bytes.data(), sizeof number);
    bytes.remove_prefix(sizeof number);
    return true;
}

}  // namespace FSExactBytes

#endif  // PREDSEL_FEATURESELECT_FSEXACTBYTES_H

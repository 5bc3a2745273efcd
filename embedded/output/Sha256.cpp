#include "embedded/output/Sha256.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace embedded {

namespace {

using State = std::array<std::uint32_t, 8>;

constexpr std::array<std::uint32_t, 64> kRound = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t ByteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

void AddBlock(State& state, std::string_view block) {
    std::array<std::uint32_t, 64> words{};
    for (std::size_t i = 0; i < 16; ++i)
        words[i] = ByteAt(block, 4 * i) << 24U | ByteAt(block, 4 * i + 1) << 16U |
                   ByteAt(block, 4 * i + 2) << 8U | ByteAt(block, 4 * i + 3);
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t a = words[i - 15];
        const std::uint32_t b = words[i - 2];
        words[i] = words[i - 16] + words[i - 7] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ (a >> 3U)) +
                   (std::rotr(b, 17) ^ std::rotr(b, 19) ^ (b >> 10U));
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                    ((e & f) ^ (~e & g)) + kRound[i] + words[i];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const State added = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i) state[i] += added[i];
}

/// The text with its end mark and its length in bits, a multiple of 64 bytes.
std::string Padded(std::string_view text) {
    std::string padded(text);
    padded += '\x80';
    padded.resize((padded.size() + 8 + 63) / 64 * 64, '\0');
    std::uint64_t bits = std::uint64_t{text.size()} * 8;
    for (std::size_t i = 1; i <= 8; ++i, bits >>= 8U)
        padded[padded.size() - i] = static_cast<char>(bits & 0xFFU);
    return padded;
}

std::string Base64(std::string_view bytes) {
    constexpr std::string_view kDigits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t taken = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = ByteAt(bytes, i) << 16U;
        if (taken > 1) group |= ByteAt(bytes, i + 1) << 8U;
        if (taken > 2) group |= ByteAt(bytes, i + 2);
        for (std::size_t digit = 0; digit < 4; ++digit)
            out += digit <= taken ? kDigits[group >> (18 - 6 * digit) & 0x3FU] : '=';
    }
    return out;
}

}  // namespace

std::string Sha256Base64(std::string_view text) {
    State state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                   0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    const std::string padded = Padded(text);
    for (std::size_t i = 0; i < padded.size(); i += 64)
        AddBlock(state, std::string_view(padded).substr(i, 64));
    std::string bytes;
    for (const std::uint32_t word : state)
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes += static_cast<char>(word >> static_cast<unsigned>(shift) & 0xFFU);
    return Base64(bytes);
}

}  // namespace embedded

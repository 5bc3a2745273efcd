#ifndef PREDSEL_TESTS_SUPPORT_RESTOREABUSE_H
#define PREDSEL_TESTS_SUPPORT_RESTOREABUSE_H

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iostream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What a reader of saved states must stand: every truncation, every change of one byte, and random
// damage, each ending in a refusal or in an object that can be used. A subject tells what is read:
//
//   testsupport::RestoreSubject subject{"FSAlgorithm, binary", savedBytes,
//                                       [](const std::string& bytes) { restore, use; ... }};
//   testsupport::RestoreAbuse abuse;
//   abuse.Truncate(subject);
//   abuse.ChangeEveryByte(subject);
//   abuse.Fuzz(subject, 20000, seed);
//
// fUse must catch the engine's own failure. Whatever else it throws, too much memory and too much
// time are reported as std::runtime_error with the name of the subject and the input in hex; a
// crash is the sanitizer's to report. Error and output streams are silent meanwhile.
//
// For the check of memory, a program has one source that includes
// tests/support/AllocationCounter.inc; without it memory isn't checked, and
// MemoryIsChecked() is false.

namespace testsupport {

/// Heap bytes that the program holds and has held at most; see AllocationCounter.inc.
struct HeapUse {
    std::size_t fNow = 0;
    std::size_t fMost = 0;
    bool fbCounted = false;
};
inline HeapUse gHeapUse;

inline bool MemoryIsChecked() { return gHeapUse.fbCounted; }

struct RestoreSubject {
    std::string fName;
    std::string fSaved;  // one good state
    std::function<void(const std::string& bytes)> fUse;
    bool fbText = false;  // random damage is then of characters, tags and numbers too
};

/// What is too much for an input of some bytes. A tree of an XML document takes some tens of bytes
/// for each of the text.
struct RestoreLimits {
    std::size_t fBytesPerByte = 64;
    std::size_t fBytesMore = std::size_t{4} << 20;  // streams, messages, tables of the libraries
    std::chrono::milliseconds fTime{10000};         // of one input, under sanitizers
};

/// Drops all that is written.
class SilentBuffer : public std::streambuf {
 protected:
    int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

/// Keeps a stream silent for its own lifetime.
class SilentStream {
 public:
    explicit SilentStream(std::ostream& stream) : fStream(stream), fpOld(stream.rdbuf(&fNone)) {}
    ~SilentStream() { fStream.rdbuf(fpOld); }
    SilentStream(const SilentStream&) = delete;
    SilentStream& operator=(const SilentStream&) = delete;

 private:
    SilentBuffer fNone;
    std::ostream& fStream;
    std::streambuf* fpOld;
};

class RestoreAbuse {
 public:
    explicit RestoreAbuse(RestoreLimits limits = {}) : fLimits(limits) {}

    /// Inputs tried so far.
    std::int64_t Count() const { return fCount; }

    /// The state itself, then cut at every byte.
    void Truncate(const RestoreSubject& subject) {
        const SilentStream errors(std::cerr);
        const SilentStream output(std::cout);
        for (std::size_t size = 0; size <= subject.fSaved.size(); ++size) {
            Try(subject, subject.fSaved.substr(0, size));
        }
    }

    /// Every byte in turn takes each of the 255 values that it does not have. With parts above 1,
    /// only every parts-th byte, from the byte number part on.
    void ChangeEveryByte(const RestoreSubject& subject, std::size_t part = 0,
                         std::size_t parts = 1) {
        const SilentStream errors(std::cerr);
        const SilentStream output(std::cout);
        std::string bytes = subject.fSaved;
        for (std::size_t at = part; at < bytes.size(); at += parts) {
            const char good = bytes[at];
            for (int change = 1; change < 256; ++change) {
                bytes[at] = static_cast<char>(static_cast<unsigned char>(good) ^ change);
                Try(subject, bytes);
            }
            bytes[at] = good;
        }
    }

    /// inputs of random damage: bytes and 32-bit and 64-bit numbers replaced, by ones that matter
    /// to counts and doubles too; pieces taken out, doubled, moved and cut off; several at once.
    void Fuzz(const RestoreSubject& subject, std::int64_t inputs, std::uint64_t seed) {
        const SilentStream errors(std::cerr);
        const SilentStream output(std::cout);
        std::mt19937_64 random(seed);
        for (std::int64_t input = 0; input < inputs; ++input) {
            Try(subject, Damaged(subject, random));
        }
    }

    /// One input of Fuzz.
    static std::string Damaged(const RestoreSubject& subject, std::mt19937_64& random) {
        std::string bytes = subject.fSaved;
        const auto times = 1 + Below(random, 4) * Below(random, 3);
        for (std::size_t i = 0; i < times; ++i) DamageOnce(subject, bytes, random);
        return bytes;
    }

    void Try(const RestoreSubject& subject, const std::string& bytes) {
        ++fCount;
        const std::size_t before = gHeapUse.fNow;
        gHeapUse.fMost = before;
        const auto start = std::chrono::steady_clock::now();
        std::string failure;
        try {
            subject.fUse(bytes);
        } catch (const std::exception& exception) {
            failure = std::string("threw ") + exception.what();
        } catch (...) {
            failure = "threw";
        }
        const std::size_t most = fLimits.fBytesMore + fLimits.fBytesPerByte * bytes.size();
        if (failure.empty() && gHeapUse.fMost - before > most) {
            failure = "took " + std::to_string(gHeapUse.fMost - before) + " bytes of memory";
        }
        if (failure.empty() && std::chrono::steady_clock::now() - start > fLimits.fTime) {
            failure = "took too long";
        }
        if (!failure.empty()) {
            throw std::runtime_error(subject.fName + " " + failure + " at input " +
                                     std::to_string(fCount) + ", in hex: " + Hex(bytes));
        }
    }

 private:
    static std::size_t Below(std::mt19937_64& random, std::size_t bound) {
        return static_cast<std::size_t>(random() % bound);
    }

    template <class Number>
    static void Put(std::string& bytes, std::size_t at, Number number) {
        if (at + sizeof number <= bytes.size()) {
            std::memcpy(bytes.data() + at, &number, sizeof number);
        }
    }

    static void DamageOnce(const RestoreSubject& subject, std::string& bytes,
                           std::mt19937_64& random) {
        constexpr std::array<std::int32_t, 14> kIntegers{
            0, 1, 2, 3, 7, -1, -2, 16, 255, 256, 65536, 1 << 24, 2147483647, -2147483647 - 1};
        constexpr std::array<std::uint64_t, 9> kDoubles{
            0x0000000000000000, 0x8000000000000000, 0x3ff0000000000000,
            0x7ff0000000000000, 0xfff0000000000000, 0x7ff8000000000000,
            0x7fefffffffffffff, 0x0000000000000001, 0xffefffffffffffff};
        constexpr std::array<const char*, 12> kTexts{"<Obj name=\"",
                                                     "</Obj>",
                                                     "<Int value=\"2147483647\"/>",
                                                     "<Int value=\"-1\"/>",
                                                     "Missing",
                                                     "nan",
                                                     "-inf",
                                                     "1e308",
                                                     "&#x26;",
                                                     "<!ENTITY a \"b\">",
                                                     "<![CDATA[",
                                                     "\""};
        if (bytes.empty()) bytes.push_back('\0');
        const std::size_t at = Below(random, bytes.size());
        const std::size_t piece = 1 + Below(random, std::min<std::size_t>(bytes.size(), 64));
        switch (Below(random, subject.fbText ? 9 : 7)) {
            case 0:
                bytes[at] = static_cast<char>(random());
                break;
            case 1:
                Put(bytes, at, kIntegers[Below(random, kIntegers.size())]);
                break;
            case 2:
                Put(bytes, at, kDoubles[Below(random, kDoubles.size())]);
                break;
            case 3:
                bytes.erase(at, piece);
                break;
            case 4:
                bytes.insert(at, bytes.substr(Below(random, bytes.size()), piece));
                break;
            case 5:
                bytes.resize(at);
                break;
            case 6:
                // A small step of a number, which counts and indices take for their neighbours.
                bytes[at] = static_cast<char>(bytes[at] + (random() % 2 == 0 ? 1 : -1));
                break;
            case 7:
                bytes.insert(at, kTexts[Below(random, kTexts.size())]);
                break;
            default:
                bytes[at] = static_cast<char>('0' + Below(random, 10));
                break;
        }
    }

    static std::string Hex(const std::string& bytes) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        constexpr std::size_t kMost = 4096;
        std::string text;
        for (std::size_t at = 0; at < std::min(bytes.size(), kMost); ++at) {
            const auto byte = static_cast<unsigned char>(bytes[at]);
            text += kDigits[byte >> 4];
            text += kDigits[byte & 15];
        }
        return bytes.size() > kMost ? text + "..." : text;
    }

    RestoreLimits fLimits;
    std::int64_t fCount = 0;
};

}  // namespace testsupport

#endif  // PREDSEL_TESTS_SUPPORT_RESTOREABUSE_H

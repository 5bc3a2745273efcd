#ifndef PREDSEL_PERSISTENCE_BINARYARCHIVE_H
#define PREDSEL_PERSISTENCE_BINARYARCHIVE_H

// The binary form of saved objects: items as they stand in memory, little-endian, one behind the
// other without padding; an object is its tag, without a terminator, and its items.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "persistence/Fields.h"

namespace Persistence {

static_assert(std::endian::native == std::endian::little, "the binary form is little-endian");

/// Writes objects to a stream. Errors show in the stream's state.
class BinaryWriter : public FieldWalker<BinaryWriter, false, false> {
 public:
    explicit BinaryWriter(std::ostream& stream) : fStream(stream) {}

    /// Bytes written so far.
    std::int64_t Count() const { return fCount; }

    void Begin(const SavedClass& saved) { Write(saved.fTag.data(), saved.fTag.size()); }
    void End() {}
    template <class T>
    void Scalar(const T& value) {
        Write(&value, sizeof value);
    }
    void Text(const std::string& text) {
        Scalar(static_cast<std::int32_t>(text.size()));
        Characters(text);
    }
    /// A string whose length is saved elsewhere.
    void Characters(const std::string& text) { Write(text.data(), text.size()); }
    void Skip(std::int32_t bytes) {
        constexpr std::array<char, 16> kNothing{};
        for (; bytes > 0; bytes -= 16)
            Write(kNothing.data(), static_cast<std::size_t>(std::min(bytes, 16)));
    }

 private:
    void Write(const void* data, std::size_t size) {
        fStream.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
        fCount += static_cast<std::int64_t>(size);
    }

    std::ostream& fStream;
    std::int64_t fCount = 0;
};

/// Reads objects that may come from anywhere. A wrong tag, the end of the stream within an object
/// and a failed Require end the restore: the innermost object's line goes to the error stream and a
/// pointer to a new Exception is thrown. Memory is in proportion to the bytes that really arrived.
template <class Exception>
class BinaryReader : public FieldWalker<BinaryReader<Exception>, true, false> {
 public:
    explicit BinaryReader(std::istream& stream) : fStream(stream) {}

    /// Bytes read so far.
    std::int64_t Count() const { return fCount; }

    void Begin(const SavedClass& saved) {
        if (!TryBegin(saved))
            throw new Exception;  // NOLINT(misc-throw-by-value-catch-by-reference)
    }
    /// For an outermost object whose wrong tag is no exception: false, after its line on the error
    /// stream. After true, the items and End() are the caller's.
    bool TryBegin(const SavedClass& saved) {
        std::string tag(saved.fTag.size(), '\0');
        if (!TryRead(tag.data(), tag.size()) ||
            tag.compare(0, saved.fTagCompared, saved.fTag.substr(0, saved.fTagCompared)) != 0) {
            std::cerr << saved.FailureLine(false);
            return false;
        }
        fvpOpen.push_back(&saved);
        return true;
    }
    void End() { fvpOpen.pop_back(); }
    template <class T>
    void Scalar(T& value) {
        Read(&value, sizeof value);
    }
    void Text(std::string& text) {
        std::int32_t length = 0;
        Scalar(length);
        this->Require(length >= 0);
        Characters(text, length);
    }
    /// A string whose length is saved elsewhere. REQUIRES: length at least 0.
    void Characters(std::string& text, std::int32_t length) {
        constexpr std::size_t kPiece = 4096;
        text.clear();
        for (auto left = static_cast<std::size_t>(length); left > 0;) {
            const std::size_t size = std::min(left, kPiece);
            const std::size_t have = text.size();
            text.resize(have + size);
            Read(text.data() + have, size);
            left -= size;
        }
    }
    void Skip(std::int32_t bytes) {
        std::array<char, 16> nothing{};
        for (; bytes > 0; bytes -= 16)
            Read(nothing.data(), static_cast<std::size_t>(std::min(bytes, 16)));
    }

    [[noreturn]] void Fail() {
        // An item outside any object belongs to its caller, which has its own line.
        if (!fvpOpen.empty()) std::cerr << fvpOpen.back()->FailureLine(false);
        throw new Exception;  // NOLINT(misc-throw-by-value-catch-by-reference): the scheme's way
    }

 private:
    bool TryRead(void* data, std::size_t size) {
        fStream.read(static_cast<char*>(data), static_cast<std::streamsize>(size));
        fCount += static_cast<std::int64_t>(fStream.gcount());
        return fStream.good();
    }
    void Read(void* data, std::size_t size) { this->Require(TryRead(data, size)); }

    std::istream& fStream;
    std::int64_t fCount = 0;
    std::vector<const SavedClass*> fvpOpen;  // static objects, the innermost last
};

/// Saves an object; the number of bytes written.
template <class T>
std::int64_t SaveBinary(const T& object, std::ostream& stream) {
    BinaryWriter writer(stream);
    writer.Items(object);
    return writer.Count();
}

/// Fills an object that was made empty; the number of bytes read. Throws a pointer to an Exception.
template <class Exception, class T>
std::int64_t RestoreBinary(T& object, std::istream& stream) {
    BinaryReader<Exception> reader(stream);
    reader.Items(object);
    return reader.Count();
}

}  // namespace Persistence

#endif  // PREDSEL_PERSISTENCE_BINARYARCHIVE_H

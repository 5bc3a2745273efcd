#ifndef PREDSEL_TESTS_SUPPORT_MEMORYARCHIVE_H
#define PREDSEL_TESTS_SUPPORT_MEMORYARCHIVE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "persistence/BinaryArchive.h"
#include "persistence/Fields.h"

// Saved states in memory, for tests: as bytes, and as the list of values that a save writes.

namespace testsupport {

/// One saved value and where it stands: the name of its object and its number there, counted from
/// 0 over all that the object itself lists, vector elements included.
struct SavedValue {
    std::string fObject;
    std::int32_t fNumber = 0;
    bool fbDouble = false;
    double fValue = 0;  // holds every 32-bit integer exactly

    bool operator==(const SavedValue&) const = default;
};

class StateArchive : public Persistence::FieldWalker<StateArchive, false, false> {
 public:
    const std::vector<SavedValue>& Values() const { return fvValues; }

    void Begin(const Persistence::SavedClass& saved) {
        fvOpen.emplace_back(std::string(saved.fName), 0);
    }
    void End() { fvOpen.pop_back(); }
    void Scalar(std::int32_t value) { Push(false, value); }
    void Scalar(std::uint32_t value) { Push(false, value); }
    void Scalar(double value) { Push(true, value); }
    void Skip(std::int32_t) {}

 private:
    void Push(bool isDouble, double value) {
        auto& [name, number] = fvOpen.back();
        fvValues.push_back({name, number++, isDouble, value});
    }

    std::vector<std::pair<std::string, std::int32_t>> fvOpen;
    std::vector<SavedValue> fvValues;
};

template <class T>
std::vector<std::byte> Save(const T& object) {
    std::ostringstream stream;
    Persistence::SaveBinary(object, stream);
    const std::string text = stream.str();
    std::vector<std::byte> bytes(text.size());
    std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

/// Fills an object that was made empty. Throws std::runtime_error when the object cannot be
/// restored and when the bytes do not end with it.
template <class T>
void RestoreInto(T& object, const std::vector<std::byte>& bytes) {
    struct Failure {};
    const std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::istringstream stream(text);
    try {
        Persistence::RestoreBinary<Failure>(object, stream);
    } catch (const Failure* failure) {
        delete failure;
        throw std::runtime_error("not restored");
    }
    if (stream.peek() != std::istringstream::traits_type::eof()) {
        throw std::runtime_error("bytes left over");
    }
}

template <class T>
std::vector<SavedValue> StateOf(const T& object) {
    StateArchive archive;
    T::Fields(object, archive);
    return archive.Values();
}

}  // namespace testsupport

#endif  // PREDSEL_TESTS_SUPPORT_MEMORYARCHIVE_H

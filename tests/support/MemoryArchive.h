#ifndef PREDSEL_TESTS_SUPPORT_MEMORYARCHIVE_H
#define PREDSEL_TESTS_SUPPORT_MEMORYARCHIVE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "featureselect/FSFields.h"

// Archives over a byte vector for tests of field lists: SaveArchive, RestoreArchive, and
// StateArchive, which lists the values that a save would write. The bytes are those of the binary
// form: little-endian, no padding between items.

namespace testsupport {

template <class T, class Archive>
concept HasFields =
    requires(T& item, Archive& archive) { std::remove_cvref_t<T>::Fields(item, archive); };

/// Walks field lists and vectors; Derived says what becomes of tags, scalars and padding.
template <class Derived, bool Restoring>
class FieldWalker {
 public:
    static constexpr bool kRestores = Restoring;

    template <class... Fields>
    void operator()(std::string_view tag, std::string_view name, Fields&&... fields) {
        Self().Begin(tag, name);
        Items(std::forward<Fields>(fields)...);
        Self().End();
    }

    template <class... Fields>
    void Items(Fields&&... fields) {
        (Item(fields), ...);
    }

 private:
    Derived& Self() { return static_cast<Derived&>(*this); }

    template <class T>
    void Item(T& item) {
        using Plain = std::remove_cvref_t<T>;
        if constexpr (std::is_same_v<Plain, std::int32_t> || std::is_same_v<Plain, double>) {
            Self().Scalar(item);
        } else if constexpr (std::is_same_v<Plain, bool>) {
            std::int32_t number = item ? 1 : 0;
            Self().Scalar(number);
            if constexpr (Restoring) item = number == 1;
        } else if constexpr (std::is_same_v<Plain, FSPadding>) {
            Self().Padding(item.fBytes);
        } else if constexpr (requires { item.fvElements; }) {
            Elements(item.fCount, item.fvElements);
        } else {
            static_assert(HasFields<Plain, Derived>, "no field list for this item");
            Plain::Fields(item, Self());
        }
    }

    template <class T>
    void Item(std::unique_ptr<T>& item) {
        if constexpr (Restoring) item = std::make_unique<T>();
        Item(*item);
    }
    template <class T>
    void Item(const std::unique_ptr<T>& item) {
        const T& object = *item;
        Item(object);
    }

    template <class T>
    void Item(std::vector<T>& items) {
        auto count = static_cast<std::int32_t>(items.size());
        Self().Scalar(count);
        Elements(count, items);
    }
    template <class T>
    void Item(const std::vector<T>& items) {
        const auto count = static_cast<std::int32_t>(items.size());
        Self().Scalar(count);
        Elements(count, items);
    }

    template <class Vector>
    void Elements(std::int32_t count, Vector& items) {
        using Element = typename std::remove_const_t<Vector>::value_type;
        if constexpr (Restoring) {
            items.clear();
            for (std::int32_t i = 0; i < count; ++i) {
                Element element{};
                Item(element);
                items.push_back(std::move(element));
            }
        } else {
            if (items.size() != static_cast<std::size_t>(count)) {
                throw std::logic_error("a count differs from the size of its vector");
            }
            for (std::size_t i = 0; i < items.size(); ++i) {
                if constexpr (std::is_same_v<Element, bool>) {
                    const bool bit = items[i];
                    Item(bit);
                } else {
                    Item(items[i]);
                }
            }
        }
    }
};

class SaveArchive : public FieldWalker<SaveArchive, false> {
 public:
    const std::vector<std::byte>& Bytes() const { return fvBytes; }

    void Begin(std::string_view tag, std::string_view) { Append(tag.data(), tag.size()); }
    void End() {}
    template <class T>
    void Scalar(const T& value) {
        Append(&value, sizeof value);
    }
    void Padding(std::int32_t bytes) {
        fvBytes.resize(fvBytes.size() + static_cast<std::size_t>(bytes), std::byte{0});
    }

 private:
    void Append(const void* data, std::size_t size) {
        const auto* bytes = static_cast<const std::byte*>(data);
        fvBytes.insert(fvBytes.end(), bytes, bytes + size);
    }

    std::vector<std::byte> fvBytes;
};

/// Throws std::runtime_error on a wrong tag and on the end of the bytes.
class RestoreArchive : public FieldWalker<RestoreArchive, true> {
 public:
    explicit RestoreArchive(std::vector<std::byte> bytes) : fvBytes(std::move(bytes)) {}

    bool IsAtEnd() const { return fPosition == fvBytes.size(); }

    void Begin(std::string_view tag, std::string_view name) {
        std::string found(tag.size(), '\0');
        Take(found.data(), found.size());
        if (found != tag) throw std::runtime_error("wrong tag for " + std::string(name));
    }
    void End() {}
    template <class T>
    void Scalar(T& value) {
        Take(&value, sizeof value);
    }
    void Padding(std::int32_t bytes) {
        std::vector<std::byte> skipped(static_cast<std::size_t>(bytes));
        Take(skipped.data(), skipped.size());
    }

 private:
    void Take(void* data, std::size_t size) {
        if (size > fvBytes.size() - fPosition) throw std::runtime_error("out of bytes");
        std::memcpy(data, fvBytes.data() + fPosition, size);
        fPosition += size;
    }

    std::vector<std::byte> fvBytes;
    std::size_t fPosition = 0;
};

/// One saved value and where it stands: the name of its object and its number there, counted from
/// 0 over all that the object itself lists, vector elements included.
struct SavedValue {
    std::string fObject;
    std::int32_t fNumber = 0;
    bool fbDouble = false;
    double fValue = 0;  // holds every 32-bit integer exactly

    bool operator==(const SavedValue&) const = default;
};

class StateArchive : public FieldWalker<StateArchive, false> {
 public:
    const std::vector<SavedValue>& Values() const { return fvValues; }

    void Begin(std::string_view, std::string_view name) {
        fvOpen.emplace_back(std::string(name), 0);
    }
    void End() { fvOpen.pop_back(); }
    void Scalar(std::int32_t value) { Push(false, value); }
    void Scalar(double value) { Push(true, value); }
    void Padding(std::int32_t) {}

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
    SaveArchive archive;
    T::Fields(object, archive);
    return archive.Bytes();
}

/// Fills an object that was made empty. The bytes must end with it.
template <class T>
void RestoreInto(T& object, const std::vector<std::byte>& bytes) {
    RestoreArchive archive(bytes);
    T::Fields(object, archive);
    if (!archive.IsAtEnd()) throw std::runtime_error("bytes left over");
}

template <class T>
std::vector<SavedValue> StateOf(const T& object) {
    StateArchive archive;
    T::Fields(object, archive);
    return archive.Values();
}

}  // namespace testsupport

#endif  // PREDSEL_TESTS_SUPPORT_MEMORYARCHIVE_H

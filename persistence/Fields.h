#ifndef PREDSEL_PERSISTENCE_FIELDS_H
#define PREDSEL_PERSISTENCE_FIELDS_H

// How a class lists what is saved of it. One list serves saving and restoring in every form, so
// that they cannot drift apart:
//
//   template <class Self, class Archive>
//   static void Fields(Self&& self, Archive& archive) {
//       archive(kSaved, self.fCriterion, self.fTieBreak1, ...);
//   }
//
// archive(saved, items...) is an object: its tag in binary, its name in XML, then the items in the
// saved order. archive.Items(items...) is a part without tag and name. Self is const when saving.
//
// An item is a std::int32_t, a std::uint32_t, a bool (saved as 1 or 0, and only 1 reads back as
// true), a double, a std::string (a 32-bit length and the bytes), an object or part with such a
// Fields function of its own, a std::vector of these or of std::unique_ptr to them (a 32-bit count,
// then the elements), or one of the wrappers below.
//
// What an archive tells at compile time: kRestores, and kXML. When restoring,
// archive.Require(condition) fails the restore of the object at hand when the condition is false.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace Persistence {

/// How a class names itself in its saved forms, and the line on the error stream when it cannot be
/// restored. An empty line stands for "Error reading NAME!" and a line end.
struct SavedClass {
    std::string_view fTag;  // in binary
    std::string_view fName;
    std::string_view fBinaryFailure = {};
    std::string_view fXMLFailure = {};
    std::size_t fTagCompared = std::string_view::npos;  // so many characters of the tag must match
    std::int32_t fMinLevel = 0;                         // XML is indented at least so deep
    bool fbXMLFailureOnOutput = false;                  // fXMLFailure goes to standard output

    std::string FailureLine(bool xml) const {
        const std::string_view line = xml ? fXMLFailure : fBinaryFailure;
        if (!line.empty()) return std::string(line);
        return "Error reading " + std::string(fName) + "!\n";
    }
};

/// The elements of a vector whose count is saved elsewhere: earlier in the list, or nowhere.
template <class Vector>
struct Elements {
    const std::int32_t& fCount;  // read when the elements are, so it may be restored just before
    Vector& fvElements;
};
template <class Vector>
Elements(const std::int32_t&, Vector&) -> Elements<Vector>;

/// Bytes of the binary form that hold nothing: written as 0, skipped when read, absent in XML.
struct Padding {
    std::int32_t fBytes;
};

/// What must be true of the items before it; a restore fails when it is not. Use it where the
/// object would not be safe to use otherwise.
template <class Condition>
struct Check {
    Condition fHolds;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        if constexpr (std::remove_cvref_t<Archive>::kRestores) archive.Require(self.fHolds());
    }
};
template <class Condition>
Check(Condition) -> Check<Condition>;

template <class T, class Archive>
concept HasFields =
    requires(T& item, Archive& archive) { std::remove_cvref_t<T>::Fields(item, archive); };

/// Walks field lists. Derived says what becomes of the pieces: Begin(saved) and End() of an object,
/// Scalar, Text and Skip of what it holds; and, when it restores, Fail().
template <class Derived, bool Restoring, bool XML>
class FieldWalker {
 public:
    static constexpr bool kRestores = Restoring;
    static constexpr bool kXML = XML;

    template <class... Fields>
    void operator()(const SavedClass& saved, Fields&&... fields) {
        Self().Begin(saved);
        Items(std::forward<Fields>(fields)...);
        Self().End();
    }

    template <class... Fields>
    void Items(Fields&&... fields) {
        (Item(fields), ...);
    }

    void Require(bool condition)
        requires Restoring
    {
        if (!condition) Self().Fail();
    }

 private:
    Derived& Self() { return static_cast<Derived&>(*this); }

    template <class T>
    void Item(T& item) {
        using Plain = std::remove_cvref_t<T>;
        if constexpr (std::is_same_v<Plain, std::int32_t> || std::is_same_v<Plain, std::uint32_t> ||
                      std::is_same_v<Plain, double>) {
            Self().Scalar(item);
        } else if constexpr (std::is_same_v<Plain, bool>) {
            std::int32_t number = item ? 1 : 0;
            Self().Scalar(number);
            if constexpr (Restoring) item = number == 1;
        } else if constexpr (std::is_same_v<Plain, std::string>) {
            Self().Text(item);
        } else if constexpr (std::is_same_v<Plain, Padding>) {
            Self().Skip(item.fBytes);
        } else if constexpr (requires { item.fvElements; }) {
            ItemElements(item.fCount, item.fvElements);
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
        ItemElements(count, items);
    }
    template <class T>
    void Item(const std::vector<T>& items) {
        const auto count = static_cast<std::int32_t>(items.size());
        Self().Scalar(count);
        ItemElements(count, items);
    }

    template <class Vector>
    void ItemElements(std::int32_t count, Vector& items) {
        using Element = typename std::remove_const_t<Vector>::value_type;
        if constexpr (Restoring) {
            Require(count >= 0);
            items.clear();
            // Grows with what has been read: the count may be anything.
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

}  // namespace Persistence

#endif  // PREDSEL_PERSISTENCE_FIELDS_H

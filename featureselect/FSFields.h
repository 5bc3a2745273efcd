#ifndef PREDSEL_FEATURESELECT_FSFIELDS_H
#define PREDSEL_FEATURESELECT_FSFIELDS_H

#include <cstdint>

// How a class lists what is saved of it. One list serves saving and restoring in every form, so
// that they cannot drift apart:
//
//   template <class Self, class Archive>
//   static void Fields(Self&& self, Archive& archive) {
//       archive("FSPRS", "FSPredSort", self.fCriterion, self.fTieBreak1, ...);
//   }
//
// archive(tag, name, items...) is an object: its tag of 5 characters in binary, its name in XML,
// then the items in the saved order. archive.Items(items...) is a part without tag and name.
// Archive::kRestores tells the direction at compile time; self is const when saving.
//
// An item is a std::int32_t, a bool (saved as 1 or 0, and only 1 reads back as true), a double, an
// object or part with such a Fields function of its own, a std::vector of these or of
// std::unique_ptr to them (a 32-bit count, then the elements), or one of the two wrappers below.

/// The elements of a vector whose count is saved elsewhere: earlier in the list, or nowhere.
template <class Vector>
struct FSElements {
    const std::int32_t& fCount;  // read when the elements are, so it may be restored just before
    Vector& fvElements;
};
template <class Vector>
FSElements(const std::int32_t&, Vector&) -> FSElements<Vector>;

/// Bytes of the binary form that hold nothing: written as 0, skipped when read, absent in XML.
struct FSPadding {
    std::int32_t fBytes;
};

#endif  // PREDSEL_FEATURESELECT_FSFIELDS_H

#ifndef PREDSEL_PERSISTENCE_TESTS_SAMPLE_H
#define PREDSEL_PERSISTENCE_TESTS_SAMPLE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "persistence/Fields.h"

// A class that has every kind of item, for the tests of both archives.

namespace sample {

/// What a failed restore throws a pointer to.
struct Failure {};

struct Inner {
    std::int32_t fNumber = 0;

    bool operator==(const Inner&) const = default;

    static constexpr Persistence::SavedClass kSaved{"INNER", "Inner"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fNumber);
    }
};

/// Without tag and name.
struct Part {
    std::int32_t fKey = 0;
    double fWeight = 0;

    bool operator==(const Part&) const = default;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive.Items(self.fKey, Persistence::Padding{4}, self.fWeight);
    }
};

struct Outer {
    std::int32_t fInteger = -3;
    std::uint32_t fUnsigned = 0xfffffffe;
    bool fbFlag = true;
    double fDouble = 0.1;
    std::string fText = "a<b";
    Inner fInner{5};
    std::vector<Part> fvParts{{1, 0.5}, {2, 1.5}};
    std::vector<std::unique_ptr<Inner>> fvpInner;
    std::vector<bool> fvbBits{true, false};
    std::int32_t fCount = 2;
    std::vector<std::int32_t> fvCounted{7, 8};

    static Outer Empty() { return {0, 0, false, 0.0, {}, {}, {}, {}, {}, 0, {}}; }

    static constexpr Persistence::SavedClass kSaved{.fTag = "OUTER",
                                                    .fName = "Outer",
                                                    .fBinaryFailure = "No Outer!\n",
                                                    .fXMLFailure = "No Outer in XML!\n",
                                                    .fTagCompared = 4};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fInteger, self.fUnsigned, self.fbFlag, self.fDouble, self.fText,
                self.fInner, self.fvParts, self.fvpInner, self.fvbBits, self.fCount,
                Persistence::Elements{self.fCount, self.fvCounted},
                Persistence::Check{[&self] { return self.fInteger != 99; }});
    }
};

inline Outer Full() {
    Outer outer;
    outer.fvpInner.push_back(std::make_unique<Inner>(Inner{6}));
    return outer;
}

inline bool Same(const Outer& one, const Outer& other) {
    return one.fInteger == other.fInteger && one.fUnsigned == other.fUnsigned &&
           one.fbFlag == other.fbFlag && one.fDouble == other.fDouble && one.fText == other.fText &&
           one.fInner == other.fInner && one.fvParts == other.fvParts &&
           one.fvpInner.size() == other.fvpInner.size() &&
           (one.fvpInner.empty() || *one.fvpInner[0] == *other.fvpInner[0]) &&
           one.fvbBits == other.fvbBits && one.fCount == other.fCount &&
           one.fvCounted == other.fvCounted;
}

}  // namespace sample

#endif  // PREDSEL_PERSISTENCE_TESTS_SAMPLE_H

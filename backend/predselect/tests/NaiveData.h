#ifndef PREDSEL_BACKEND_TESTS_NAIVEDATA_H
#define PREDSEL_BACKEND_TESTS_NAIVEDATA_H

#include <optional>
#include <string>
#include <vector>

#include "embedded/data/DataSetBuilder.h"

/// One letter a case; a blank is missing.
inline std::vector<std::optional<std::string>> Letters(const std::string& letters) {
    std::vector<std::optional<std::string>> values;
    for (const char letter : letters) {
        values.push_back(letter == ' ' ? std::nullopt : std::optional(std::string(1, letter)));
    }
    return values;
}

/// y: two categories of ten cases. good agrees with it on 9 of each ten, fair on 8, noise on 5.
inline embedded::DataSetBuilder TwoClasses() {
    embedded::DataSetBuilder builder;
    builder.Strings("y", Letters("aaaaaaaaaabbbbbbbbbb"))
        .Strings("good", Letters("aaaaaaaaababbbbbbbbb"))
        .Strings("fair", Letters("aaaaaaaabbaabbbbbbbb"))
        .Strings("noise", Letters("abababababababababab"));
    return builder;
}

#endif  // PREDSEL_BACKEND_TESTS_NAIVEDATA_H

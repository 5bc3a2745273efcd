#ifndef PREDSEL_EMBEDDED_COMMAND_VARIABLENAMES_H
#define PREDSEL_EMBEDDED_COMMAND_VARIABLENAMES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/Data.h"

namespace embedded {

/// Finds variables by name, by the beginning of names, and by names nearly written right. Sorted
/// once, so that a list of ten thousand names is looked up in no time.
class VariableNames {
 public:
    /// Borrows the dictionary, which must not change meanwhile.
    explicit VariableNames(const KOLT_DataSource& source);

    /// The variable of exactly this name, else all that have it but for the case of ASCII letters,
    /// in the order of the file.
    std::vector<std::int32_t> Find(std::string_view name) const;
    /// The variables whose names begin so, in the order of the file: exactly, or where there is
    /// none, but for the case of ASCII letters.
    std::vector<std::int32_t> FindByStem(std::string_view stem) const;
    /// At most three names that a mistyped one may have meant, the nearest first.
    std::vector<std::string> Nearest(std::string_view name) const;

 private:
    const std::string& NameAt(std::int32_t index) const;
    /// Variables whose names, cut off at that many bytes, are equal but for case.
    std::vector<std::int32_t> Range(std::string_view upper, std::size_t length) const;

    const KOLT_DataSource& fSource;       // borrowed from the constructor's caller
    std::vector<std::int32_t> fvByUpper;  // indices by upper-case name, equal ones by index
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_VARIABLENAMES_H

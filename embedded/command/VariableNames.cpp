#include "embedded/command/VariableNames.h"

#include <algorithm>
#include <numeric>

#include "embedded/command/AsciiCase.h"
#include "embedded/command/NearestNames.h"

namespace embedded {

namespace {

bool IsLessUpper(std::string_view a, std::string_view b) {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return static_cast<unsigned char>(UpperAscii(x)) <
               static_cast<unsigned char>(UpperAscii(y));
    });
}

}  // namespace

VariableNames::VariableNames(const KOLT_DataSource& source)
    : fSource(source), fvByUpper(static_cast<std::size_t>(source.ColumnCount())) {
    std::iota(fvByUpper.begin(), fvByUpper.end(), 0);
    std::stable_sort(fvByUpper.begin(), fvByUpper.end(), [this](std::int32_t a, std::int32_t b) {
        return IsLessUpper(NameAt(a), NameAt(b));
    });
}

const std::string& VariableNames::NameAt(std::int32_t index) const {
    return fSource.GetVariable(index).GetName();
}

std::vector<std::int32_t> VariableNames::Range(std::string_view name, std::size_t length) const {
    const auto head = [this, length](std::int32_t index) {
        return std::string_view(NameAt(index)).substr(0, length);
    };
    const auto first = std::lower_bound(fvByUpper.begin(), fvByUpper.end(), name,
                                        [&head](std::int32_t index, std::string_view value) {
                                            return IsLessUpper(head(index), value);
                                        });
    const auto last = std::upper_bound(first, fvByUpper.end(), name,
                                       [&head](std::string_view value, std::int32_t index) {
                                           return IsLessUpper(value, head(index));
                                       });
    return {first, last};
}

std::vector<std::int32_t> VariableNames::Find(std::string_view name) const {
    std::vector<std::int32_t> found = Range(name, std::string_view::npos);
    const auto exact = std::find_if(found.begin(), found.end(), [this, name](std::int32_t index) {
        return NameAt(index) == name;
    });
    if (exact != found.end()) return {*exact};
    return found;
}

std::vector<std::int32_t> VariableNames::FindByStem(std::string_view stem) const {
    std::vector<std::int32_t> found = Range(stem, stem.size());
    std::sort(found.begin(), found.end());
    std::vector<std::int32_t> exact;
    std::copy_if(found.begin(), found.end(), std::back_inserter(exact),
                 [this, stem](std::int32_t index) { return NameAt(index).starts_with(stem); });
    return exact.empty() ? found : exact;
}

std::vector<std::string> VariableNames::Nearest(std::string_view name) const {
    NearestNames nearest(name);
    for (std::int32_t index = 0; index < fSource.ColumnCount(); ++index)
        nearest.Offer(NameAt(index));
    return nearest.Names();
}

}  // namespace embedded

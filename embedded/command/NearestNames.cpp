#include "embedded/command/NearestNames.h"

#include <algorithm>

#include "embedded/command/AsciiCase.h"

namespace embedded {

NearestNames::NearestNames(std::string_view word)
    : fWord(UpperAscii(word)), fMostSlips(std::clamp<std::size_t>(fWord.size() / 3, 1, 3)) {}

// Edit distance with swaps of neighbours (optimal string alignment; Damerau 1964, Wagner and
// Fischer 1974), on bytes, in a band of fMostSlips around the diagonal. Anything above fMostSlips
// comes back as fMostSlips + 1.
std::size_t NearestNames::Distance(std::string_view name) {
    const std::size_t tooFar = fMostSlips + 1;
    const std::size_t rows = fWord.size(), columns = name.size();
    if ((rows > columns ? rows - columns : columns - rows) > fMostSlips) return tooFar;
    const std::size_t width = columns + 1;
    fvRows.assign(3 * width, tooFar);
    std::size_t* before = fvRows.data();
    std::size_t* last = before + width;
    std::size_t* row = last + width;
    for (std::size_t j = 0; j <= std::min(columns, fMostSlips); ++j) last[j] = j;
    for (std::size_t i = 1; i <= rows; ++i) {
        const std::size_t from = i > fMostSlips ? i - fMostSlips : 1;
        const std::size_t to = std::min(columns, i + fMostSlips);
        row[from - 1] = from == 1 && i <= fMostSlips ? i : tooFar;
        std::size_t best = row[from - 1];
        for (std::size_t j = from; j <= to; ++j) {
            const bool same = fWord[i - 1] == UpperAscii(name[j - 1]);
            std::size_t distance = last[j - 1] + (same ? 0 : 1);
            distance = std::min({distance, last[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && fWord[i - 1] == UpperAscii(name[j - 2]) &&
                fWord[i - 2] == UpperAscii(name[j - 1]))
                distance = std::min(distance, before[j - 2] + 1);
            row[j] = std::min(distance, tooFar);
            best = std::min(best, row[j]);
        }
        if (to < columns) row[to + 1] = tooFar;  // outside the band of this row, read by the next
        if (best > fMostSlips) return tooFar;
        std::swap(before, last);
        std::swap(last, row);
    }
    return last[columns];
}

void NearestNames::Offer(std::string_view name) {
    const std::size_t distance = Distance(name);
    if (distance <= fMostSlips) {
        const auto place = std::upper_bound(
            fvNear.begin(), fvNear.end(), distance,
            [](std::size_t value, const Found& found) { return value < found.fDistance; });
        fvNear.insert(place, Found{distance, std::string(name)});
        if (fvNear.size() > kMost) fvNear.pop_back();
    } else if (fvBegun.size() < kMost && fWord.size() > 1 && name.size() > fWord.size() &&
               UpperAscii(name.substr(0, fWord.size())) == fWord) {
        fvBegun.emplace_back(name);
    }
}

std::vector<std::string> NearestNames::Names() const {
    if (fvNear.empty()) return fvBegun;
    std::vector<std::string> names;
    for (const Found& found : fvNear) names.push_back(found.fName);
    return names;
}

}  // namespace embedded

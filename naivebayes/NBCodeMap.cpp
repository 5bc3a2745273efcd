#include "naivebayes/NBCodeMap.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <numeric>
#include <string>
#include <type_traits>

#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/NBCatNumEncoder.h"
#include "naivebayes/data/NBStringEncoder.h"

namespace {

template <class Encoder>
std::vector<std::int32_t> MapByValue(Encoder& thisEncoder, const INBEncoder* otherEncoder,
                                     std::int32_t numCodes) {
    std::vector<std::int32_t> codes(static_cast<std::size_t>(numCodes), -1);
    const auto* const other = dynamic_cast<const Encoder*>(otherEncoder);
    if (other == nullptr) return codes;
    // Where user-missing values count they are categories, but to encode they are missing.
    std::map<std::decay_t<decltype(other->Decode(0))>, std::int32_t> known;
    for (std::int32_t i = 0; i < thisEncoder.GetNumCodes(); ++i) {
        known.emplace(thisEncoder.Decode(i), i);
    }
    for (std::int32_t i = 0; i < numCodes; ++i) {
        const auto at = known.find(other->Decode(i));
        codes[static_cast<std::size_t>(i)] =
            at == known.end() ? static_cast<std::int32_t>(thisEncoder.Encode(other->Decode(i)))
                              : at->second;
    }
    return codes;
}

}  // namespace

namespace NBCodeMap {

std::vector<std::int32_t> Make(INBEncoder* thisEncoder, const INBEncoder* otherEncoder,
                               std::int32_t otherRows) {
    const std::int32_t numCodes =
        std::max(otherEncoder == nullptr ? otherRows : otherEncoder->GetNumCodes(), 0);
    if (auto* const numeric = dynamic_cast<NBCatNumEncoder*>(thisEncoder)) {
        return MapByValue(*numeric, otherEncoder, numCodes);
    }
    if (auto* const text = dynamic_cast<NBStringEncoder*>(thisEncoder)) {
        return MapByValue(*text, otherEncoder, numCodes);
    }
    std::vector<std::int32_t> codes(static_cast<std::size_t>(numCodes));
    std::iota(codes.begin(), codes.end(), 0);
    return codes;
}

void CopyLabels(INBEncoder* thisEncoder, const INBEncoder* otherEncoder,
                const std::vector<std::int32_t>& codeMap) {
    if (thisEncoder == nullptr || otherEncoder == nullptr) return;
    const std::vector<std::string>* const labels = otherEncoder->GetCategoryLabels();
    if (labels == nullptr) return;
    for (std::size_t i = 0; i < std::min(labels->size(), codeMap.size()); ++i) {
        thisEncoder->SetCategoryLabel(codeMap[i], (*labels)[i]);
    }
}

std::int32_t Find(const std::vector<std::int32_t>& codeMap, std::int32_t code,
                  std::int32_t numCodes) {
    if (code < 0 || static_cast<std::size_t>(code) >= codeMap.size()) return -1;
    const std::int32_t found = codeMap[static_cast<std::size_t>(code)];
    return found < numCodes ? std::max(found, -1) : -1;
}

}  // namespace NBCodeMap

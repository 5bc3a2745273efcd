#include "embedded/data/ColumnBuilder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "embedded/data/CellText.h"
#include "embedded/data/Utf8.h"

namespace embedded {
namespace {

// The same codes in a wider integer.
template <class Wide>
CodeVector Widened(const CodeVector& codes) {
    return std::visit(
        [](const auto& list) -> CodeVector {
            std::vector<Wide> wide;
            wide.reserve(kChunkRows);
            for (const auto code : list) {
                wide.push_back(static_cast<Wide>(code));
            }
            return wide;
        },
        codes);
}

template <class Code>
CodeVector Recoded(const CodeVector& codes, const std::vector<std::uint32_t>& newCodes) {
    return std::visit(
        [&newCodes](const auto& list) -> CodeVector {
            std::vector<Code> result;
            result.reserve(list.size());
            for (const auto code : list) {
                result.push_back(static_cast<Code>(code == 0 ? 0 : newCodes[code - 1U]));
            }
            return result;
        },
        codes);
}

constexpr std::size_t kByteCodes = std::numeric_limits<std::uint8_t>::max() + std::size_t{1};
constexpr std::size_t kShortCodes = std::numeric_limits<std::uint16_t>::max() + std::size_t{1};

}  // namespace

void CodeChunks::Store(std::uint32_t entry) {
    if (fRowsInLast == kChunkRows) {
        fvChunks.emplace_back(std::vector<std::uint8_t>());
        fRowsInLast = 0;
    }
    ++fRowsInLast;
    CodeVector& chunk = fvChunks.back();
    if (entry >= kByteCodes && std::holds_alternative<std::vector<std::uint8_t>>(chunk)) {
        chunk = Widened<std::uint16_t>(chunk);
    }
    if (entry >= kShortCodes && std::holds_alternative<std::vector<std::uint16_t>>(chunk)) {
        chunk = Widened<std::uint32_t>(chunk);
    }
    std::visit(
        [entry](auto& list) {
            list.push_back(static_cast<typename std::decay_t<decltype(list)>::value_type>(entry));
        },
        chunk);
}

std::vector<CodeVector> CodeChunks::Recode(const std::vector<std::uint32_t>& newCodes,
                                           std::size_t count) && {
    for (CodeVector& chunk : fvChunks) {
        if (count <= kByteCodes) {
            chunk = Recoded<std::uint8_t>(chunk, newCodes);
        } else if (count <= kShortCodes) {
            chunk = Recoded<std::uint16_t>(chunk, newCodes);
        } else {
            chunk = Recoded<std::uint32_t>(chunk, newCodes);
        }
    }
    return std::move(fvChunks);
}

void ValidityChunks::Append(bool valid) {
    const auto at = static_cast<std::size_t>(fRows % kChunkRows);
    if (at == 0) {
        fvChunks.emplace_back();
    }
    ++fRows;
    Column::Validity& bits = fvChunks.back();
    if (bits.empty()) {
        if (valid) {
            return;
        }
        // The first missing row of the chunk: all rows before it are valid.
        bits.assign(kChunkRows / 64, 0);
        std::fill_n(bits.begin(), at / 64, ~std::uint64_t{0});
        bits[at / 64] = (std::uint64_t{1} << (at % 64)) - 1;
        return;
    }
    if (valid) {
        bits[at / 64] |= std::uint64_t{1} << (at % 64);
    }
}

void NumericColumnBuilder::Store(double value, bool valid) {
    if (Rows() % kChunkRows == 0) {
        fvChunks.emplace_back();
    }
    fvChunks.back().push_back(value);
    fValidity.Append(valid);
}

void NumericColumnBuilder::Append(double value) {
    if (std::isfinite(value) && value != MCMV::gMissingValue) {
        Store(value + 0.0, true);  // -0 becomes 0, so that equal values have equal bits
        return;
    }
    if (!std::isnan(value)) {
        fInfinite.Note(Rows());
    }
    AppendMissing();
}

void NumericColumnBuilder::AppendMissing() { Store(MCMV::gMissingValue, false); }

void NumericColumnBuilder::Scale(double factor) {
    for (std::vector<double>& chunk : fvChunks) {
        for (double& value : chunk) {
            if (value != MCMV::gMissingValue) {
                value *= factor;
            }
        }
    }
}

Column NumericColumnBuilder::Finish() && {
    if (!fvChunks.empty()) {
        fvChunks.back().shrink_to_fit();
    }
    return Column::OfNumbers(std::move(fvChunks), std::move(fValidity).Finish());
}

StringColumnBuilder::Token StringColumnBuilder::Intern(std::string_view text) {
    if (fbHaveLast && text == fLastText) {
        return fLastToken;
    }
    auto known = fTokens.find(text);
    if (known == fTokens.end()) {
        Token token = kMissingToken;
        const bool isText = IsUtf8(text);
        Text entry{isText ? std::string(text) : ReplaceInvalidUtf8(text), !isText};
        if (fpMissingTexts == nullptr || !fpMissingTexts->contains(entry.fText)) {
            entry.fText.resize(TrimTrailingBlanks(entry.fText).size());
            token = static_cast<Token>(fvTexts.size());
            fvTexts.push_back(std::move(entry));
        }
        known = fTokens.emplace(std::string(text), token).first;
    }
    fLastText.assign(text);
    fLastToken = known->second;
    fbHaveLast = true;
    return fLastToken;
}

void StringColumnBuilder::Append(Token token) {
    if (token == kMissingToken) {
        fCodes.AppendMissing();
        fValidity.Append(false);
        return;
    }
    if (fvTexts[static_cast<std::size_t>(token)].fbReplaced) {
        fUndecodable.Note(Rows());
    }
    fCodes.Append(static_cast<std::uint32_t>(token));
    fValidity.Append(true);
}

Column StringColumnBuilder::Finish() && {
    fTokens.clear();
    std::vector<std::uint32_t> order(fvTexts.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = static_cast<std::uint32_t>(i);
    }
    std::sort(order.begin(), order.end(), [this](std::uint32_t a, std::uint32_t b) {
        return fvTexts[a].fText < fvTexts[b].fText;
    });
    std::vector<std::string> values;
    values.reserve(order.size());
    std::vector<std::uint32_t> rank(order.size());
    for (const std::uint32_t token : order) {
        // Different undecodable bytes may have become the same text, and so may trailing blanks.
        if (values.empty() || values.back() != fvTexts[token].fText) {
            values.push_back(std::move(fvTexts[token].fText));
        }
        rank[token] = static_cast<std::uint32_t>(values.size() - 1);
    }
    const std::size_t count = values.size();
    return Column::OfStrings(std::move(values), std::move(fCodes).Recode(rank, count),
                             std::move(fValidity).Finish());
}

}  // namespace embedded

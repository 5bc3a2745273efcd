#include "embedded/data/ColumnBuilder.h"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>

#include "embedded/data/CellText.h"
#include "embedded/data/ColumnAssembly.h"
#include "embedded/data/Utf8.h"

namespace embedded {
namespace {

// The same entries in a wider integer.
template <class Wide>
CodeVector Widened(const CodeVector& codes) {
    return std::visit(
        [](const auto& list) {
            Cells<Wide> wide(list.size());
            std::transform(list.begin(), list.end(), wide.begin(),
                           [](auto entry) { return static_cast<Wide>(entry); });
            return wide;
        },
        codes);
}

}  // namespace

void NumericColumnBuilder::Store(double value) {
    if (fRows % kChunkRows == 0) {
        fvChunks.emplace_back();
    }
    fvChunks.back().push_back(value);
    ++fRows;
}

void NumericColumnBuilder::Append(double value) {
    if (std::isfinite(value) && value != MCMV::gMissingValue) {
        Store(value + 0.0);  // -0 becomes 0, so that equal values have equal bits
        return;
    }
    if (!std::isnan(value)) {
        fInfinite.Note(Rows());
    }
    AppendMissing();
}

void NumericColumnBuilder::AppendMissing() { Store(MCMV::gMissingValue); }

void NumericColumnBuilder::Scale(double factor) {
    for (Cells<double>& chunk : fvChunks) {
        for (double& value : chunk) {
            if (value != MCMV::gMissingValue) {
                value *= factor;
            }
        }
    }
}

Column NumericColumnBuilder::Finish(std::shared_ptr<ColumnMemory> memory) && {
    NumericParts parts(std::move(memory));
    for (std::size_t chunk = 0; chunk < fvChunks.size(); ++chunk) {
        parts.SetNumbers(static_cast<std::int32_t>(chunk), std::move(fvChunks[chunk]));
    }
    return parts.Finish(1);
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
    std::uint32_t entry = 0;
    if (token != kMissingToken) {
        if (fvTexts[static_cast<std::size_t>(token)].fbReplaced) {
            fUndecodable.Note(fRows);
        }
        entry = static_cast<std::uint32_t>(token) + 1;
    }
    ++fRows;
    if (entry > 0xFF && std::holds_alternative<Cells<std::uint8_t>>(fCodes)) {
        fCodes = Widened<std::uint16_t>(fCodes);
    }
    if (entry > 0xFFFF && std::holds_alternative<Cells<std::uint16_t>>(fCodes)) {
        fCodes = Widened<std::uint32_t>(fCodes);
    }
    std::visit(
        [entry](auto& entries) {
            entries.push_back(
                static_cast<typename std::decay_t<decltype(entries)>::value_type>(entry));
        },
        fCodes);
}

Column StringColumnBuilder::Finish(std::shared_ptr<ColumnMemory> memory) && {
    fTokens.clear();
    std::vector<std::string> values;
    values.reserve(fvTexts.size());
    for (Text& text : fvTexts) {
        values.push_back(std::move(text.fText));
    }
    TextParts parts(nullptr, std::move(memory));
    parts.SetCodes(0, std::move(values), std::move(fCodes));
    return parts.Finish(1);
}

}  // namespace embedded

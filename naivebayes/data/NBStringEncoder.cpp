#include "naivebayes/data/NBStringEncoder.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "naivebayes/IOException.h"
#include "naivebayes/data/NBEncoderDisplay.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

NBStringEncoder::NBStringEncoder(std::int32_t reserve) {
    const auto room = static_cast<std::size_t>(std::max(reserve, 0));
    fvpCodeValues.reserve(room);
    fvCategoryLabels.reserve(room);
}

NBStringEncoder::NBStringEncoder(const std::vector<std::string>& values) {
    for (const std::string& value : values) Encode(value);
}

NBStringEncoder::NBStringEncoder(const NBStringEncoder& other)
    : NBCategoryEncoder(other),
      fCodes(other.fCodes),
      fpUserMissing(other.fpUserMissing
                        ? std::make_unique<NBStringUserMissing>(*other.fpUserMissing)
                        : nullptr) {
    PointToValues();
}

NBStringEncoder& NBStringEncoder::operator=(const NBStringEncoder& other) {
    if (this == &other) return *this;
    NBCategoryEncoder::operator=(other);
    fCodes = other.fCodes;
    PointToValues();
    fpUserMissing =
        other.fpUserMissing ? std::make_unique<NBStringUserMissing>(*other.fpUserMissing) : nullptr;
    return *this;
}

double NBStringEncoder::Encode(std::string_view text) {
    if (IsMissing(text)) return kMissingCode;
    auto at = fCodes.lower_bound(text);
    if (at == fCodes.end() || at->first != text) {
        at = fCodes.emplace_hint(at, text, GetNumCodes());
        fvpCodeValues.push_back(&at->first);
    }
    return at->second;
}

double NBStringEncoder::Lookup(std::string_view text) const {
    if (IsMissing(text)) return kMissingCode;
    const auto at = fCodes.find(text);
    return at == fCodes.end() ? kMissingCode : at->second;
}

const std::string& NBStringEncoder::Decode(std::int32_t code) const {
    static const std::string kNothing;
    if (code < 0 || code >= GetNumCodes()) return kNothing;
    return *fvpCodeValues[static_cast<std::size_t>(code)];
}

bool NBStringEncoder::SetUserMissing(std::unique_ptr<INBUserMissing> definition) {
    return TakeUserMissing(std::move(definition), fpUserMissing);
}

bool NBStringEncoder::IsMissing(std::string_view text) const {
    return fpUserMissing && fpUserMissing->IsMissing(text);
}

void NBStringEncoder::Clear() {
    fCodes.clear();
    fvpCodeValues.clear();
}

void NBStringEncoder::PointToValues() {
    fvpCodeValues.assign(fCodes.size(), nullptr);
    for (const auto& [value, code] : fCodes) {
        fvpCodeValues[static_cast<std::size_t>(code)] = &value;
    }
}

std::int64_t NBStringEncoder::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBStringEncoder::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBStringEncoder::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBStringEncoder::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBStringEncoder::Display(std::ostream& out) const {
    out << "\tNBStringEncoder object:  Last code = " << GetNumCodes() - 1 << '\n';
    for (const std::string* value : fvpCodeValues) {
        if (value == nullptr) {
            out << "ERROR\n";
        } else {
            out << *value << '\n';
        }
    }
    DisplayLabelsAndMissing(out);
}

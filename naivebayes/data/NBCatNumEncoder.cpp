#include "naivebayes/data/NBCatNumEncoder.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "host/Records.h"
#include "naivebayes/IOException.h"
#include "naivebayes/data/NBEncoderDisplay.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

NBCatNumEncoder::NBCatNumEncoder(std::int32_t reserve) {
    const auto room = static_cast<std::size_t>(std::max(reserve, 0));
    fvCodeValues.reserve(room);
    fvCategoryLabels.reserve(room);
}

NBCatNumEncoder::NBCatNumEncoder(const std::vector<double>& values) {
    for (const double value : values) Encode(value);
}

NBCatNumEncoder::NBCatNumEncoder(const NBCatNumEncoder& other)
    : NBCategoryEncoder(other),
      fCodes(other.fCodes),
      fvCodeValues(other.fvCodeValues),
      fpUserMissing(other.fpUserMissing
                        ? std::make_unique<NBNumericUserMissing>(*other.fpUserMissing)
                        : nullptr) {}

NBCatNumEncoder& NBCatNumEncoder::operator=(const NBCatNumEncoder& other) {
    if (this == &other) return *this;
    NBCategoryEncoder::operator=(other);
    fCodes = other.fCodes;
    fvCodeValues = other.fvCodeValues;
    fpUserMissing = other.fpUserMissing
                        ? std::make_unique<NBNumericUserMissing>(*other.fpUserMissing)
                        : nullptr;
    return *this;
}

double NBCatNumEncoder::Encode(double value) {
    if (IsMissing(value)) return kMissingCode;
    const auto [at, isNew] = fCodes.try_emplace(value, GetNumCodes());
    if (isNew) fvCodeValues.push_back(value);
    return at->second;
}

double NBCatNumEncoder::Lookup(double value) const {
    if (IsMissing(value)) return kMissingCode;
    const auto at = fCodes.find(value);
    return at == fCodes.end() ? kMissingCode : at->second;
}

double NBCatNumEncoder::Decode(std::int32_t code) const {
    if (code < 0 || code >= GetNumCodes()) return MCMV::gMissingValue;
    return fvCodeValues[static_cast<std::size_t>(code)];
}

bool NBCatNumEncoder::SetUserMissing(std::unique_ptr<INBUserMissing> definition) {
    return TakeUserMissing(std::move(definition), fpUserMissing);
}

bool NBCatNumEncoder::IsMissing(double value) const {
    return value == MCMV::gMissingValue || (fpUserMissing && fpUserMissing->IsMissing(value));
}

void NBCatNumEncoder::Clear() {
    fCodes.clear();
    fvCodeValues.clear();
}

std::int64_t NBCatNumEncoder::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBCatNumEncoder::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBCatNumEncoder::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBCatNumEncoder::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBCatNumEncoder::Display(std::ostream& out) const {
    out << "\tNBCatNumEncoder: Last code = " << GetNumCodes() - 1 << '\n';
    out << "\t\tNumeric values of categories: ";
    NBEncoderDisplay::List(fvCodeValues, out);
    DisplayLabelsAndMissing(out);
}

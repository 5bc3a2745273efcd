#include "naivebayes/data/NBRoundEncoder.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <ostream>

#include "host/Records.h"
#include "naivebayes/IOException.h"
#include "naivebayes/data/NBEncoderDisplay.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

double NBRoundEncoder::Encode(double value) const {
    if (value == MCMV::gMissingValue) return MCMV::gMissingValue;
    if (fpUserMissing != nullptr && fpUserMissing->IsMissing(value)) return MCMV::gMissingValue;
    double cleaned = value;
    if (fOption == kTruncate) cleaned = std::floor(value);
    if (fOption == kRound) cleaned = std::floor(value + 0.5);
    return cleaned > 0.0 ? cleaned : MCMV::gMissingValue;
}

bool NBRoundEncoder::SetUserMissing(const INBUserMissing* definition) {
    const auto* const numeric = dynamic_cast<const NBNumericUserMissing*>(definition);
    if (definition != nullptr && numeric == nullptr) return false;
    fpUserMissing = numeric;
    return true;
}

const INBUserMissing* NBRoundEncoder::GetUserMissing() const { return fpUserMissing; }

std::int64_t NBRoundEncoder::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBRoundEncoder::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBRoundEncoder::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBRoundEncoder::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBRoundEncoder::Display(std::ostream& out) const {
    constexpr std::array<const char*, 3> kOptions{"Truncate to smaller int", "Round to closest int",
                                                  "As is - no change"};
    out << "\tNBRoundEncoder: option = ";
    if (fOption >= kTruncate && fOption <= kAsIs)
        out << kOptions[static_cast<std::size_t>(fOption)];
    out << '\n';
    NBEncoderDisplay::UserMissing(fpUserMissing, out);
}

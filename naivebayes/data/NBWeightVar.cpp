#include "naivebayes/data/NBWeightVar.h"

#include <ostream>
#include <utility>

#include "naivebayes/IOException.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

NBWeightVar::NBWeightVar(std::string name, std::string label, std::int32_t roundOption)
    : fName(std::move(name)),
      fLabel(std::move(label)),
      fpEncoder(std::make_unique<NBRoundEncoder>(roundOption)) {}

NBWeightVar::NBWeightVar(const NBWeightVar& other)
    : INBVariable(other),
      fName(other.fName),
      fLabel(other.fLabel),
      fpEncoder(std::make_unique<NBRoundEncoder>(*other.fpEncoder)) {
    // Replaces the other's definition in the copied encoder.
    SetUserMissing(other.fpUserMissing ? other.fpUserMissing->Clone() : nullptr);
}

NBWeightVar& NBWeightVar::operator=(const NBWeightVar& other) {
    fName = other.fName;
    fLabel = other.fLabel;
    *fpEncoder = *other.fpEncoder;
    SetUserMissing(other.fpUserMissing ? other.fpUserMissing->Clone() : nullptr);
    return *this;
}

bool NBWeightVar::SetUserMissing(std::unique_ptr<INBUserMissing> definition) {
    if (!TakeUserMissing(std::move(definition), fpUserMissing)) return false;
    fpEncoder->SetUserMissing(fpUserMissing.get());
    return true;
}

std::int64_t NBWeightVar::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBWeightVar::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBWeightVar::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBWeightVar::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBWeightVar::Display(std::ostream& out) const {
    out << "Frequency weight variable: name = " << fName << ", label = " << fLabel
        << ", role = " << NBRole::Text(GetRole()) << '\n';
    fpEncoder->Display(out);
}

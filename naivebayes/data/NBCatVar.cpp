#include "naivebayes/data/NBCatVar.h"

#include <algorithm>
#include <ostream>

#include "naivebayes/IOException.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

namespace {

std::unique_ptr<NBCategoryEncoder> CloneOf(const NBCategoryEncoder& encoder) {
    if (encoder.GetEncoderType() == NBEncoderType::kCatNum) {
        return std::make_unique<NBCatNumEncoder>(static_cast<const NBCatNumEncoder&>(encoder));
    }
    return std::make_unique<NBStringEncoder>(static_cast<const NBStringEncoder&>(encoder));
}

}  // namespace

NBCatVar::NBCatVar(std::string name, std::string label, std::int32_t role,
                   std::int32_t numCategories, std::unique_ptr<NBCatNumEncoder> encoder)
    : fName(std::move(name)),
      fLabel(std::move(label)),
      fRole(role),
      fNumCategories(numCategories),
      fpEncoder(std::move(encoder)) {}

NBCatVar::NBCatVar(std::string name, std::string label, std::int32_t role,
                   std::int32_t numCategories, std::unique_ptr<NBStringEncoder> encoder)
    : fName(std::move(name)),
      fLabel(std::move(label)),
      fRole(role),
      fNumCategories(numCategories),
      fpEncoder(std::move(encoder)) {}

NBCatVar::NBCatVar(const NBCatVar& other)
    : INBVariable(other),
      fName(other.fName),
      fLabel(other.fLabel),
      fRole(other.fRole),
      fNumCategories(other.fNumCategories),
      fpEncoder(CloneOf(*other.fpEncoder)) {}

NBCatVar& NBCatVar::operator=(const NBCatVar& other) {
    fName = other.fName;
    fLabel = other.fLabel;
    fRole = other.fRole;
    fNumCategories = other.fNumCategories;
    fpEncoder = CloneOf(*other.fpEncoder);
    return *this;
}

std::int32_t NBCatVar::RefreshNumCategories() {
    fNumCategories = std::max(fNumCategories, fpEncoder->GetNumCodes());
    return fNumCategories;
}

std::int32_t NBCatVar::GetRangeState() {
    const std::int32_t count = RefreshNumCategories();
    if (count < 1) return NBRangeState::kEmpty;
    return count == 1 ? NBRangeState::kConstant : NBRangeState::kUsable;
}

std::int64_t NBCatVar::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBCatVar::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBCatVar::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBCatVar::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBCatVar::Display(std::ostream& out) const {
    out << "Categorical variable: name = " << fName << ", label = " << fLabel
        << ", role = " << NBRole::Text(fRole) << '\n';
    out << "\tMeasurement Level = " << NBMeasureLevel::Text(GetMeasureLevel()) << '\n';
    out << "\tNumber of Categories = " << fNumCategories << '\n';
    fpEncoder->Display(out);
}

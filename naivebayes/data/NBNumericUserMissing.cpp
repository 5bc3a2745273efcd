#include "naivebayes/data/NBNumericUserMissing.h"

#include <ostream>

#include "naivebayes/IOException.h"
#include "naivebayes/data/NBMissingValueElements.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

namespace {

std::unique_ptr<MCCommonXML::XMLElement> MakeBound(const char* name, double value) {
    auto element = std::make_unique<MCCommonXML::XMLElement>("Extension");
    element->AddAttribute("extender", "predselect");
    element->AddAttribute("name", name);
    element->AddAttribute("value", value);
    return element;
}

}  // namespace

void NBNumericUserMissing::Add(double value, std::string label) {
    fvValues.push_back(value);
    fvLabels.push_back(std::move(label));
}

void NBNumericUserMissing::SetInterval(const NBNumericInterval& interval) {
    fInterval = interval;
    fHasInterval = true;
}

bool NBNumericUserMissing::Equals(const INBUserMissing* other) const {
    const auto* const numeric = dynamic_cast<const NBNumericUserMissing*>(other);
    return numeric != nullptr && fvValues == numeric->fvValues &&
           fHasInterval == numeric->fHasInterval &&
           (!fHasInterval || fInterval == numeric->fInterval);
}

std::vector<std::unique_ptr<MCCommonXML::XMLElement>> NBNumericUserMissing::MakePMMLElements()
    const {
    std::vector<std::unique_ptr<MCCommonXML::XMLElement>> elements;
    if (fHasInterval && !fInterval.IsEmpty()) {
        if (!fInterval.HasNoLow()) {
            elements.push_back(MakeBound("invalidRangeLower", fInterval.GetLow()));
        }
        if (!fInterval.HasNoHigh()) {
            elements.push_back(MakeBound("invalidRangeUpper", fInterval.GetHigh()));
        }
    }
    NBMissingValueElements::Append(fvValues, fvLabels, elements);
    return elements;
}

std::int64_t NBNumericUserMissing::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBNumericUserMissing::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBNumericUserMissing::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBNumericUserMissing::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBNumericUserMissing::Display(std::ostream& out) const {
    out << "Start of NBNumericUserMissing display\n";
    NBMissingValueElements::Display(fvValues, fvLabels, out);
    if (fHasInterval) {
        out << "Missing interval:\n";
        fInterval.Display(out);
    }
    out << "End of NBNumericUserMissing display\n";
}

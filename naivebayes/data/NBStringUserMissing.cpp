#include "naivebayes/data/NBStringUserMissing.h"

#include <ostream>

#include "naivebayes/IOException.h"
#include "naivebayes/data/NBMissingValueElements.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

void NBStringUserMissing::Add(std::string value, std::string label) {
    fvValues.push_back(std::move(value));
    fvLabels.push_back(std::move(label));
}

bool NBStringUserMissing::Equals(const INBUserMissing* other) const {
    const auto* const strings = dynamic_cast<const NBStringUserMissing*>(other);
    return strings != nullptr && fvValues == strings->fvValues;
}

std::vector<std::unique_ptr<MCCommonXML::XMLElement>> NBStringUserMissing::MakePMMLElements()
    const {
    std::vector<std::unique_ptr<MCCommonXML::XMLElement>> elements;
    NBMissingValueElements::Append(fvValues, fvLabels, elements);
    return elements;
}

std::int64_t NBStringUserMissing::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBStringUserMissing::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBStringUserMissing::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBStringUserMissing::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBStringUserMissing::Display(std::ostream& out) const {
    out << "Start of NBStringUserMissing display\n";
    NBMissingValueElements::Display(fvValues, fvLabels, out);
    out << "End of NBStringUserMissing display\n";
}

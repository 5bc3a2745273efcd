#include "naivebayes/data/NBNumericInterval.h"

#include <ostream>

#include "naivebayes/IOException.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

std::int64_t NBNumericInterval::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBNumericInterval::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBNumericInterval::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBNumericInterval::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBNumericInterval::Display(std::ostream& out) const {
    out << "NBNumericInterval: ";
    if (HasNoLow()) {
        out << "( -infinity, ";
    } else {
        out << "[ " << fLow << ", ";
    }
    if (HasNoHigh()) {
        out << "infinity )";
    } else {
        out << fHigh << " ]";
    }
    out << '\n';
}

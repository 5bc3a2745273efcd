#ifndef PREDSEL_FEATURESELECT_FSARCHIVES_H
#define PREDSEL_FEATURESELECT_FSARCHIVES_H

// The archives as this engine uses them: for the sources of the saved classes.

#include "featureselect/IOException.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

namespace FSArchives {

template <class T>
std::int64_t RestoreBinary(T& object, std::istream& stream) {
    return Persistence::RestoreBinary<MCFeature::IOException>(object, stream);
}

template <class T>
std::int64_t RestoreXML(T& object, MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCFeature::IOException>(object, document);
}

}  // namespace FSArchives

#endif  // PREDSEL_FEATURESELECT_FSARCHIVES_H

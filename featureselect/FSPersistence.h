#ifndef PREDSEL_FEATURESELECT_FSPERSISTENCE_H
#define PREDSEL_FEATURESELECT_FSPERSISTENCE_H

// What the header of a saved class needs. Every saved class has four operations:
//
//   SaveBinary(stream)       the number of bytes written
//   RestoreBinary(stream)    the number of bytes read
//   SaveXML(stream, level)   the number of elements written; level is the depth of indentation
//   RestoreXML(document)     the number of elements read
//
// A save shows errors in the stream's state. A restore fills an object that was made empty; when it
// fails, the class prints its line on the error stream and throws a pointer to an
// MCFeature::IOException, and the object is fit for nothing but its destruction.

#include <cstdint>
#include <iosfwd>

#include "persistence/Fields.h"

namespace MCCommonXML {
class XMLReader;
}

#endif  // PREDSEL_FEATURESELECT_FSPERSISTENCE_H

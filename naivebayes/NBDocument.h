#ifndef PREDSEL_NAIVEBAYES_NBDOCUMENT_H
#define PREDSEL_NAIVEBAYES_NBDOCUMENT_H

#include <iosfwd>

#include "host/Xml.h"
#include "naivebayes/NBWriteOptions.h"

/// What the engine's XML documents have in common. options may be null everywhere.
namespace NBDocument {

/// Adds the Header element: copyright, application and the current time.
void AddHeader(MCCommonXML::XMLElement& root, const NBWriteOptions* options);
/// Writes the document. docType null: none.
void Write(std::ostream& stream, const MCCommonXML::XMLDocType* docType,
           const MCCommonXML::XMLElement& root, const NBWriteOptions* options);

}  // namespace NBDocument

#endif  // PREDSEL_NAIVEBAYES_NBDOCUMENT_H

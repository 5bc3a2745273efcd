#include <ostream>

#include "embedded/xml/XmlText.h"
#include "host/Records.h"
#include "host/Xml.h"

namespace MCCommonXML {
namespace {

std::string Indentation(std::int32_t level) {
    return std::string(static_cast<std::size_t>(level < 0 ? 0 : level), ' ');
}

void WriteValue(std::ostream& stream, std::int32_t level, std::string_view type,
                std::string_view value) {
    stream << Indentation(level + 1) << '<' << type << " value=\"" << value << "\"/>\n";
}

}  // namespace

void XMLObj::StartObj(std::ostream& stream) const {
    stream << Indentation(fLevel) << "<Obj name=\"" << embedded::EscapeXml(fName) << "\">\n";
}

void XMLObj::EndObj(std::ostream& stream) const { stream << Indentation(fLevel) << "</Obj>\n"; }

void XMLObj::WriteSubElement(std::ostream& stream, std::int32_t value) const {
    WriteValue(stream, fLevel, "Int", std::to_string(value));
}

void XMLObj::WriteSubElement(std::ostream& stream, std::int64_t value) const {
    WriteValue(stream, fLevel, "Long", std::to_string(value));
}

void XMLObj::WriteSubElement(std::ostream& stream, double value) const {
    const bool isMissing = value == MCMV::gMissingValue;
    WriteValue(stream, fLevel, "Double",
               isMissing ? std::string(kMissingText) : embedded::RoundTripText(value));
}

void XMLObj::WriteSubElement(std::ostream& stream, std::string_view value) const {
    WriteValue(stream, fLevel, "String", embedded::EscapeXml(value));
}

}  // namespace MCCommonXML

#include "embedded/strings/StringTable.h"
#include "embedded/xml/XmlText.h"
#include "host/Charts.h"

// The program has one string table for all procedures, compiled in: neither path nor procedure
// lead to another.
// The embedded host has one table of texts.
FacSTDictionary::FacSTDictionary(std::int32_t /*pathInstance*/) {}

void FacSTDictionary::SetProcedure(std::string_view name) { fProcedure = name; }

void FacSTDictionary::Lookup(std::string_view key, OlangString& out) const {
    out.fKey = key;
    out.fText = embedded::TextOf(key);
}

void ChartString::appendDouble(double value) { fText += embedded::RoundTripText(value); }

void ChartString::appendInteger(std::int32_t value) { fText += std::to_string(value); }

ChartString XUtility::ChartStringFromOLANG(const OlangString& text) {
    return ChartString(text.fText, text.fKey);
}

ChartString XUtility::ChartStringFromLocalCodePage(std::string_view text) {
    return ChartString(std::string(text), std::string());
}

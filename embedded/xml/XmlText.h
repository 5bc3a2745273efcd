#ifndef PREDSEL_EMBEDDED_XML_XMLTEXT_H
#define PREDSEL_EMBEDDED_XML_XMLTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace embedded {

/// Bytes of the character that starts at `at` when it is well-formed UTF-8 and XML 1.0 can hold it,
/// else 0.
std::size_t XmlCharacterLength(std::string_view text, std::size_t at);

/// The text as it stands between tags or in a double-quoted attribute, where it reads back the
/// same. What XML cannot hold becomes U+FFFD, one for each byte.
std::string EscapeXml(std::string_view text);

/// The shortest decimal form that reads back as the same double.
std::string RoundTripText(double value);

/// The same, but whole numbers of at most 15 digits never have an exponent: schemas take counts and
/// indices without one only, and readers compare categories by their text.
std::string PlainNumberText(double value);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_XML_XMLTEXT_H

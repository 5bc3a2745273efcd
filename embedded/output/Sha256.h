#ifndef PREDSEL_EMBEDDED_OUTPUT_SHA256_H
#define PREDSEL_EMBEDDED_OUTPUT_SHA256_H

#include <string>
#include <string_view>

namespace embedded {

/// SHA-256 (FIPS 180-4) of a text in base64, as a page's content policy names its style sheets. It
/// identifies; nothing secret depends on it.
std::string Sha256Base64(std::string_view text);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_SHA256_H

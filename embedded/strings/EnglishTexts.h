#ifndef PREDSEL_EMBEDDED_STRINGS_ENGLISHTEXTS_H
#define PREDSEL_EMBEDDED_STRINGS_ENGLISHTEXTS_H

#include <string_view>

namespace embedded {

/// The bytes of english.json. The build makes the source from that file.
std::string_view EnglishTexts();

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_STRINGS_ENGLISHTEXTS_H

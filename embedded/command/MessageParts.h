#ifndef PREDSEL_EMBEDDED_COMMAND_MESSAGEPARTS_H
#define PREDSEL_EMBEDDED_COMMAND_MESSAGEPARTS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/command/SourceText.h"
#include "host/CommandLanguage.h"

namespace embedded {

/// Where a token stands.
inline TextPlace PlaceOf(const TokenInfoObj& token) { return {token.Line(), token.Column()}; }

/// A token as messages name it when something else was expected there.
std::string FoundText(const TokenInfoObj& token);

/// "A", "A or B", "A, B or C".
std::string OneOf(const std::vector<std::string>& words);
/// "A", "A and B", "A, B and C".
std::string AllOf(const std::vector<std::string>& words);

/// The end of a sentence on an unknown word: the nearest of the words that it could be, or all of
/// them when none is near.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& words);

/// A number with as many digits as tell it from its neighbours.
std::string PlainNumber(double number);

/// Bounds in words: "above 0 and at most 100"; empty when there are none. Options by BdryOption, 0
/// for a bound that does not exist.
std::string BoundsText(double lower, std::int32_t lowerOption, double upper,
                       std::int32_t upperOption);

/// The text of a key with its ^1, ^2, ... filled.
std::string FilledText(std::string_view key, const std::vector<std::string>& arguments);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_MESSAGEPARTS_H

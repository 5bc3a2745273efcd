#ifndef PREDSEL_EMBEDDED_STRINGS_STRINGTABLE_H
#define PREDSEL_EMBEDDED_STRINGS_STRINGTABLE_H

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace embedded {

/// The texts that users see, by the keys that code uses. A text may be a template
/// (CompositeText.h).
class StringTable {
 public:
    using Texts = std::map<std::string, std::string, std::less<>>;

    /// The table compiled in from english.json. Built at the first call; lives as long as the
    /// process.
    static const StringTable& English();

    /// Throws std::invalid_argument when the text is no JSON object of texts or has a key twice.
    explicit StringTable(std::string_view json);

    /// The text of a key; the key itself when the table has none. Lives as long as the longer-lived
    /// of table and argument allow: it points into one of them.
    std::string_view Text(std::string_view key) const;

    const Texts& All() const { return fTexts; }

 private:
    Texts fTexts;
};

/// The English text of a key.
std::string_view TextOf(std::string_view key);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_STRINGS_STRINGTABLE_H

#include "embedded/strings/StringTable.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "embedded/strings/EnglishTexts.h"

namespace embedded {

const StringTable& StringTable::English() {
    static const StringTable table(EnglishTexts());
    return table;
}

StringTable::StringTable(std::string_view json) {
    using Json = nlohmann::json;
    std::string key;
    // Taken entry by entry: a parsed document would keep one of two entries with the same key.
    const auto take = [this, &key](int depth, Json::parse_event_t event, Json& parsed) {
        if (depth == 1 && event == Json::parse_event_t::key) {
            key = parsed.get<std::string>();
        } else if (depth == 1 && event == Json::parse_event_t::value) {
            if (!parsed.is_string() || !fTexts.emplace(key, parsed.get<std::string>()).second)
                throw std::invalid_argument("string table: no text, or a second one, for " + key);
        } else if (depth > 0) {
            throw std::invalid_argument("string table: nested value for " + key);
        }
        return true;
    };
    try {
        if (!Json::parse(json, take).is_object())
            throw std::invalid_argument("string table: not an object");
    } catch (const Json::parse_error& error) {
        throw std::invalid_argument(std::string("string table: ") + error.what());
    }
}

std::string_view StringTable::Text(std::string_view key) const {
    const auto found = fTexts.find(key);
    return found == fTexts.end() ? key : std::string_view(found->second);
}

std::string_view TextOf(std::string_view key) { return StringTable::English().Text(key); }

}  // namespace embedded

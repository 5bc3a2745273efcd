#include "embedded/data/SchemaJson.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "embedded/data/TableSchema.h"
#include "embedded/data/Utf8.h"

namespace embedded {
namespace {

constexpr int kDeepest = 100;  // writing JSON goes as deep on the stack as the JSON

std::string LineAndColumn(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, std::min(byte, text.size()));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t start = before.rfind('\n') + 1;  // npos + 1 is 0
    return "line " + std::to_string(line) + ", column " +
           std::to_string(std::max<std::size_t>(before.size() - start, 1));
}

}  // namespace

SchemaJson ParseSchemaJson(const std::string& text, const SchemaOrigin& origin) {
    try {
        return SchemaJson::parse(text, [&origin](int depth, SchemaJson::parse_event_t,
                                                 SchemaJson&) {
            if (depth > kDeepest) {
                origin.Fail("it is nested more than " + std::to_string(kDeepest) + " levels deep");
            }
            return true;
        });
    } catch (const SchemaJson::parse_error& fault) {
        // "[json.exception.parse_error.101] parse error at line 1, column 2: reason"
        std::string reason = fault.what();
        const std::size_t colon = reason.find(": ");
        reason.erase(0, colon == std::string::npos ? 0 : colon + 2);
        origin.Fail("it is no JSON: " + LineAndColumn(text, fault.byte) + ": " +
                    ReplaceInvalidUtf8(reason));
    }
}

std::string OneLine(const SchemaJson& value) {
    constexpr std::size_t kLongest = 60;
    const std::string text = value.dump(-1, ' ', false, SchemaJson::error_handler_t::replace);
    return Shortened(text, kLongest);
}

std::string Indented(const SchemaJson& value) {
    return value.dump(2, ' ', false, SchemaJson::error_handler_t::replace) + "\n";
}

}  // namespace embedded

#ifndef PREDSEL_EMBEDDED_DATA_SCHEMAJSON_H
#define PREDSEL_EMBEDDED_DATA_SCHEMAJSON_H

#include <nlohmann/json.hpp>
#include <string>

namespace embedded {

struct SchemaOrigin;

/// JSON whose properties keep their order.
using SchemaJson = nlohmann::ordered_json;

/// Reads a JSON text; the origin's Fail names line, column and fault.
SchemaJson ParseSchemaJson(const std::string& text, const SchemaOrigin& origin);

/// The value as JSON on one line, shortened when it is long: for messages.
std::string OneLine(const SchemaJson& value);

/// Indented JSON with a line feed at the end; bytes that are no UTF-8 are replaced.
std::string Indented(const SchemaJson& value);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_SCHEMAJSON_H

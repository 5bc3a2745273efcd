#include "embedded/data/TableSchema.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include "embedded/data/CellText.h"
#include "embedded/data/SchemaJson.h"

namespace embedded {
namespace {

constexpr std::array<std::pair<std::string_view, std::int32_t>, 3> kLevels = {
    {{"nominal", kLevelNominal}, {"ordinal", kLevelOrdinal}, {"scale", kLevelScale}}};

constexpr std::array<std::pair<std::string_view, FieldsMatch>, 5> kFieldsMatches = {
    {{"partial", FieldsMatch::kPartial},
     {"exact", FieldsMatch::kExact},
     {"equal", FieldsMatch::kEqual},
     {"subset", FieldsMatch::kSubset},
     {"superset", FieldsMatch::kSuperset}}};

// What becomes of each type of the standard; types of no kind are left open or left out.
enum class TypeUse { kOpen, kAsKind, kLeftOut };
struct TypeRow {
    std::string_view fType;
    TypeUse fUse;
    ColumnKind fKind;
};
constexpr std::array<TypeRow, 16> kTypes = {{
    {"any", TypeUse::kOpen, ColumnKind::kString},
    {"string", TypeUse::kAsKind, ColumnKind::kString},
    {"number", TypeUse::kAsKind, ColumnKind::kNumber},
    {"integer", TypeUse::kAsKind, ColumnKind::kNumber},
    {"year", TypeUse::kAsKind, ColumnKind::kNumber},
    {"boolean", TypeUse::kAsKind, ColumnKind::kBoolean},
    {"date", TypeUse::kAsKind, ColumnKind::kDate},
    {"datetime", TypeUse::kAsKind, ColumnKind::kDateTime},
    {"time", TypeUse::kAsKind, ColumnKind::kTime},
    {"yearmonth", TypeUse::kAsKind, ColumnKind::kString},
    {"duration", TypeUse::kAsKind, ColumnKind::kString},
    {"geopoint", TypeUse::kAsKind, ColumnKind::kString},
    {"list", TypeUse::kLeftOut, ColumnKind::kString},
    {"array", TypeUse::kLeftOut, ColumnKind::kString},
    {"object", TypeUse::kLeftOut, ColumnKind::kString},
    {"geojson", TypeUse::kLeftOut, ColumnKind::kString},
}};

template <class Rows, class Name>
std::string ListOf(const Rows& rows, Name name) {
    std::string list;
    for (const auto& row : rows) {
        list += (list.empty() ? "" : ", ") + std::string(name(row));
    }
    return list;
}

const TypeRow* FindType(std::string_view type) {
    const auto* found = std::find_if(kTypes.begin(), kTypes.end(),
                                     [type](const TypeRow& row) { return row.fType == type; });
    return found == kTypes.end() ? nullptr : found;
}

std::int32_t LevelOf(std::string_view name, const SchemaOrigin& origin) {
    for (const auto& [word, level] : kLevels) {
        if (word == name) {
            return level;
        }
    }
    origin.Fail("the measurement level '" + std::string(name) + "' is none of " +
                ListOf(kLevels, [](const auto& row) { return row.first; }));
}

// Reads properties of one JSON object.
class Properties {
 public:
    Properties(const SchemaJson& object, const SchemaOrigin& origin)
        : fObject(object), fOrigin(origin) {}

    const SchemaJson* Find(const char* name) const {
        const auto found = fObject.find(name);
        return found == fObject.end() ? nullptr : &*found;
    }
    std::string Text(const char* name, std::string absent) const {
        const SchemaJson* value = Find(name);
        if (value == nullptr) {
            return absent;
        }
        if (!value->is_string()) {
            Wrong(name, "a text", *value);
        }
        return value->get<std::string>();
    }
    const SchemaJson* List(const char* name) const {
        const SchemaJson* value = Find(name);
        if (value != nullptr && !value->is_array()) {
            Wrong(name, "a list", *value);
        }
        return value;
    }
    std::vector<std::string> Texts(const char* name, std::vector<std::string> absent) const {
        const SchemaJson* list = List(name);
        if (list == nullptr) {
            return absent;
        }
        std::vector<std::string> texts;
        for (const SchemaJson& item : *list) {
            if (!item.is_string()) {
                Wrong(name, "a list of texts", item);
            }
            texts.push_back(item.get<std::string>());
        }
        return texts;
    }
    char Mark(const char* name) const {
        const std::string text = Text(name, "");
        if (Find(name) != nullptr && text.size() != 1) {
            fOrigin.Fail("'" + std::string(name) + "' must be one ASCII character, not '" + text +
                         "'");
        }
        return text.empty() ? '\0' : text[0];
    }
    // A list whose items are values, or objects with a value and a label.
    std::vector<SchemaEntry> Entries(const char* name, const SchemaJson& list) const {
        std::vector<SchemaEntry> entries;
        for (const SchemaJson& item : list) {
            SchemaEntry entry;
            if (!item.is_object()) {
                entry.fValue = Value(name, item);
            } else {
                const Properties parts(item, fOrigin);
                const SchemaJson* value = parts.Find("value");
                if (value == nullptr) {
                    fOrigin.Fail("an item of '" + std::string(name) +
                                 "' has no 'value': " + OneLine(item));
                }
                entry.fValue = Value(name, *value);
                if (const SchemaJson* label = parts.Find("label")) {
                    if (!label->is_string()) {
                        fOrigin.Fail("in '" + std::string(name) + "' a label must be a text, not " +
                                     OneLine(*label));
                    }
                    entry.fLabel = label->get<std::string>();
                }
            }
            entries.push_back(std::move(entry));
        }
        return entries;
    }
    SchemaValue Value(const char* name, const SchemaJson& value) const {
        if (value.is_number()) {
            return value.get<double>();
        }
        if (value.is_boolean()) {
            return value.get<bool>();
        }
        if (value.is_string()) {
            return value.get<std::string>();
        }
        fOrigin.Fail("a value in '" + std::string(name) +
                     "' must be a text, a number or a boolean, not " + OneLine(value));
    }
    [[noreturn]] void Wrong(const char* name, const char* wanted, const SchemaJson& value) const {
        fOrigin.Fail("'" + std::string(name) + "' must be " + wanted + ", not " + OneLine(value));
    }

 private:
    const SchemaJson& fObject;
    const SchemaOrigin& fOrigin;
};

SchemaField ParseField(const SchemaJson& object, const SchemaOrigin& root, std::size_t place) {
    SchemaField field;
    const std::string position = "item " + std::to_string(place + 1) + " of 'fields'";
    if (!object.is_object()) {
        root.Fail(position + " must be an object with at least a 'name', not " + OneLine(object));
    }
    field.fOrigin = {DataError::Kind::kSchema, root.fText + ": " + position};
    const Properties properties(object, field.fOrigin);
    field.fName = properties.Text("name", "");
    if (field.fName.empty()) {
        field.fOrigin.Fail("it has no 'name'");
    }
    field.fOrigin.fText = root.fText + ": field '" + field.fName + "'";
    field.fLevelOrigin = field.fOrigin;
    field.fMissingOrigin = field.fOrigin;
    field.fTitle = properties.Text("title", "");
    field.fFormat = properties.Text("format", "default");
    field.fType = properties.Text("type", "any");
    if (FindType(field.fType) == nullptr) {
        field.fOrigin.Fail("the type '" + field.fType + "' is none of " +
                           ListOf(kTypes, [](const TypeRow& row) { return row.fType; }));
    }
    const bool isCalendar =
        field.fType == "date" || field.fType == "datetime" || field.fType == "time";
    if (isCalendar && field.fFormat != "default" && field.fFormat != "any") {
        field.fOrigin.Fail("the format '" + field.fFormat + "' is not supported; write values as " +
                           "YYYY-MM-DD, YYYY-MM-DDThh:mm:ss or hh:mm:ss, or declare a string");
    }
    if (properties.Find("measurementLevel") != nullptr) {
        field.fLevel = LevelOf(properties.Text("measurementLevel", ""), field.fOrigin);
    }
    if (const SchemaJson* list = properties.List("categories")) {
        field.fCategories = properties.Entries("categories", *list);
    }
    if (const SchemaJson* ordered = properties.Find("categoriesOrdered")) {
        if (!ordered->is_boolean()) {
            properties.Wrong("categoriesOrdered", "true or false", *ordered);
        }
        field.fbOrdered = ordered->get<bool>();
    }
    if (const SchemaJson* list = properties.List("missingValues")) {
        field.fMissing = properties.Entries("missingValues", *list);
        field.fbMissingOfAll = false;
        for (const SchemaEntry& entry : *field.fMissing) {
            field.fvNoValues.push_back(SchemaValueText(entry.fValue));
        }
    }
    if (const SchemaJson* range = properties.List("missingRange")) {
        if (range->size() != 2) {
            properties.Wrong("missingRange", "a list of two values, low and high", *range);
        }
        field.fMissingRange = {properties.Value("missingRange", (*range)[0]),
                               properties.Value("missingRange", (*range)[1])};
    }
    field.fvTrueTexts = properties.Texts("trueValues", std::move(field.fvTrueTexts));
    field.fvFalseTexts = properties.Texts("falseValues", std::move(field.fvFalseTexts));
    field.fDecimalMark = properties.Mark("decimalChar");
    if (field.fDecimalMark != '\0' && field.fDecimalMark != '.' && field.fDecimalMark != ',') {
        field.fOrigin.Fail("'decimalChar' must be a point or a comma");
    }
    field.fGroupMark = properties.Mark("groupChar");
    return field;
}

// The schema's field of a name, made when there is none.
SchemaField& FieldFor(TableSchema& schema, const std::string& name, const SchemaOrigin& origin) {
    for (SchemaField& field : schema.fvFields) {
        if (field.fName == name) {
            return field;
        }
    }
    SchemaField field;
    field.fName = name;
    field.fOrigin = origin;
    schema.fvFields.push_back(std::move(field));
    return schema.fvFields.back();
}

// "9,99" or "90..99,-1".
void ParseMissingOption(std::string_view text, SchemaField& field) {
    field.fMissing.emplace();
    field.fMissingRange.reset();
    while (!text.empty()) {
        const std::size_t comma = std::min(text.find(','), text.size());
        const std::string_view item = TrimBlanks(text.substr(0, comma));
        text.remove_prefix(std::min(comma + 1, text.size()));
        const std::size_t dots = item.find("..");
        if (item.empty()) {
            field.fMissingOrigin.Fail(
                "a value is empty; separate values by single commas, as in 8,9");
        }
        if (dots == std::string_view::npos) {
            field.fMissing->push_back({std::string(item), std::nullopt});
            field.fvNoValues.emplace_back(item);
            continue;
        }
        if (field.fMissingRange) {
            field.fMissingOrigin.Fail("only one range LOW..HIGH is possible");
        }
        field.fMissingRange = {std::string(TrimBlanks(item.substr(0, dots))),
                               std::string(TrimBlanks(item.substr(dots + 2)))};
    }
}

void SetMissing(const SchemaField& field, ColumnKind kind, KOLT_Variable& variable) {
    const SchemaOrigin& origin = field.fMissingOrigin;
    KoltMissingSpec spec;
    if (field.fMissingRange) {
        if (kind == ColumnKind::kString) {
            origin.Fail("a range of missing values needs a numeric variable; '" + field.fName +
                        "' is a string");
        }
        const auto bound = [&](const SchemaValue& value) {
            const auto number = ConvertSchemaValue(value, kind, field);
            if (!number) {
                origin.Fail("the bound '" + SchemaValueText(value) +
                            "' of the missing range is no value of the numeric variable '" +
                            field.fName + "'");
            }
            return std::get<double>(*number);
        };
        spec.fbRange = true;
        spec.fLow = bound(field.fMissingRange->first);
        spec.fHigh = bound(field.fMissingRange->second);
        if (spec.fLow > spec.fHigh) {
            origin.Fail(
                "the missing range is reversed: " + SchemaValueText(field.fMissingRange->first) +
                " is above " + SchemaValueText(field.fMissingRange->second) +
                "; write the lower bound first");
        }
    }
    for (const SchemaEntry& entry : field.fMissing.value_or(std::vector<SchemaEntry>())) {
        // What is no value of the variable, such as NA for a number, was read as system-missing.
        const auto value = ConvertSchemaValue(entry.fValue, kind, field);
        if (!value || value == KoltObs(std::string()) ||
            std::find(spec.fvDiscrete.begin(), spec.fvDiscrete.end(), *value) !=
                spec.fvDiscrete.end()) {
            continue;
        }
        spec.fvDiscrete.push_back(*value);
        if (entry.fLabel) {
            variable.SetValueLabel(*value, *entry.fLabel);
        }
    }
    const std::size_t most = spec.fbRange ? 1 : 3;
    if (spec.fvDiscrete.size() > most) {
        origin.Fail("'" + field.fName + "' has " + std::to_string(spec.fvDiscrete.size()) +
                    " missing values" + (spec.fbRange ? " beside a range" : "") + "; at most " +
                    std::to_string(most) + " can be declared" +
                    (spec.fbRange ? "" : ", or one range and one value"));
    }
    variable.SetMissingSpec(std::move(spec));
}

}  // namespace

TableSchema ParseTableSchema(std::string text, const std::string& path) {
    TableSchema schema;
    schema.fOrigin = {DataError::Kind::kSchema, path};
    const SchemaJson root = ParseSchemaJson(text, schema.fOrigin);
    const Properties properties(root, schema.fOrigin);
    if (!root.is_object() || properties.Find("fields") == nullptr) {
        schema.fOrigin.Fail("it is no Table Schema: an object with a list 'fields' is expected");
    }
    const SchemaJson& fields = *properties.List("fields");
    std::unordered_set<std::string> names;
    for (std::size_t place = 0; place < fields.size(); ++place) {
        schema.fvFields.push_back(ParseField(fields[place], schema.fOrigin, place));
        if (!names.insert(schema.fvFields.back().fName).second) {
            schema.fOrigin.Fail("the field '" + schema.fvFields.back().fName +
                                "' is declared twice");
        }
    }
    if (const SchemaJson* match = properties.Find("fieldsMatch")) {
        // Drafts of the standard wrote a list of one word.
        const bool isList = match->is_array() && match->size() == 1;
        const SchemaJson& word = isList ? (*match)[0] : *match;
        const auto* found =
            std::find_if(kFieldsMatches.begin(), kFieldsMatches.end(), [&word](const auto& row) {
                return word.is_string() && word == std::string(row.first);
            });
        if (found == kFieldsMatches.end()) {
            schema.fOrigin.Fail("'fieldsMatch' is " + OneLine(*match) + ", which is none of " +
                                ListOf(kFieldsMatches, [](const auto& row) { return row.first; }));
        }
        schema.fFieldsMatch = found->second;
    }
    if (const SchemaJson* list = properties.List("missingValues")) {
        for (SchemaEntry& entry : properties.Entries("missingValues", *list)) {
            if (entry.fLabel) {
                schema.fvMissingValues.push_back(std::move(entry));
            } else {
                schema.fvMissingTexts.push_back(SchemaValueText(entry.fValue));
            }
        }
    }
    schema.fWeight = properties.Text("weight", "");
    schema.fWeightOrigin = {DataError::Kind::kSchema, path + ": 'weight'"};
    if (const SchemaJson* split = properties.Find("split")) {
        schema.fvSplit = split->is_string() ? std::vector{split->get<std::string>()}
                                            : properties.Texts("split", {});
    }
    schema.fText = std::move(text);
    return schema;
}

void ApplyOptions(const OpenOptions& options, TableSchema& schema) {
    for (const auto& [name, level] : options.fvLevels) {
        const SchemaOrigin origin{DataError::Kind::kOption, "--level " + name + "=" + level};
        SchemaField& field = FieldFor(schema, name, origin);
        field.fLevelOrigin = origin;
        field.fLevel = LevelOf(level, origin);
    }
    for (const auto& [name, values] : options.fvMissing) {
        const SchemaOrigin origin{DataError::Kind::kOption, "--missing " + name + "=" + values};
        SchemaField& field = FieldFor(schema, name, origin);
        field.fMissingOrigin = origin;
        ParseMissingOption(values, field);
    }
    if (!options.fWeight.empty()) {
        schema.fWeight = options.fWeight;
        schema.fWeightOrigin = {DataError::Kind::kOption, "--weight " + options.fWeight};
    }
}

std::vector<SchemaField> MatchFields(const TableSchema& schema,
                                     const std::vector<std::string>& columns,
                                     const std::string& sourceName) {
    std::unordered_map<std::string, std::size_t> places;
    for (std::size_t place = 0; place < columns.size(); ++place) {
        places.emplace(columns[place], place);
    }
    std::vector<SchemaField> fields(columns.size());
    std::vector<bool> declared(columns.size(), false);
    std::size_t lastPlace = 0;
    bool inOrder = true;
    for (const SchemaField& field : schema.fvFields) {
        const auto found = places.find(field.fName);
        if (found == places.end()) {
            if (schema.fFieldsMatch == FieldsMatch::kSuperset &&
                field.fOrigin.fKind == DataError::Kind::kSchema) {
                continue;
            }
            field.fOrigin.Fail(
                "no column of " + sourceName + " has the name '" + field.fName +
                "'; correct the name" +
                (field.fOrigin.fKind == DataError::Kind::kSchema ? " or remove the field" : ""));
        }
        inOrder = inOrder && found->second >= lastPlace;
        lastPlace = found->second;
        declared[found->second] = true;
        fields[found->second] = field;
    }
    const bool allColumns = schema.fFieldsMatch == FieldsMatch::kExact ||
                            schema.fFieldsMatch == FieldsMatch::kEqual ||
                            schema.fFieldsMatch == FieldsMatch::kSuperset;
    for (std::size_t place = 0; place < columns.size(); ++place) {
        if (declared[place]) {
            continue;
        }
        if (allColumns) {
            schema.fOrigin.Fail("the column '" + columns[place] + "' of " + sourceName +
                                " has no field, as 'fieldsMatch' demands; declare it or use " +
                                "\"partial\"");
        }
        fields[place].fName = columns[place];
        fields[place].fOrigin = schema.fOrigin;
        fields[place].fLevelOrigin = schema.fOrigin;
    }
    if (schema.fFieldsMatch == FieldsMatch::kExact && !inOrder) {
        schema.fOrigin.Fail("the fields are not in the order of the columns of " + sourceName +
                            ", as 'fieldsMatch' \"exact\" demands; reorder them or use \"equal\"");
    }
    for (SchemaField& field : fields) {
        if (!field.fMissing && !schema.fvMissingValues.empty()) {
            field.fMissing = schema.fvMissingValues;
            field.fMissingOrigin = schema.fOrigin;
            for (const SchemaEntry& entry : *field.fMissing) {
                field.fvNoValues.push_back(SchemaValueText(entry.fValue));
            }
        }
    }
    return fields;
}

std::optional<ColumnKind> DeclaredKind(const SchemaField& field) {
    const TypeRow* type = FindType(field.fType);
    return type->fUse == TypeUse::kAsKind ? std::optional(type->fKind) : std::nullopt;
}

bool IsUnusableType(const SchemaField& field) {
    return FindType(field.fType)->fUse == TypeUse::kLeftOut;
}

std::string SchemaValueText(const SchemaValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    if (const auto* flag = std::get_if<bool>(&value)) {
        return *flag ? "true" : "false";
    }
    std::array<char, 32> buffer{};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::get<double>(value)).ptr;
    return {buffer.data(), end};
}

std::optional<KoltObs> ConvertSchemaValue(const SchemaValue& value, ColumnKind kind,
                                          const SchemaField& field) {
    if (kind == ColumnKind::kString) {
        return KoltObs(std::string(TrimTrailingBlanks(SchemaValueText(value))));
    }
    const auto finite = [](double number) {
        return std::isfinite(number) ? std::optional<KoltObs>(number + 0.0) : std::nullopt;
    };
    if (const auto* number = std::get_if<double>(&value)) {
        return finite(*number);
    }
    if (const auto* flag = std::get_if<bool>(&value)) {
        return kind == ColumnKind::kBoolean ? std::optional<KoltObs>(*flag ? 1.0 : 0.0)
                                            : std::nullopt;
    }
    const std::string_view text = TrimBlanks(std::get<std::string>(value));
    const auto isAmong = [text](const std::vector<std::string>& texts) {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    };
    std::optional<double> number;
    switch (kind) {
        case ColumnKind::kBoolean:
            if (isAmong(field.fvTrueTexts)) {
                number = 1;
            } else if (isAmong(field.fvFalseTexts)) {
                number = 0;
            }
            break;
        case ColumnKind::kDate:
            number = ParseDate(text);
            break;
        case ColumnKind::kDateTime:
            number = ParseDateTime(text);
            break;
        case ColumnKind::kTime:
            number = ParseTime(text);
            break;
        default:
            if (const auto written = ParseNumber(text, '.')) {
                number = written->fValue;
            }
    }
    return number ? finite(*number) : std::nullopt;
}

void ApplyField(const SchemaField& field, ColumnKind kind, KOLT_Variable& variable) {
    variable.SetLabel(field.fTitle);
    if (field.fCategories) {
        for (const SchemaEntry& entry : *field.fCategories) {
            const auto value = ConvertSchemaValue(entry.fValue, kind, field);
            if (!value) {
                field.fOrigin.Fail("the category '" + SchemaValueText(entry.fValue) +
                                   "' is no value of a variable of this type");
            }
            if (entry.fLabel) {
                variable.SetValueLabel(*value, *entry.fLabel);
            }
        }
        variable.SetMeasurementLevel(field.fbOrdered ? kLevelOrdinal : kLevelNominal);
    }
    if (field.fLevel != kLevelUnknown) {
        if (field.fLevel == kLevelScale && kind == ColumnKind::kString) {
            field.fLevelOrigin.Fail("the string variable '" + field.fName +
                                    "' cannot have the measurement level scale");
        }
        variable.SetMeasurementLevel(field.fLevel);
    }
    if (field.fMissing || field.fMissingRange) {
        SetMissing(field, kind, variable);
    }
}

std::string_view LevelName(std::int32_t level) {
    for (const auto& [word, number] : kLevels) {
        if (number == level) {
            return word;
        }
    }
    return "unknown";
}

}  // namespace embedded

#include "embedded/data/Describe.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "embedded/data/SchemaJson.h"
#include "embedded/data/TableSchema.h"
#include "embedded/output/DisplayWidth.h"
#include "embedded/output/ShowableText.h"

namespace embedded {
namespace {

std::string_view TypeName(ColumnKind kind) {
    switch (kind) {
        case ColumnKind::kNumber:
            return "numeric";
        case ColumnKind::kBoolean:
            return "boolean";
        case ColumnKind::kDate:
            return "date";
        case ColumnKind::kDateTime:
            return "datetime";
        case ColumnKind::kTime:
            return "time";
        case ColumnKind::kString:
            break;
    }
    return "string";
}

/// What a variable's values amount to.
struct Summary {
    std::int64_t fValid = 0;
    std::int64_t fSystemMissing = 0;
    std::int64_t fUserMissing = 0;
    std::int64_t fDistinct = 0;  // valid values
    std::optional<double> fMin;  // of a numeric variable's valid values
    std::optional<double> fMax;
    bool fbWhole = true;  // every value of a numeric variable, user-missing ones too
};

Summary Summarize(const KOLT_Variable& variable, const Column& column) {
    Summary summary;
    summary.fSystemMissing = column.RowCount() - column.ValidCount();
    const KoltMissingSpec& spec = variable.GetMissingSpec();
    const bool hasUserMissing = spec.fbRange || !spec.fvDiscrete.empty();
    if (!column.IsNumeric()) {
        const std::vector<std::string>& values = column.Categories().Strings();
        std::vector<bool> isMissing(values.size());
        for (std::size_t code = 0; code < values.size(); ++code) {
            isMissing[code] = variable.IsUserMissing(values[code]);
        }
        summary.fDistinct = std::count(isMissing.begin(), isMissing.end(), false);
        for (std::int32_t i = 0; i < column.ChunkCount() && hasUserMissing; ++i) {
            const ColumnChunk chunk = column.Chunk(i);
            for (std::int32_t row = 0; row < chunk.fRows; ++row) {
                if (chunk.IsValid(row) && isMissing[chunk.fCodes[static_cast<std::size_t>(row)]]) {
                    ++summary.fUserMissing;
                }
            }
        }
    } else {
        std::vector<double> missingMet;
        for (std::int32_t i = 0; i < column.ChunkCount(); ++i) {
            for (const double value : column.Chunk(i).fNumbers) {
                if (value == MCMV::gMissingValue) {
                    continue;
                }
                summary.fbWhole = summary.fbWhole && value == std::floor(value);
                if (hasUserMissing && variable.IsUserMissing(value)) {
                    ++summary.fUserMissing;
                    missingMet.push_back(value);
                    continue;
                }
                summary.fMin = std::min(summary.fMin.value_or(value), value);
                summary.fMax = std::max(summary.fMax.value_or(value), value);
            }
        }
        std::sort(missingMet.begin(), missingMet.end());
        missingMet.erase(std::unique(missingMet.begin(), missingMet.end()), missingMet.end());
        summary.fDistinct = column.DistinctCount() - static_cast<std::int64_t>(missingMet.size());
    }
    summary.fValid = column.ValidCount() - summary.fUserMissing;
    return summary;
}

// ---- text ----

// On one line, and unable to steer a terminal.
std::string Shown(std::string_view text) {
    std::string shown = ShowableText(text);
    std::replace(shown.begin(), shown.end(), '\n', ' ');
    return shown;
}

std::string ValueText(const KOLT_Variable& variable, const KoltObs& value) {
    return ConvertObsToString(value, variable.GetFormat(), true);
}

std::string MissingText(const KOLT_Variable& variable) {
    const KoltMissingSpec& spec = variable.GetMissingSpec();
    std::string text;
    if (spec.fbRange) {
        text = ValueText(variable, spec.fLow) + " to " + ValueText(variable, spec.fHigh);
    }
    for (const KoltObs& value : spec.fvDiscrete) {
        text += (text.empty() ? "" : ", ") + ValueText(variable, value);
    }
    return text;
}

// Range of a numeric variable; the first values, with their labels, of one that has labels or is a
// string.
std::string ValuesText(const KOLT_Variable& variable, const Column& column,
                       const Summary& summary) {
    constexpr std::int32_t kMostShown = 6;
    std::string text;
    const bool isScale = variable.GetMeasurementLevel() == kLevelScale;
    if (isScale || (column.IsNumeric() && variable.GetValueLabels().Entries().empty())) {
        if (!summary.fMin) {
            return "";
        }
        text = ValueText(variable, *summary.fMin);
        return *summary.fMin == *summary.fMax ? text
                                              : text + " to " + ValueText(variable, *summary.fMax);
    }
    const ColumnCategories& categories = column.Categories();
    std::int32_t shown = 0;
    for (std::int32_t code = 0; code < categories.Count(); ++code) {
        const KoltObs value = categories.Value(code);
        if (variable.IsUserMissing(value)) {
            continue;
        }
        if (++shown > kMostShown) {
            return text + ", ...";
        }
        const std::string shownValue = ValueText(variable, value);
        text += (text.empty() ? "" : ", ") + (shownValue.empty() ? "''" : shownValue);
        if (const std::string* label = variable.GetValueLabels().Find(value)) {
            text += " (" + *label + ")";
        }
    }
    return text;
}

using Row = std::vector<std::string>;

struct TableColumn {
    const char* fTitle;
    bool fbRight;     // numbers
    bool fbFlexible;  // gives way when the table is too wide
};
constexpr std::array<TableColumn, 8> kTable = {{{"Variable", false, true},
                                                {"Type", false, false},
                                                {"Level", false, false},
                                                {"Valid", true, false},
                                                {"Missing", true, false},
                                                {"Distinct", true, false},
                                                {"Values", false, true},
                                                {"Label", false, true}}};

// Widths of the columns: as wide as their texts. When that is too wide, values and labels give way
// first, the widest before the others, and names only when those have become narrow.
std::vector<std::size_t> FitWidths(const std::vector<Row>& rows, std::size_t width) {
    constexpr std::size_t kNarrow = 16;
    constexpr std::size_t kNarrowest = 8;
    std::vector<std::size_t> widths(kTable.size(), 0);
    for (const Row& row : rows) {
        for (std::size_t at = 0; at < row.size(); ++at) {
            widths[at] = std::max(widths[at], DisplayWidth(row[at]));
        }
    }
    std::size_t total = 2 * (kTable.size() - 1);
    for (const std::size_t each : widths) {
        total += each;
    }
    const auto widest = [&widths](std::size_t first, std::size_t least) {
        std::size_t found = kTable.size();
        for (std::size_t at = first; at < kTable.size(); ++at) {
            if (kTable[at].fbFlexible && widths[at] > least &&
                (found == kTable.size() || widths[at] > widths[found])) {
                found = at;
            }
        }
        return found;
    };
    for (; total > width; --total) {
        std::size_t column = widest(1, kNarrow);
        if (column == kTable.size()) {
            column = widest(0, kNarrowest);
        }
        if (column == kTable.size()) {
            break;
        }
        --widths[column];
    }
    return widths;
}

void AppendRow(const Row& row, const std::vector<std::size_t>& widths, std::string& out) {
    std::vector<std::vector<std::string>> cells;
    std::size_t lines = 1;
    for (std::size_t at = 0; at < row.size(); ++at) {
        cells.push_back(WrapText(row[at], std::max<std::size_t>(widths[at], 1)));
        lines = std::max(lines, cells.back().size());
    }
    for (std::size_t line = 0; line < lines; ++line) {
        std::string text;
        for (std::size_t at = 0; at < row.size(); ++at) {
            const std::string cell = line < cells[at].size() ? cells[at][line] : "";
            const std::size_t used = DisplayWidth(cell);
            const std::string blanks(widths[at] > used ? widths[at] - used : 0, ' ');
            text += at == 0 ? "" : "  ";
            text += kTable[at].fbRight ? blanks + cell : cell + blanks;
        }
        text.erase(text.find_last_not_of(' ') + 1);
        out += text + "\n";
    }
}

void AppendParagraph(const std::string& text, std::size_t width, std::string& out) {
    for (const std::string& line : WrapText(Shown(text), width, 2)) {
        out += line + "\n";
    }
}

std::string Plural(std::int64_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string SplitText(const DataSet& data) {
    std::string text;
    for (const std::int32_t index : data.SplitIndices()) {
        text += (text.empty() ? "" : ", ") + data.Variable(index).GetName();
    }
    return text;
}

// ---- JSON ----

SchemaJson ValueJson(const KoltObs& value) {
    if (const auto* text = std::get_if<std::string>(&value)) {
        return *text;
    }
    const double number = std::get<double>(value);
    constexpr double kLargest = 9007199254740992.0;
    if (number ==
        static_cast<double>(static_cast<std::int64_t>(std::clamp(number, -kLargest, kLargest)))) {
        return static_cast<std::int64_t>(number);  // 1, not 1.0
    }
    return number;
}

// As a schema writes a value of this kind.
SchemaJson SchemaValueJson(const KOLT_Variable& variable, ColumnKind kind, const KoltObs& value) {
    switch (kind) {
        case ColumnKind::kBoolean:
            return std::get<double>(value) != 0;
        case ColumnKind::kDate:
        case ColumnKind::kDateTime:
        case ColumnKind::kTime: {
            // A number where there is no calendar form.
            const std::string text = ValueText(variable, value);
            return ConvertSchemaValue(text, kind, {}) == value ? SchemaJson(text)
                                                               : ValueJson(value);
        }
        default:
            return ValueJson(value);
    }
}

std::string_view SchemaType(ColumnKind kind, const Summary& summary) {
    if (kind != ColumnKind::kNumber) return TypeName(kind);
    // Without values nothing says that they will be whole.
    return summary.fbWhole && summary.fValid > 0 ? "integer" : "number";
}

// The entry of a list by its value, made when it is missing.
SchemaJson Entry(const SchemaJson& value, const std::string* label) {
    if (label == nullptr) {
        return value;
    }
    SchemaJson entry = SchemaJson::object();
    entry["value"] = value;
    entry["label"] = *label;
    return entry;
}

}  // namespace

std::string DescribeAsText(const DataSet& data, std::int32_t width) {
    const std::size_t columns = static_cast<std::size_t>(std::max(width, 40));
    std::string out;
    AppendParagraph(data.SourceName() + ": " + Plural(data.RowCount(), "row") + ", " +
                        Plural(data.ColumnCount(), "variable"),
                    columns, out);
    if (data.WeightIndex() >= 0) {
        AppendParagraph("Weight: " + data.Variable(data.WeightIndex()).GetName(), columns, out);
    }
    if (!data.SplitIndices().empty()) {
        AppendParagraph("Split by: " + SplitText(data), columns, out);
    }
    std::vector<Row> rows(1);
    for (const TableColumn& column : kTable) {
        rows[0].emplace_back(column.fTitle);
    }
    for (std::int32_t index = 0; index < data.ColumnCount(); ++index) {
        const KOLT_Variable& variable = data.Variable(index);
        const Column& column = data.GetColumn(index);
        const Summary summary = Summarize(variable, column);
        std::string values = ValuesText(variable, column, summary);
        if (const std::string missing = MissingText(variable); !missing.empty()) {
            values += (values.empty() ? "missing: " : "; missing: ") + missing;
        }
        rows.push_back(
            {Shown(variable.GetName()), std::string(TypeName(data.Kind(index))),
             std::string(LevelName(variable.GetMeasurementLevel())), std::to_string(summary.fValid),
             std::to_string(summary.fSystemMissing + summary.fUserMissing),
             std::to_string(summary.fDistinct), Shown(values), Shown(variable.GetLabel())});
    }
    if (data.ColumnCount() > 0) {
        const std::vector<std::size_t> widths = FitWidths(rows, columns);
        Row rule;
        for (const std::size_t each : widths) {
            rule.emplace_back(each, '-');
        }
        out += "\n";
        AppendRow(rows[0], widths, out);
        AppendRow(rule, widths, out);
        for (std::size_t at = 1; at < rows.size(); ++at) {
            AppendRow(rows[at], widths, out);
        }
    }
    if (!data.Notes().empty()) {
        out += "\nNotes\n";
        for (const DataNote& note : data.Notes()) {
            AppendParagraph("- " + note.fText, columns, out);
        }
    }
    return out;
}

std::string DescribeAsJson(const DataSet& data) {
    SchemaJson root = SchemaJson::object();
    root["source"] = data.SourceName();
    root["rows"] = data.RowCount();
    root["weight"] = data.WeightIndex() < 0
                         ? SchemaJson(nullptr)
                         : SchemaJson(data.Variable(data.WeightIndex()).GetName());
    root["split"] = SchemaJson::array();
    for (const std::int32_t index : data.SplitIndices()) {
        root["split"].push_back(data.Variable(index).GetName());
    }
    root["variables"] = SchemaJson::array();
    for (std::int32_t index = 0; index < data.ColumnCount(); ++index) {
        const KOLT_Variable& variable = data.Variable(index);
        const Summary summary = Summarize(variable, data.GetColumn(index));
        SchemaJson entry = SchemaJson::object();
        entry["name"] = variable.GetName();
        entry["label"] = variable.GetLabel();
        entry["type"] = TypeName(data.Kind(index));
        entry["level"] = LevelName(variable.GetMeasurementLevel());
        entry["valid"] = summary.fValid;
        entry["systemMissing"] = summary.fSystemMissing;
        entry["userMissing"] = summary.fUserMissing;
        entry["distinct"] = summary.fDistinct;
        if (variable.GetType() == 0) {
            entry["min"] = summary.fMin ? ValueJson(*summary.fMin) : SchemaJson(nullptr);
            entry["max"] = summary.fMax ? ValueJson(*summary.fMax) : SchemaJson(nullptr);
        } else {
            entry["bytes"] = variable.GetType();
        }
        const KoltMissingSpec& spec = variable.GetMissingSpec();
        if (spec.fbRange) {
            entry["missingRange"] = {ValueJson(spec.fLow), ValueJson(spec.fHigh)};
        }
        if (!spec.fvDiscrete.empty()) {
            entry["missingValues"] = SchemaJson::array();
            for (const KoltObs& value : spec.fvDiscrete) {
                entry["missingValues"].push_back(ValueJson(value));
            }
        }
        if (!variable.GetValueLabels().Entries().empty()) {
            entry["labels"] = SchemaJson::array();
            for (const auto& [value, label] : variable.GetValueLabels().Entries()) {
                entry["labels"].push_back(Entry(ValueJson(value), &label));
            }
        }
        root["variables"].push_back(std::move(entry));
    }
    root["notes"] = SchemaJson::array();
    for (const DataNote& note : data.Notes()) {
        SchemaJson entry = SchemaJson::object();
        entry["variable"] = note.fColumn < 0 ? SchemaJson(nullptr)
                                             : SchemaJson(data.Variable(note.fColumn).GetName());
        entry["count"] = note.fCount;
        entry["firstRow"] =
            note.fFirstRow < 0 ? SchemaJson(nullptr) : SchemaJson(note.fFirstRow + 1);
        entry["text"] = note.fText;
        root["notes"].push_back(std::move(entry));
    }
    return Indented(root);
}

namespace {

bool IsNoValue(const std::string& text, ColumnKind kind) {
    return text.empty() || !ConvertSchemaValue(text, kind, {});
}

// Writes what the variable is into its field, over what the field may have said before.
void DraftField(const DataSet& data, std::int32_t index, const SchemaJson& missingOfAll,
                SchemaJson& field) {
    const KOLT_Variable& variable = data.Variable(index);
    const Column& column = data.GetColumn(index);
    const ColumnKind kind = data.Kind(index);
    const Summary summary = Summarize(variable, column);
    const auto valueJson = [&](const KoltObs& value) {
        return SchemaValueJson(variable, kind, value);
    };
    field["name"] = variable.GetName();
    if (!variable.GetLabel().empty()) {
        field["title"] = variable.GetLabel();
    }
    // A type that the data agreed with is kept: it may say more, such as year.
    if (!field.contains("type") || field["type"] == "any") {
        field["type"] = SchemaType(kind, summary);
    }
    field["measurementLevel"] = LevelName(variable.GetMeasurementLevel());

    const KoltMissingSpec& spec = variable.GetMissingSpec();
    const auto& labels = variable.GetValueLabels();
    if (!field.contains("categories") && kind != ColumnKind::kBoolean) {
        // Values with labels, and where there are few, all values: ready for labels to be added.
        std::map<KoltObs, const std::string*> values;
        for (const auto& [value, label] : labels.Entries()) {
            values[value] = &label;
        }
        if (variable.GetMeasurementLevel() != kLevelScale &&
            summary.fDistinct <= data.NominalMax()) {
            const ColumnCategories& met = column.Categories();
            for (std::int32_t code = 0; code < met.Count(); ++code) {
                values.emplace(met.Value(code), nullptr);
            }
        }
        SchemaJson categories = SchemaJson::array();
        for (const auto& [value, label] : values) {
            if (!variable.IsUserMissing(value)) {
                categories.push_back(Entry(valueJson(value), label));
            }
        }
        if (!categories.empty()) {
            field["categories"] = std::move(categories);
        }
    }
    if (spec.fbRange) {
        field["missingRange"] = {valueJson(spec.fLow), valueJson(spec.fHigh)};
    } else {
        field.erase("missingRange");
    }
    SchemaJson missing = SchemaJson::array();
    for (const KoltObs& value : spec.fvDiscrete) {
        missing.push_back(Entry(valueJson(value), labels.Find(value)));
    }
    // Texts that are no values of the variable stay declared as such.
    const bool hadList = field.contains("missingValues");
    if (hadList) {
        for (const SchemaJson& entry : field["missingValues"]) {
            const SchemaJson& value = entry.is_object() ? entry["value"] : entry;
            if (value.is_string() && IsNoValue(value.get<std::string>(), kind)) {
                missing.push_back(entry);
            }
        }
    } else if (!missing.empty()) {
        // A list of the variable's own replaces that of all variables.
        for (const SchemaJson& text : missingOfAll) {
            missing.push_back(text);
        }
    }
    if (hadList || !missing.empty()) {
        field["missingValues"] = std::move(missing);
    }
}

// The schema that came with the data, or an empty one.
SchemaJson SchemaAsRead(const DataSet& data) {
    if (!data.SchemaText().empty()) return SchemaJson::parse(data.SchemaText());
    SchemaJson root = SchemaJson::object();
    root["$schema"] = "https://datapackage.org/profiles/2.0/tableschema.json";
    return root;
}

// Completes the schema; texts are those without a value in every column.
std::string Draft(const DataSet& data, SchemaJson root, const std::vector<std::string>& texts) {
    SchemaJson& missingTexts = root["missingValues"];
    if (missingTexts.is_null()) {
        missingTexts = SchemaJson::array();
    }
    SchemaJson missingOfAll = SchemaJson::array();
    for (const std::string& text : texts) {
        if (std::find(missingTexts.begin(), missingTexts.end(), text) == missingTexts.end()) {
            missingTexts.push_back(text);
        }
    }
    for (const SchemaJson& entry : missingTexts) {
        if (!entry.is_object()) {
            missingOfAll.push_back(entry);
        }
    }
    if (missingTexts.empty()) {
        root.erase("missingValues");
    }
    // Fields keep their places, those of no variable too; the rest follows in the order of the
    // data.
    SchemaJson& fields = root["fields"];
    if (fields.is_null()) {
        fields = SchemaJson::array();
    }
    std::vector<bool> drafted(static_cast<std::size_t>(data.ColumnCount()), false);
    for (SchemaJson& field : fields) {
        const std::int32_t index = data.FindVariable(field["name"].get<std::string>());
        if (index >= 0) {
            drafted[static_cast<std::size_t>(index)] = true;
            DraftField(data, index, missingOfAll, field);
        }
    }
    for (std::int32_t index = 0; index < data.ColumnCount(); ++index) {
        if (!drafted[static_cast<std::size_t>(index)]) {
            fields.push_back(SchemaJson::object());
            DraftField(data, index, missingOfAll, fields.back());
        }
    }
    if (data.WeightIndex() >= 0) {
        root["weight"] = data.Variable(data.WeightIndex()).GetName();
    }
    if (!data.SplitIndices().empty()) {
        root["split"] = SchemaJson::array();
        for (const std::int32_t index : data.SplitIndices()) {
            root["split"].push_back(data.Variable(index).GetName());
        }
    }
    return Indented(root);
}

}  // namespace

std::string DraftSchema(const DataSet& data) {
    return Draft(data, SchemaAsRead(data), data.MissingTexts());
}

std::string SchemaOf(const DataSet& data) {
    SchemaJson root = SchemaAsRead(data);
    root.erase("missingValues");
    root.erase("fieldsMatch");
    SchemaJson fields = SchemaJson::array();
    if (root.contains("fields")) {
        for (SchemaJson& field : root["fields"]) {
            if (data.FindVariable(field["name"].get<std::string>()) < 0) continue;
            // Written in the form of the cells that were read; drafted anew where it is wanted.
            for (const char* property :
                 {"type", "format", "decimalChar", "groupChar", "bareNumber", "trueValues",
                  "falseValues", "missingValues", "categories", "constraints"}) {
                field.erase(property);
            }
            fields.push_back(std::move(field));
        }
    }
    root["fields"] = std::move(fields);
    return Draft(data, std::move(root), {});
}

}  // namespace embedded

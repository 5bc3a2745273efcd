#ifndef PREDSEL_EMBEDDED_DATA_TABLESCHEMA_H
#define PREDSEL_EMBEDDED_DATA_TABLESCHEMA_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "embedded/data/DataError.h"
#include "embedded/data/DataSet.h"
#include "embedded/data/OpenOptions.h"

namespace embedded {

/// A value as a schema writes it.
using SchemaValue = std::variant<double, bool, std::string>;

struct SchemaEntry {
    SchemaValue fValue;
    std::optional<std::string> fLabel;
};

/// Where something is declared: begins every message about it.
struct SchemaOrigin {
    DataError::Kind fKind = DataError::Kind::kSchema;
    std::string fText;

    [[noreturn]] void Fail(const std::string& message) const {
        throw DataError(fKind, fText + ": " + message);
    }
};

/// What a schema, and options beside it, say of one column.
struct SchemaField {
    std::string fName;
    SchemaOrigin fOrigin;
    std::string fTitle;
    std::string fType = "any";
    std::string fFormat = "default";
    std::int32_t fLevel = kLevelUnknown;
    SchemaOrigin fLevelOrigin;
    std::optional<std::vector<SchemaEntry>> fCategories;
    bool fbOrdered = false;
    std::optional<std::vector<SchemaEntry>> fMissing;
    bool fbMissingOfAll = true;  // the missing texts of all columns hold for this one too
    /// Cells with these texts are no values, and missing if the column is no string.
    std::vector<std::string> fvNoValues;
    std::optional<std::pair<SchemaValue, SchemaValue>> fMissingRange;
    SchemaOrigin fMissingOrigin;
    std::vector<std::string> fvTrueTexts = {"true", "True", "TRUE", "1"};
    std::vector<std::string> fvFalseTexts = {"false", "False", "FALSE", "0"};
    char fDecimalMark = '\0';  // '\0' when not declared
    char fGroupMark = '\0';
};

/// How the fields of a schema and the columns of the data must agree. Names of fields that no
/// column has are allowed by kSuperset only.
enum class FieldsMatch {
    kPartial,  // columns without a field are allowed
    kExact,    // the same names in the same order
    kEqual,    // the same names in any order
    kSubset,   // as kPartial
    kSuperset  // each column has a field
};

/// A Table Schema (Data Package, version 2) with our properties measurementLevel, missingRange,
/// weight and split.
struct TableSchema {
    std::string fText;  // as read; empty when there is none
    SchemaOrigin fOrigin;
    FieldsMatch fFieldsMatch = FieldsMatch::kPartial;
    std::vector<SchemaField> fvFields;
    std::vector<std::string> fvMissingTexts;   // of all columns, without label
    std::vector<SchemaEntry> fvMissingValues;  // of all columns, with label
    std::string fWeight;
    SchemaOrigin fWeightOrigin;
    std::vector<std::string> fvSplit;
};

/// Reads a schema. path stands in messages. Throws DataError of kind kSchema.
TableSchema ParseTableSchema(std::string text, const std::string& path);

/// Lets the options' level, missing values and weight replace what the schema says. Throws
/// DataError of kind kOption.
void ApplyOptions(const OpenOptions& options, TableSchema& schema);

/// For each column what is declared of it, in the order of the columns. Throws DataError when names
/// do not agree.
std::vector<SchemaField> MatchFields(const TableSchema& schema,
                                     const std::vector<std::string>& columns,
                                     const std::string& sourceName);

/// The kind that a field declares; none when it leaves it open.
std::optional<ColumnKind> DeclaredKind(const SchemaField& field);
/// Whether the field's type is one whose columns are left out.
bool IsUnusableType(const SchemaField& field);

/// The value as a value of a column of that kind; none when it is none.
std::optional<KoltObs> ConvertSchemaValue(const SchemaValue& value, ColumnKind kind,
                                          const SchemaField& field);
/// The value as it would stand in a text.
std::string SchemaValueText(const SchemaValue& value);

/// Writes what the field declares into the variable. Throws DataError when it does not fit.
void ApplyField(const SchemaField& field, ColumnKind kind, KOLT_Variable& variable);

/// "nominal", "ordinal", "scale" or "unknown".
std::string_view LevelName(std::int32_t level);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_TABLESCHEMA_H

#include "embedded/data/OpenDataSet.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "embedded/data/ArrowColumn.h"
#include "embedded/data/CellText.h"
#include "embedded/data/DelimitedText.h"
#include "embedded/data/FileReaders.h"
#include "embedded/data/ParquetFile.h"
#include "embedded/data/ReadColumn.h"
#include "embedded/data/SourceBytes.h"
#include "embedded/data/TableSchema.h"
#include "embedded/data/Utf8.h"
#include "embedded/data/VariableDefaults.h"

namespace embedded {
namespace {

/// Where a row is, in the words of a message: "line 17" or "row 16".
using RowPlace = std::function<std::string(std::int64_t row)>;

std::string RowNumber(std::int64_t row) { return "row " + std::to_string(row + 1); }

// A cell or name in a message.
std::string Quoted(std::string_view text) {
    return "'" + ReplaceInvalidUtf8(Shortened(text, 40)) + "'";
}

std::string JoinNumbers(const std::vector<std::size_t>& numbers) {
    std::string text;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        text += i == 0 ? "" : i + 1 == numbers.size() ? " and " : ", ";
        text += std::to_string(numbers[i]);
    }
    return text;
}

// Cases are counted in 32 bits throughout.
void CheckRowCount(std::int64_t rows, const std::string& source) {
    constexpr std::int64_t kMostRows = std::numeric_limits<std::int32_t>::max();
    if (rows > kMostRows) {
        throw DataError(DataError::Kind::kContent, source + ": has more than " +
                                                       std::to_string(kMostRows) +
                                                       " records; split it into smaller files");
    }
}

void CheckNames(const std::vector<std::string>& names, const std::string& source) {
    std::map<std::string, std::vector<std::size_t>> places;
    for (std::size_t at = 0; at < names.size(); ++at) {
        places[names[at]].push_back(at + 1);
    }
    if (const auto empty = places.find(""); empty != places.end()) {
        const bool one = empty->second.size() == 1;
        throw DataError(DataError::Kind::kContent, source + ": " + (one ? "column " : "columns ") +
                                                       JoinNumbers(empty->second) +
                                                       (one ? " has" : " have") +
                                                       " no name; give every column a name");
    }
    std::string twice;
    for (const auto& [name, where] : places) {
        if (where.size() > 1) {
            twice += (twice.empty() ? "" : ", ") + Quoted(name) + " (columns " +
                     JoinNumbers(where) + ")";
        }
    }
    if (!twice.empty()) {
        throw DataError(DataError::Kind::kContent,
                        source + ": several columns have the same name: " + twice +
                            "; give every column a name of its own");
    }
}

std::string_view KindName(ColumnKind kind) {
    switch (kind) {
        case ColumnKind::kNumber:
            return "numbers";
        case ColumnKind::kBoolean:
            return "booleans";
        case ColumnKind::kDate:
            return "dates";
        case ColumnKind::kDateTime:
            return "dates with times";
        case ColumnKind::kTime:
            return "times";
        case ColumnKind::kString:
            break;
    }
    return "texts";
}

bool IsWholeType(const SchemaField& field) {
    return field.fType == "integer" || field.fType == "year";
}

// Texts that are system-missing in a column.
TextSet MissingTexts(const SchemaField& field, const TableSchema& schema,
                     const OpenOptions& options) {
    TextSet texts(options.fvNaTexts.begin(), options.fvNaTexts.end());
    if (field.fbMissingOfAll) {
        texts.insert(schema.fvMissingTexts.begin(), schema.fvMissingTexts.end());
    }
    if (std::find(field.fvNoValues.begin(), field.fvNoValues.end(), "") != field.fvNoValues.end()) {
        texts.insert("");
    }
    return texts;
}

TextColumnRules RulesFor(const SchemaField& field, const TableSchema& schema,
                         const OpenOptions& options, char delimiter) {
    TextColumnRules rules;
    rules.fDeclared = DeclaredKind(field);
    rules.fbWholeOnly = IsWholeType(field);
    const char mark =
        field.fDecimalMark != '\0' ? field.fDecimalMark : options.fDecimalMark.value_or('\0');
    rules.fbPointMark = mark != ',';
    // Between commas, a comma within quotes more often groups digits.
    rules.fbCommaMark = mark == ',' || (mark == '\0' && delimiter != ',');
    rules.fGroupMark = field.fGroupMark;
    rules.fMissingTexts = MissingTexts(field, schema, options);
    rules.fNeutralTexts = {field.fvNoValues.begin(), field.fvNoValues.end()};
    if (rules.fDeclared == ColumnKind::kBoolean) {
        rules.fTrueTexts = {field.fvTrueTexts.begin(), field.fvTrueTexts.end()};
        rules.fFalseTexts = {field.fvFalseTexts.begin(), field.fvFalseTexts.end()};
    }
    return rules;
}

/// Puts a data set together from columns as they were read.
class Assembly {
 public:
    Assembly(std::string source, const TableSchema& schema, const OpenOptions& options,
             RowPlace place)
        : fSchema(schema), fPlace(std::move(place)) {
        fData.SetSourceName(std::move(source));
        fData.SetNominalMax(options.fNominalMax);
        fData.SetSchemaText(schema.fText);
        fData.SetMissingTexts(options.fvNaTexts);
    }

    void AddNote(DataNote note) { fData.AddNote(std::move(note)); }

    void LeaveOut(const std::string& name, const std::string& type) {
        DataNote note;
        note.fKind = DataNote::Kind::kUnusableColumn;
        note.fText =
            Quoted(name) + " was left out: columns of the type " + type + " cannot be used.";
        fData.AddNote(std::move(note));
        fLeftOut.emplace(name, type);
    }

    void Add(const SchemaField& field, ReadColumn read) {
        const std::int32_t index = fData.ColumnCount();
        NoteOddity(field, index, DataNote::Kind::kInfinite, read.fInfinite,
                   "infinite or too large for a number; treated as missing");
        NoteOddity(field, index, DataNote::Kind::kInexactInteger, read.fInexact,
                   "whole and at or beyond 2^53, where doubles may round whole numbers");
        NoteOddity(field, index, DataNote::Kind::kUndecodable, read.fUndecodable,
                   "not valid text in the file's encoding; shown with \xEF\xBF\xBD");
        if (read.fKind == ColumnKind::kString && !DeclaredKind(field)) {
            NoteStrayText(field, index, read.fColumn);
        }
        KOLT_Variable variable = NewVariable(field.fName, read.fColumn, read.fKind, read.fDecimals);
        if (read.fbOrdered) {
            variable.SetMeasurementLevel(kLevelOrdinal);
        }
        ApplyField(field, read.fKind, variable);
        fData.AddColumn(std::move(variable), std::move(read.fColumn), read.fKind);
    }

    DataSet Finish() && {
        if (!fSchema.fWeight.empty()) {
            const std::int32_t index = Find(fSchema.fWeight, fSchema.fWeightOrigin);
            if (fData.Variable(index).GetType() != 0) {
                fSchema.fWeightOrigin.Fail("the weight variable " + Quoted(fSchema.fWeight) +
                                           " is a string; a numeric variable is needed");
            }
            fData.SetWeightIndex(index);
        }
        std::vector<std::int32_t> splits;
        SchemaOrigin splitOrigin = fSchema.fOrigin;
        splitOrigin.fText += ": 'split'";
        for (const std::string& name : fSchema.fvSplit) {
            splits.push_back(Find(name, splitOrigin));
        }
        fData.SetSplitIndices(std::move(splits));
        fData.SettleMeasurementLevels();
        return std::move(fData);
    }

 private:
    std::int32_t Find(const std::string& name, const SchemaOrigin& origin) const {
        const std::int32_t index = fData.FindVariable(name);
        if (index >= 0) {
            return index;
        }
        const auto leftOut = fLeftOut.find(name);
        origin.Fail(leftOut == fLeftOut.end()
                        ? "no column of " + fData.SourceName() + " has the name " + Quoted(name)
                        : "the column " + Quoted(name) + " has the type " + leftOut->second +
                              " and cannot be used");
    }

    void NoteOddity(const SchemaField& field, std::int32_t index, DataNote::Kind kind,
                    const Oddity& oddity, const std::string& what) {
        if (oddity.fCount == 0) {
            return;
        }
        DataNote note{kind, index, oddity.fCount, oddity.fFirstRow, ""};
        note.fText = Quoted(field.fName) + ": " + std::to_string(oddity.fCount) +
                     (oddity.fCount == 1 ? " value is " : " values are ") + what + ". First in " +
                     fPlace(oddity.fFirstRow) + ".";
        fData.AddNote(std::move(note));
    }

    // Tells which cell kept a column of numbers from being numeric: when at least half of the
    // values are numbers.
    void NoteStrayText(const SchemaField& field, std::int32_t index, const Column& column) {
        enum class Says { kNothing, kNumber, kText };
        const std::vector<std::string>& values = column.Categories().Strings();
        std::vector<Says> says(values.size(), Says::kNothing);
        std::size_t texts = 0;
        std::string onlyText;
        for (std::size_t code = 0; code < values.size(); ++code) {
            const std::string_view trimmed = TrimBlanks(values[code]);
            if (trimmed.empty()) {
                continue;
            }
            const bool isNumber =
                ParseNumber(trimmed, '.').has_value() || ParseNumber(trimmed, ',').has_value();
            says[code] = isNumber ? Says::kNumber : Says::kText;
            if (!isNumber) {
                ++texts;
                onlyText = values[code];
            }
        }
        if (std::find(says.begin(), says.end(), Says::kNumber) == says.end() || texts == 0) {
            return;
        }
        std::int64_t numbers = 0;
        Oddity stray;
        std::string firstText;
        for (std::int32_t i = 0; i < column.ChunkCount(); ++i) {
            const ColumnChunk chunk = column.Chunk(i);
            for (std::int32_t row = 0; row < chunk.fRows; ++row) {
                const std::uint32_t code = chunk.fCodes[static_cast<std::size_t>(row)];
                if (!chunk.IsValid(row) || says[code] == Says::kNothing) {
                    continue;
                }
                if (says[code] == Says::kNumber) {
                    ++numbers;
                    continue;
                }
                if (stray.fCount == 0) {
                    firstText = values[code];
                }
                stray.Note(chunk.fFirstRow + row);
            }
        }
        if (stray.fCount == 0 || numbers < stray.fCount) {
            return;
        }
        DataNote note{DataNote::Kind::kStrayText, index, stray.fCount, stray.fFirstRow, ""};
        note.fText = Quoted(field.fName) + ": the text " + Quoted(firstText) + " in " +
                     fPlace(stray.fFirstRow) + " made it a string variable; " +
                     std::to_string(numbers) + " of " + std::to_string(numbers + stray.fCount) +
                     " values are numbers.";
        if (texts == 1) {
            note.fText += " If " + Quoted(onlyText) + " stands for a missing value, use --na " +
                          Shortened(onlyText, 40) + ".";
        }
        fData.AddNote(std::move(note));
    }

    const TableSchema& fSchema;
    RowPlace fPlace;
    DataSet fData;
    std::unordered_map<std::string, std::string> fLeftOut;  // name to type
};

// ---- delimited text ----

// The header's columns in the dictionary. A fault in the records goes before one in the names,
// which it may explain.
std::vector<SchemaField> FieldsOf(const DelimitedText& table, const TableSchema& schema,
                                  const std::string& source) {
    try {
        CheckNames(table.Names(), source);
        return MatchFields(schema, table.Names(), source);
    } catch (const DataError&) {
        table.CheckRecords();
        throw;
    }
}

DataSet ReadText(const SourceBytes& file, const std::string& source, const TableSchema& schema,
                 const OpenOptions& options) {
    const DelimitedText table(file.Get(), options, source, &file);
    const std::vector<SchemaField> fields = FieldsOf(table, schema, source);
    CheckRowCount(table.RowCount(), source);
    const RowPlace place = [&table](std::int64_t row) {
        return "line " + std::to_string(table.LineOfRow(row));
    };
    Assembly assembly(source, schema, options, place);
    for (const DataNote& note : table.Notes()) {
        assembly.AddNote(note);
    }
    std::vector<std::unique_ptr<TextColumn>> columns;
    for (const SchemaField& field : fields) {
        columns.push_back(IsUnusableType(field)
                              ? nullptr
                              : std::make_unique<TextColumn>(
                                    RulesFor(field, schema, options, table.Dialect().fDelimiter)));
    }
    std::vector<DelimitedText::Outcome> outcomes =
        table.Read(std::move(columns), std::make_shared<ColumnMemory>(options.fMemory));
    for (std::size_t at = 0; at < outcomes.size(); ++at) {
        const SchemaField& field = fields[at];
        if (const auto& fault = outcomes[at].fFault) {
            field.fOrigin.Fail("the type is " + field.fType + ", but " + place(fault->fRow) +
                               " of " + source + " has " + Quoted(fault->fCell) +
                               "; correct the cell or the type" +
                               ", or declare the text in 'missingValues'");
        }
        if (!outcomes[at].fRead) {
            assembly.LeaveOut(field.fName, field.fType);
        }
    }
    for (std::size_t at = 0; at < outcomes.size(); ++at) {
        if (outcomes[at].fRead) {
            assembly.Add(fields[at], *std::move(outcomes[at].fRead));
            outcomes[at].fRead.reset();
        }
    }
    return std::move(assembly).Finish();
}

// ---- typed batches ----

// The first row whose value is not whole, or for booleans neither 0 nor 1; -1 when there is none.
std::int64_t FirstMisfit(const Column& column, bool boolean) {
    ColumnBuffer buffer;
    for (std::int32_t i = 0; i < column.ChunkCount(); ++i) {
        const ColumnChunk chunk = column.Chunk(i, buffer);
        for (std::int32_t row = 0; row < chunk.fRows; ++row) {
            const double value = chunk.fNumbers[static_cast<std::size_t>(row)];
            const bool fits = boolean ? value == 0 || value == 1 : value == std::floor(value);
            if (chunk.IsValid(row) && !fits) {
                return chunk.fFirstRow + row;
            }
        }
    }
    return -1;
}

// Checks a column that came with a type against the declared one. Numbers may be declared booleans.
void Reconcile(const SchemaField& field, const std::string& source, ReadColumn& read) {
    const std::optional<ColumnKind> declared = DeclaredKind(field);
    if (!declared) {
        return;
    }
    const bool asBoolean = declared == ColumnKind::kBoolean && read.fKind == ColumnKind::kNumber;
    if (declared != read.fKind && !asBoolean) {
        field.fOrigin.Fail("the type is " + field.fType + ", but the column of " + source +
                           " holds " + std::string(KindName(read.fKind)) + "; correct the type");
    }
    if (asBoolean || (IsWholeType(field) && read.fKind == ColumnKind::kNumber)) {
        const std::int64_t row = FirstMisfit(read.fColumn, asBoolean);
        if (row >= 0) {
            field.fOrigin.Fail("the type is " + field.fType + ", but " + RowNumber(row) + " of " +
                               source + " has " +
                               SchemaValueText(std::get<double>(read.fColumn.Value(row))) +
                               "; correct the type");
        }
        read.fKind = *declared;
    }
}

// In words, for the note on a column that is left out.
std::string TypeName(const ArrowSchema& schema) {
    const std::string_view format = schema.format;
    const auto starts = [format](std::string_view prefix) {
        return format.substr(0, prefix.size()) == prefix;
    };
    if (schema.dictionary != nullptr) {
        return "dictionary";
    }
    if (starts("+l") || starts("+L") || starts("+w") || starts("+v")) {
        return "list";
    }
    if (starts("+s")) {
        return "struct";
    }
    if (starts("+m")) {
        return "map";
    }
    if (starts("+u")) {
        return "union";
    }
    if (starts("ti")) {
        return "interval";
    }
    return "'" + std::string(format) + "' (Arrow's notation)";
}

// The columns of a stream or of a Parquet file: the other one is null.
DataSet ReadBatches(const ArrowStream* stream, const ParquetFile* parquet,
                    const std::string& source, const TableSchema& schema,
                    const OpenOptions& options) {
    const OwnedArrowSchema owned = parquet != nullptr ? parquet->Schema() : stream->Schema();
    const ArrowSchema& root = owned.Get();
    if (std::string_view(root.format) != "+s") {
        throw DataError(DataError::Kind::kContent,
                        source + ": its batches are no tables with columns");
    }
    std::vector<std::string> names;
    for (std::int64_t at = 0; at < root.n_children; ++at) {
        const char* name = root.children[at]->name;
        names.push_back(ReplaceInvalidUtf8(name == nullptr ? "" : name));
    }
    CheckNames(names, source);
    const std::vector<SchemaField> fields = MatchFields(schema, names, source);
    Assembly assembly(source, schema, options, RowNumber);

    std::vector<TextSet> missingTexts;
    for (const SchemaField& field : fields) {
        missingTexts.push_back(MissingTexts(field, schema, options));
    }
    std::vector<std::unique_ptr<ArrowColumn>> columns;
    for (std::size_t at = 0; at < fields.size(); ++at) {
        const ArrowSchema& type = *root.children[at];
        columns.push_back(IsUnusableType(fields[at]) ? nullptr
                                                     : ArrowColumn::Make(type, &missingTexts[at]));
        if (!columns.back()) {
            assembly.LeaveOut(names[at],
                              IsUnusableType(fields[at]) ? fields[at].fType : TypeName(type));
        }
    }
    const auto memory = std::make_shared<ColumnMemory>(options.fMemory);
    std::vector<std::optional<ReadColumn>> read(columns.size());
    if (parquet != nullptr) {
        CheckRowCount(parquet->RowCount(), source);
        std::vector<bool> wanted;
        for (const auto& column : columns) {
            wanted.push_back(column != nullptr);
        }
        read = parquet->ReadPages(wanted, missingTexts, memory, options.fThreads);
    }
    // Fields that the batches have: of a Parquet file those that are still to be read.
    std::vector<std::int32_t> fieldsOfBatch;
    for (std::size_t at = 0; at < columns.size(); ++at) {
        if (parquet == nullptr || (columns[at] && !read[at])) {
            fieldsOfBatch.push_back(static_cast<std::int32_t>(at));
        }
    }
    std::optional<ArrowStream> rest;
    if (parquet != nullptr && !fieldsOfBatch.empty()) {
        rest = parquet->Stream(fieldsOfBatch);
        stream = &*rest;
    }
    std::int64_t rowsOfBatches = 0;
    for (OwnedArrowArray batch; stream != nullptr && stream->Next(batch);) {
        const ArrowArray& rows = batch.Get();
        rowsOfBatches += rows.length;
        CheckRowCount(rowsOfBatches, source);
        if (rows.n_children != static_cast<std::int64_t>(fieldsOfBatch.size())) {
            throw DataError(DataError::Kind::kContent,
                            source + ": a batch has another number of columns than the schema");
        }
        const void* validity =
            rows.n_buffers > 0 && rows.null_count != 0 ? rows.buffers[0] : nullptr;
        std::function<bool(std::int64_t)> isRow;
        if (validity != nullptr) {
            isRow = [validity](std::int64_t at) {
                return ((static_cast<const unsigned char*>(validity)[at / 8] >> (at % 8)) & 1) != 0;
            };
        }
        for (std::size_t child = 0; child < fieldsOfBatch.size(); ++child) {
            const auto at = static_cast<std::size_t>(fieldsOfBatch[child]);
            if (!columns[at]) {
                continue;
            }
            try {
                columns[at]->Append(*rows.children[child], rows.offset, rows.length, isRow);
            } catch (const std::invalid_argument& fault) {
                throw DataError(DataError::Kind::kContent,
                                source + ": column " + Quoted(names[at]) + ": " + fault.what());
            }
        }
    }
    std::int64_t rowCount = -1;
    for (std::size_t at = 0; at < columns.size(); ++at) {
        if (columns[at]) {
            if (!read[at]) {
                read[at] = std::move(*columns[at]).Finish(memory);
                columns[at].reset();
            }
            rowCount = rowCount < 0 ? read[at]->fColumn.RowCount() : rowCount;
            if (read[at]->fColumn.RowCount() != rowCount) {
                throw DataError(DataError::Kind::kContent,
                                source + ": is damaged or cut short: column " + Quoted(names[at]) +
                                    " has another number of rows than the columns before it");
            }
            Reconcile(fields[at], source, *read[at]);
            assembly.Add(fields[at], std::move(*read[at]));
            read[at].reset();
        }
    }
    return std::move(assembly).Finish();
}

// ---- files ----

TableSchema LoadSchema(const std::string& dataPath, const OpenOptions& options) {
    std::string path = options.fSchemaPath;
    if (path.empty() && dataPath != "-" && !dataPath.empty()) {
        path = dataPath + ".schema.json";
        struct stat status {};
        if (stat(path.c_str(), &status) != 0) {
            path.clear();
        }
    }
    TableSchema schema;
    if (!path.empty()) {
        const SourceBytes bytes(path);
        schema = ParseTableSchema(std::string(bytes.Get()), path);
    }
    ApplyOptions(options, schema);
    return schema;
}

bool StartsWith(std::string_view bytes, std::string_view start) {
    return bytes.substr(0, start.size()) == start;
}

// Files that are something else than data, told by their first bytes.
void RefuseOtherForms(std::string_view bytes, const std::string& source) {
    constexpr std::pair<std::string_view, std::string_view> kCompressed[] = {
        {"\x1F\x8B", "gzip"},
        {"PK\x03\x04", "zip; a spreadsheet is such an archive too"},
        {"\x28\xB5\x2F\xFD", "zstd"},
        {"\xFD"
         "7zXZ",
         "xz"},
        {"BZh", "bzip2"},
    };
    for (const auto& [start, format] : kCompressed) {
        if (StartsWith(bytes, start)) {
            throw DataError(DataError::Kind::kContent,
                            source + ": is compressed (" + std::string(format) +
                                "); unpack it or export a CSV file first");
        }
    }
    if (StartsWith(bytes, "PARE")) {
        throw DataError(DataError::Kind::kContent,
                        source + ": is an encrypted Parquet file; write it without encryption");
    }
}

}  // namespace

DataSet OpenDataSet(const std::string& path, const OpenOptions& options) {
    const std::string source = path == "-" ? "standard input" : path;
    const SourceBytes file(path);
    const std::string_view bytes = file.Get();
    const TableSchema schema = LoadSchema(path, options);
    RefuseOtherForms(bytes, source);
    if (StartsWith(bytes, "PAR1")) {
        const std::unique_ptr<ParquetFile> parquet = ParquetFile::Open(
            bytes, source, [&file](std::string_view part) { file.GiveBack(part); });
        return ReadBatches(nullptr, parquet.get(), source, schema, options);
    }
    if (StartsWith(bytes, "ARROW1")) {
        const ArrowStream stream = ReadIpcFile(bytes, source);
        return ReadBatches(&stream, nullptr, source, schema, options);
    }
    if (StartsWith(bytes, "\xFF\xFF\xFF\xFF")) {  // each message of a stream starts with these
        const ArrowStream stream = ReadIpcStream(bytes, source);
        return ReadBatches(&stream, nullptr, source, schema, options);
    }
    return ReadText(file, source, schema, options);
}

DataSet ReadArrowStream(ArrowArrayStream& stream, const std::string& sourceName,
                        const OpenOptions& options) {
    const ArrowStream owned(stream, sourceName);
    return ReadBatches(&owned, nullptr, sourceName, LoadSchema("", options), options);
}

}  // namespace embedded

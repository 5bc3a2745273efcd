#ifndef PREDSEL_EMBEDDED_DATA_DATASET_H
#define PREDSEL_EMBEDDED_DATA_DATASET_H

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "embedded/data/Column.h"
#include "host/Data.h"

namespace embedded {

/// What the values of a column mean. All but kString are numeric.
enum class ColumnKind {
    kNumber,
    kBoolean,   // 0 and 1
    kDate,      // days since 1970-01-01
    kDateTime,  // seconds since 1970-01-01 UTC
    kTime,      // seconds since midnight
    kString
};

/// Something about the data that the user should know and that is no error.
struct DataNote {
    enum class Kind {
        kStrayText,       // a column of numbers became a string column because of some cells
        kInfinite,        // infinities, or numbers beyond the range of doubles, made missing
        kInexactInteger,  // integers of 2^53 or more, which may be rounded
        kUndecodable,     // bytes that are no text in the encoding
        kUnusableColumn,  // a column of a type that is not supported was left out
        kHeader,          // the header line looks like data
        kEncoding         // the text is read in another encoding than UTF-8
    };
    Kind fKind = Kind::kHeader;
    std::int32_t fColumn = -1;    // dictionary index, -1 when it concerns no column that was kept
    std::int64_t fCount = 0;      // values concerned; 0 when it is not about single values
    std::int64_t fFirstRow = -1;  // row of the first of them, from 0; -1 when there is none
    std::string fText;            // the whole message, the variable's name included
};

/// The active data set: dictionary and columns.
class DataSet {
 public:
    DataSet() = default;
    DataSet(DataSet&&) noexcept = default;
    DataSet& operator=(DataSet&&) noexcept = default;

    std::int32_t ColumnCount() const { return static_cast<std::int32_t>(fvColumns.size()); }
    std::int64_t RowCount() const { return fRowCount; }

    /// By dictionary index, from 0 to ColumnCount() - 1, in file order.
    const KOLT_Variable& Variable(std::int32_t index) const { return At(index).fVariable; }
    /// The name must not be changed through it.
    KOLT_Variable& MutableVariable(std::int32_t index);
    const Column& GetColumn(std::int32_t index) const { return At(index).fColumn; }
    ColumnKind Kind(std::int32_t index) const { return At(index).fKind; }
    /// The index of exactly this name, -1 when there is none.
    std::int32_t FindVariable(std::string_view name) const;

    /// Appends a column and returns its index. REQUIRES: a name that no column has; as many rows as
    /// the columns before it.
    std::int32_t AddColumn(KOLT_Variable variable, Column column, ColumnKind kind);

    /// -1 when the data set has no weight variable.
    std::int32_t WeightIndex() const { return fWeightIndex; }
    void SetWeightIndex(std::int32_t index) { fWeightIndex = index; }
    /// Split-file variables, in the order in which they were declared.
    const std::vector<std::int32_t>& SplitIndices() const { return fvSplitIndices; }
    void SetSplitIndices(std::vector<std::int32_t> indices) { fvSplitIndices = std::move(indices); }

    /// The file's path, or another name fit for messages.
    const std::string& SourceName() const { return fSourceName; }
    void SetSourceName(std::string name) { fSourceName = std::move(name); }
    const std::vector<DataNote>& Notes() const { return fvNotes; }
    void AddNote(DataNote note) { fvNotes.push_back(std::move(note)); }

    /// The Table Schema that came with the data, as it was read; empty when there was none.
    const std::string& SchemaText() const { return fSchemaText; }
    void SetSchemaText(std::string text) { fSchemaText = std::move(text); }

    /// Texts that were read as system-missing in every column, beside what the schema says.
    const std::vector<std::string>& MissingTexts() const { return fvMissingTexts; }
    void SetMissingTexts(std::vector<std::string> texts) { fvMissingTexts = std::move(texts); }

    /// Most distinct values with which a numeric variable of whole numbers counts as nominal.
    std::int32_t NominalMax() const { return fNominalMax; }
    void SetNominalMax(std::int32_t count) { fNominalMax = count; }
    /// Gives a level to every variable whose level is unknown: strings and booleans nominal;
    /// numbers that are all whole, with at most NominalMax() distinct ones, nominal; else scale.
    /// Missing values of either kind do not count.
    void SettleMeasurementLevels();

 private:
    struct Entry {
        KOLT_Variable fVariable;
        Column fColumn;
        ColumnKind fKind;
    };
    const Entry& At(std::int32_t index) const;
    std::int32_t LevelByValues(const Entry& entry) const;

    std::deque<Entry> fvColumns;
    std::unordered_map<std::string, std::int32_t> fIndices;
    std::int64_t fRowCount = 0;
    std::int32_t fWeightIndex = -1;
    std::vector<std::int32_t> fvSplitIndices;
    std::string fSourceName;
    std::string fSchemaText;
    std::vector<std::string> fvMissingTexts;
    std::vector<DataNote> fvNotes;
    std::int32_t fNominalMax = 20;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_DATASET_H

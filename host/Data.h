#ifndef PREDSEL_HOST_DATA_H
#define PREDSEL_HOST_DATA_H

#include <cstdint>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// A value of one case: a number (MCMV::gMissingValue when system-missing) or a string.
using KoltObs = std::variant<double, std::string>;

/// A variable name; empty when nothing was named.
class KoltVarName {
 public:
    KoltVarName() = default;
    explicit KoltVarName(std::string name) : fName(std::move(name)) {}
    bool IsEmpty() const { return fName.empty(); }
    const std::string& GetString() const { return fName; }
    bool operator==(const KoltVarName&) const = default;

 private:
    std::string fName;
};

/// Measurement levels by the host's numbers.
inline constexpr std::int32_t kLevelUnknown = 0;
inline constexpr std::int32_t kLevelNominal = 1;
inline constexpr std::int32_t kLevelOrdinal = 2;
inline constexpr std::int32_t kLevelScale = 3;

/// How a column of values is aligned, by the host's numbers.
inline constexpr std::int32_t kAlignDefault = 0;
inline constexpr std::int32_t kAlignLeft = 1;
inline constexpr std::int32_t kAlignRight = 2;
inline constexpr std::int32_t kAlignCenter = 3;

/// How values are shown. Codes by the host's numbers.
inline constexpr std::int32_t kFormatString = 1;
inline constexpr std::int32_t kFormatNumber = 5;
inline constexpr std::int32_t kFormatDate = 20;      // days since 1970-01-01 UTC, shown YYYY-MM-DD
inline constexpr std::int32_t kFormatDateTime = 22;  // seconds since 1970-01-01 UTC
inline constexpr std::int32_t kFormatTime = 21;      // seconds since midnight
struct KoltFormat {
    std::int32_t fCode = kFormatNumber;
    std::int32_t fWidth = 8;
    std::int32_t fDecimals = 2;
    bool operator==(const KoltFormat&) const = default;
};

/// The labels of a variable's values, in the order in which they were declared.
class KOLT_ValueLabelMap {
 public:
    /// Adds or replaces the label of a value.
    void Set(KoltObs value, std::string label);
    /// The label, or null when the value has none. Borrowed from the map.
    const std::string* Find(const KoltObs& value) const;
    const std::vector<std::pair<KoltObs, std::string>>& Entries() const { return fvEntries; }

 private:
    std::vector<std::pair<KoltObs, std::string>> fvEntries;
};

/// User-missing definition: up to three discrete values, or for a number a range and one value.
struct KoltMissingSpec {
    bool fbRange = false;  // [fLow, fHigh] is missing
    double fLow = 0;
    double fHigh = 0;
    std::vector<KoltObs> fvDiscrete;  // at most 3, at most 1 beside a range
    bool operator==(const KoltMissingSpec&) const = default;
};

/// One variable of the dictionary. A value: a copy describes a new variable as well.
class KOLT_Variable {
 public:
    /// 0 for numeric, else the string's length in bytes.
    std::int32_t GetType() const { return fType; }
    const std::string& GetName() const { return fName; }
    /// Empty when there is none.
    const std::string& GetLabel() const { return fLabel; }
    /// kLevel... ; never kLevelUnknown once AdjustMeasurementLevels has run.
    std::int32_t GetMeasurementLevel() const { return fLevel; }
    const KoltFormat& GetFormat() const { return fFormat; }
    const KoltFormat& GetWriteFormat() const { return fWriteFormat; }
    /// kAlign...
    std::int32_t GetAlignment() const { return fAlignment; }
    const KOLT_ValueLabelMap& GetValueLabels() const { return fLabels; }
    /// 0 none; 1 to 3 that many discrete values; -2 a range, values 0 and 1 its bounds; -3 a range
    /// and, as value 2, one discrete value. valuesOut is emptied first.
    std::int32_t GetMissingValues(std::vector<KoltObs>& valuesOut) const;
    const KoltMissingSpec& GetMissingSpec() const { return fMissing; }
    /// True for a user-missing value; system-missing is not asked here.
    bool IsUserMissing(const KoltObs& value) const;

    void SetType(std::int32_t type) { fType = type; }
    void SetName(std::string name) { fName = std::move(name); }
    void SetLabel(std::string label) { fLabel = std::move(label); }
    void SetMeasurementLevel(std::int32_t level) { fLevel = level; }
    /// How values are shown, and how they are written to a text file.
    void SetFormat(const KoltFormat& format) { fFormat = format; }
    void SetFormat(std::int32_t code, std::int32_t width, std::int32_t decimals) {
        fFormat = {code, width, decimals};
    }
    void SetWriteFormat(const KoltFormat& format) { fWriteFormat = format; }
    void SetWriteFormat(std::int32_t code, std::int32_t width, std::int32_t decimals) {
        fWriteFormat = {code, width, decimals};
    }
    void SetAlignment(std::int32_t alignment) { fAlignment = alignment; }
    void SetValueLabel(KoltObs value, std::string label);
    void SetMissingSpec(KoltMissingSpec spec) { fMissing = std::move(spec); }

 private:
    std::string fName;
    std::string fLabel;
    std::int32_t fType = 0;
    std::int32_t fLevel = kLevelUnknown;
    std::int32_t fAlignment = kAlignDefault;
    KoltFormat fFormat;
    KoltFormat fWriteFormat;
    KOLT_ValueLabelMap fLabels;
    KoltMissingSpec fMissing;
};

/// The dictionary of a data set as a procedure sees it.
class KOLT_DataSource {
 public:
    virtual ~KOLT_DataSource() = default;
    /// Number of columns; 0 when the data set has none that can be used.
    virtual std::int32_t ColumnCount() const = 0;
    /// The variable at a dictionary index from 0 to ColumnCount() - 1.
    virtual const KOLT_Variable& GetVariable(std::int32_t index) const = 0;
    /// Makes a new variable behind the others, system-missing in every case. type as
    /// KOLT_Variable::GetType. columnOut takes its dictionary index. The variable is the data
    /// set's; it must be given a name of its own before the command ends, and is dropped when the
    /// command fails. Null, after a message, when the data set cannot take it.
    virtual KOLT_Variable* MakeVariable(std::int32_t type, std::int32_t& columnOut) = 0;
};

/// The active data set, open for one procedure from construction to destruction.
class ProcedureDataSource : public KOLT_DataSource {
 public:
    ProcedureDataSource();
    ~ProcedureDataSource() override;
    ProcedureDataSource(const ProcedureDataSource&) = delete;
    ProcedureDataSource& operator=(const ProcedureDataSource&) = delete;

    std::int32_t ColumnCount() const override;
    const KOLT_Variable& GetVariable(std::int32_t index) const override;
    KOLT_Variable* MakeVariable(std::int32_t type, std::int32_t& columnOut) override;
    /// Dictionary index of the weight variable, -1 when the data set has none.
    std::int32_t GetWeightVarIndex() const;
    /// How many 8-byte slots the procedure may add to each case: one for a number, as many as it
    /// fills for a string. None without it.
    void SetMaxObsAdded(std::uint32_t slots);
};

/// Settles the measurement levels that are still unknown.
void AdjustMeasurementLevels(ProcedureDataSource& source);

/// A value as the dictionary shows it: by its format, without labels. Strings lose trailing blanks
/// when trim is true.
std::string ConvertObsToString(const KoltObs& value, const KoltFormat& format, bool trim);

#endif  // PREDSEL_HOST_DATA_H

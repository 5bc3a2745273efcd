#ifndef PREDSEL_HOST_OUTPUT_H
#define PREDSEL_HOST_OUTPUT_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/Data.h"

/// How a number is shown: count no decimals (two when weights are fractional), percent one decimal
/// and "%", significance three decimals with "<.001" below, the others three decimals.
enum class BpFormatKind { Count, Percent, Significance, GeneralStat, Coefficient };

class BpFormatSpec {
 public:
    explicit BpFormatSpec(BpFormatKind kind) : fKind(kind) {}
    BpFormatKind Kind() const { return fKind; }

 private:
    BpFormatKind fKind;
};

struct BpItemData;  // the host's

/// Something that can be shown: a heading, a cell, a message. A handle; copies share the content.
class BpItem {
 public:
    const std::shared_ptr<const BpItemData>& Data() const { return fpData; }

 protected:
    explicit BpItem(std::shared_ptr<const BpItemData> data) : fpData(std::move(data)) {}
    std::shared_ptr<const BpItemData> fpData;
};

/// A text: a key of the host's string table when isKey, else shown as it stands.
class BpString : public BpItem {
 public:
    BpString(std::string_view text, bool isKey);
};

/// A number. MCMV::gMissingValue shows as an empty cell.
class BpNumber : public BpItem {
 public:
    BpNumber(double value, const BpFormatSpec& format);
    /// The same with the natural logarithm of the value, for readers whom a number too small for a
    /// double, shown as 0, doesn't suffice. Minus infinity: the value is exactly 0.
    BpNumber(double value, const BpFormatSpec& format, double logarithm);
};

/// A variable of the active data set. Mode 2: by its label where it has one, else by its name.
class BpVariable : public BpItem {
 public:
    BpVariable(std::int32_t dictionaryIndex, std::int32_t mode);
};

/// A value of a variable. Mode 2: by its label where it has one, else in the variable's format.
class BpDataValue : public BpItem {
 public:
    BpDataValue(std::int32_t dictionaryIndex, const KoltObs& value, std::int32_t mode);
};

/// A template with arguments. ^1, ^2, ^3 stand for the arguments in the order added. In
/// [first:rest:]n the n-th list is laid out: %1 in the form `first` stands for its first element,
/// ^1 in the form `rest` for each later one. "\n" written with a backslash is a line break.
class BpComposite : public BpItem {
 public:
    BpComposite(std::string_view text, bool isKey);
    /// Adds the next argument.
    void Add(const BpItem& argument);
    /// Adds the next list.
    void AddSublist(const std::vector<BpItem>& elements);
    /// Ends the composite; nothing is added afterwards.
    void Finish();
};

/// Levels of BpError.
inline constexpr std::int32_t kBpWarning = 2;
inline constexpr std::int32_t kBpError = 3;
/// The form in which BpError shows a message: in the output, with its level.
inline constexpr std::int32_t kBpErrorShow = 2;

/// A message to the user. Level kBpError also sets the host's error word.
void BpError(const BpItem& text, std::int32_t show, std::int32_t level);

/// A row of the run's notes. Group 2 files, 3 new variables, 4 treatment of missing values.
void AddNotes(std::int32_t group, const BpItem& title, const BpItem& text);
/// The same for a row that is one of several under the title: heading says which one.
void AddNotesWithGroup(std::int32_t group, const BpItem& title, const BpItem& heading,
                       const BpItem& text);

/// The output context of a procedure; kind 5 is a statistics procedure.
class BpProcedure {
 public:
    BpProcedure(std::string_view name, std::int32_t kind);
    ~BpProcedure();
    BpProcedure(const BpProcedure&) = delete;
    BpProcedure& operator=(const BpProcedure&) = delete;

    static BpFormatSpec Count() { return BpFormatSpec(BpFormatKind::Count); }
    static BpFormatSpec Percent() { return BpFormatSpec(BpFormatKind::Percent); }
    static BpFormatSpec Significance() { return BpFormatSpec(BpFormatKind::Significance); }
    static BpFormatSpec GeneralStat() { return BpFormatSpec(BpFormatKind::GeneralStat); }
    static BpFormatSpec Coefficient() { return BpFormatSpec(BpFormatKind::Coefficient); }
};

/// Title of a table, and the identifier by which programs know it.
struct BpHeading {
    BpHeading(const BpItem& title, std::string_view identifier, std::int32_t flag = 0)
        : fTitle(title), fIdentifier(identifier), fFlag(flag) {}
    BpItem fTitle;
    std::string fIdentifier;
    std::int32_t fFlag;
};

struct BpNode;  // a group or category of a dimension, the host's
struct BpTableData;

/// A heading in a dimension that carries cells. Borrowed from its table.
class BpCategory {
 public:
    /// Puts content in the cell at this category; in every other dimension at the category that was
    /// made or selected last.
    void Cell(const BpItem& content) const;
    /// A footnote on that cell.
    void CellNote(const BpItem& text) const;

 private:
    friend class BpGroup;
    BpCategory(BpTableData* table, BpNode* node) : fpTable(table), fpNode(node) {}
    BpTableData* fpTable;
    BpNode* fpNode;
};

/// A heading that holds groups and categories. Borrowed from its table.
class BpGroup {
 public:
    /// The category of this heading here: selected when it exists already, else made as the last.
    /// Two headings are the same when they have the same key: string-table key or text, variable,
    /// value, number.
    BpCategory Category(const BpItem& heading) const;
    /// The group of this heading, the same rule. showHeading 0 hides its heading; level is the
    /// host's.
    BpGroup Group(const BpItem& heading, std::int32_t showHeading, std::int32_t level) const;
    /// A footnote on the group's heading.
    void Note(const BpItem& text) const;

 protected:
    BpGroup(BpTableData* table, BpNode* node) : fpTable(table), fpNode(node) {}
    BpTableData* fpTable;
    BpNode* fpNode;
};

class BpPivotTable;

/// One dimension of a table; itself the group of its top-level headings.
class BpDimension : public BpGroup {
 public:
    /// Appends a dimension to the table.
    BpDimension(BpPivotTable& table, const BpItem& title);
    /// axis 0 rows, 1 columns; order 1 innermost, growing outwards; hideTitle 1 leaves the
    /// dimension's title out; the last number is 0.
    void Position(std::int32_t axis, std::int32_t order, std::int32_t hideTitle,
                  std::int32_t reserved) const;
};

/// A pivot table under construction. Send puts it in the output; without Send nothing is shown.
class BpPivotTable {
 public:
    BpPivotTable(BpProcedure& procedure, const BpHeading& heading);
    ~BpPivotTable();
    BpPivotTable(const BpPivotTable&) = delete;
    BpPivotTable& operator=(const BpPivotTable&) = delete;

    void SetCaption(const BpItem& caption);
    /// In points; a hint to renderers.
    void SetMinDataColumnWidth(std::int32_t points);
    void Send();

 private:
    friend class BpDimension;
    std::unique_ptr<BpTableData> fpData;
};

#endif  // PREDSEL_HOST_OUTPUT_H

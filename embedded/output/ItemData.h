#ifndef PREDSEL_EMBEDDED_OUTPUT_ITEMDATA_H
#define PREDSEL_EMBEDDED_OUTPUT_ITEMDATA_H

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "embedded/output/ReportTable.h"
#include "host/Output.h"

/// The content of a BpItem.
struct BpItemData {
    using Pointer = std::shared_ptr<const BpItemData>;

    struct Text {
        std::string fText;  // the key when fbKey
        bool fbKey = false;
    };
    struct Number {
        double fValue = 0;
        BpFormatKind fKind = BpFormatKind::GeneralStat;
        std::optional<double> fLogarithm;  // natural, of fValue
    };
    /// A variable, or one of its values, as the dictionary shows it.
    struct Labelled {
        std::string fShown;
        embedded::ReportKey fKey;
        std::int32_t fVariable = 0;  // dictionary index
        bool fbValue = false;
    };
    struct Composite {
        Text fTemplate;
        std::vector<Pointer> fvArguments;
        std::vector<std::vector<Pointer>> fvLists;
        bool fbFinished = false;
    };

    std::variant<Text, Number, Labelled, Composite> fContent;
};

namespace embedded {

/// The item as headings, messages and notes show it, fit to be shown. A count in a text has
/// decimals only when weights are fractional and it is no whole number.
std::string ItemText(const BpItemData& item, bool fractionalWeights);

/// What the item is whatever the language and the labels.
ReportKey ItemKey(const BpItemData& item);

/// The key as a text: for identifiers of dimensions and messages.
std::string ItemKeyText(const BpItemData& item);

/// Equal for two headings that are the same heading.
std::string HeadingIdentity(const BpItemData& item);

/// True for a count that is no whole number.
bool IsFractionalCount(const BpItemData& item);

/// Fills value, text and format of a cell. decimalCounts: counts of the cell's column have
/// decimals.
void FillCell(ReportCell& cell, const BpItemData& item, bool decimalCounts, bool fractionalWeights);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_ITEMDATA_H

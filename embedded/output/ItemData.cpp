#include "embedded/output/ItemData.h"

#include <cmath>
#include <utility>

#include "embedded/output/CompositeText.h"
#include "embedded/output/NumberText.h"
#include "embedded/output/ShowableText.h"
#include "embedded/strings/StringTable.h"
#include "host/Records.h"

namespace embedded {

namespace {

using Item = BpItemData;

std::string Resolve(const Item::Text& text) {
    return text.fbKey ? std::string(TextOf(text.fText)) : text.fText;
}

bool IsMissing(double value) { return value == MCMV::gMissingValue || std::isnan(value); }

bool IsFractional(double value) { return !IsMissing(value) && std::floor(value) != value; }

std::string CompositeItemText(const Item::Composite& composite, bool fractionalWeights) {
    const auto texts = [fractionalWeights](const std::vector<Item::Pointer>& items) {
        std::vector<std::string> out;
        for (const auto& item : items) out.push_back(ItemText(*item, fractionalWeights));
        return out;
    };
    std::vector<std::vector<std::string>> lists;
    for (const auto& list : composite.fvLists) lists.push_back(texts(list));
    return CompositeText(Resolve(composite.fTemplate), texts(composite.fvArguments), lists);
}

ReportFormat FormatOf(BpFormatKind kind) {
    switch (kind) {
        case BpFormatKind::Count:
            return ReportFormat::Count;
        case BpFormatKind::Percent:
            return ReportFormat::Percent;
        case BpFormatKind::Significance:
            return ReportFormat::Significance;
        case BpFormatKind::GeneralStat:
            return ReportFormat::GeneralStat;
        case BpFormatKind::Coefficient:
            return ReportFormat::Coefficient;
    }
    return ReportFormat::GeneralStat;
}

bool IsList(const Item::Composite& composite) {
    return composite.fvArguments.empty() && composite.fvLists.size() == 1 &&
           IsListTemplate(Resolve(composite.fTemplate));
}

/// An element of a list cell: the name of a variable, a raw value, a number, or the text.
ReportKey ElementValue(const Item& item) {
    if (const auto* text = std::get_if<Item::Text>(&item.fContent)) return Resolve(*text);
    if (std::holds_alternative<Item::Composite>(item.fContent)) return ItemText(item, false);
    return ItemKey(item);
}

ReportValue NumberOrMissing(double value) {
    return IsMissing(value) ? ReportValue() : ReportValue(value);
}

ReportValue ValueOf(const ReportKey& key) {
    if (const auto* number = std::get_if<double>(&key)) return *number;
    if (const auto* text = std::get_if<std::string>(&key)) return *text;
    return {};
}

}  // namespace

std::string ItemText(const Item& item, bool fractionalWeights) {
    std::string text;
    if (const auto* plain = std::get_if<Item::Text>(&item.fContent)) {
        text = Resolve(*plain);
    } else if (const auto* number = std::get_if<Item::Number>(&item.fContent)) {
        text = NumberText(number->fValue, number->fKind,
                          fractionalWeights && IsFractional(number->fValue));
    } else if (const auto* labelled = std::get_if<Item::Labelled>(&item.fContent)) {
        text = labelled->fShown;
    } else {
        text = CompositeItemText(std::get<Item::Composite>(item.fContent), fractionalWeights);
    }
    return ShowableText(text);
}

ReportKey ItemKey(const Item& item) {
    if (const auto* text = std::get_if<Item::Text>(&item.fContent)) return text->fText;
    if (const auto* number = std::get_if<Item::Number>(&item.fContent))
        return IsMissing(number->fValue) ? ReportKey() : ReportKey(number->fValue);
    if (const auto* labelled = std::get_if<Item::Labelled>(&item.fContent)) return labelled->fKey;
    return std::get<Item::Composite>(item.fContent).fTemplate.fText;
}

std::string ItemKeyText(const Item& item) {
    const ReportKey key = ItemKey(item);
    const auto* text = std::get_if<std::string>(&key);
    return text != nullptr ? *text : ItemText(item, false);
}

std::string HeadingIdentity(const Item& item) {
    const auto quoted = [](const std::string& text) {
        return std::to_string(text.size()) + ":" + text;
    };
    const auto exact = [](double value) {  // hexadecimal floating point: no two numbers share it
        char buffer[40];
        std::snprintf(buffer, sizeof buffer, "%a", value == 0 ? 0.0 : value);
        return std::string(buffer);
    };
    if (const auto* text = std::get_if<Item::Text>(&item.fContent))
        return (text->fbKey ? "key " : "text ") + quoted(text->fText);
    if (const auto* number = std::get_if<Item::Number>(&item.fContent))
        return "number " + exact(number->fValue);
    if (const auto* labelled = std::get_if<Item::Labelled>(&item.fContent)) {
        std::string identity =
            (labelled->fbValue ? "value " : "variable ") + std::to_string(labelled->fVariable);
        if (!labelled->fbValue) return identity;
        if (const auto* number = std::get_if<double>(&labelled->fKey))
            return identity + " number " + exact(*number);
        const auto* text = std::get_if<std::string>(&labelled->fKey);
        return identity + (text != nullptr ? " text " + quoted(*text) : " missing");
    }
    const auto& composite = std::get<Item::Composite>(item.fContent);
    std::string identity = "composite " + quoted(composite.fTemplate.fText);
    for (const auto& argument : composite.fvArguments)
        identity += " " + quoted(HeadingIdentity(*argument));
    for (const auto& list : composite.fvLists) {
        identity += " list";
        for (const auto& element : list) identity += " " + quoted(HeadingIdentity(*element));
    }
    return identity;
}

bool IsFractionalCount(const Item& item) {
    const auto* number = std::get_if<Item::Number>(&item.fContent);
    return number != nullptr && number->fKind == BpFormatKind::Count &&
           IsFractional(number->fValue);
}

void FillCell(ReportCell& cell, const Item& item, bool decimalCounts, bool fractionalWeights) {
    if (const auto* number = std::get_if<Item::Number>(&item.fContent)) {
        cell.fValue = NumberOrMissing(number->fValue);
        if (!IsMissing(number->fValue)) cell.fLogarithm = number->fLogarithm;
        cell.fText = NumberText(number->fValue, number->fKind, decimalCounts);
        cell.fFormat = FormatOf(number->fKind);
        return;
    }
    cell.fText = ItemText(item, fractionalWeights);
    cell.fFormat = ReportFormat::Text;
    if (const auto* labelled = std::get_if<Item::Labelled>(&item.fContent)) {
        cell.fValue = ValueOf(labelled->fKey);
        return;
    }
    const auto* composite = std::get_if<Item::Composite>(&item.fContent);
    if (composite != nullptr && IsList(*composite)) {
        std::vector<ReportKey> elements;
        for (const auto& element : composite->fvLists.front())
            elements.push_back(ElementValue(*element));
        cell.fValue = std::move(elements);
        cell.fFormat = ReportFormat::List;
        return;
    }
    cell.fValue = cell.fText;
}

}  // namespace embedded

// The items of host/Output.h: what can be a heading, a cell or a message.
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "embedded/HostSession.h"
#include "embedded/data/DataSet.h"
#include "embedded/output/ItemData.h"
#include "host/Assertion.h"
#include "host/Output.h"
#include "host/Records.h"

namespace {

constexpr std::int32_t kByLabel = 2;  // the mode of variables and values

template <class Content>
BpItemData::Pointer MakeItem(Content content) {
    return std::make_shared<const BpItemData>(BpItemData{std::move(content)});
}

const KOLT_Variable& ActiveVariable(std::int32_t dictionaryIndex) {
    return embedded::HostSession::Active().Variable(dictionaryIndex);
}

BpItemData::Pointer MakeVariable(std::int32_t dictionaryIndex, std::int32_t mode) {
    const KOLT_Variable& variable = ActiveVariable(dictionaryIndex);
    const bool byLabel = mode == kByLabel && !variable.GetLabel().empty();
    return MakeItem(BpItemData::Labelled{byLabel ? variable.GetLabel() : variable.GetName(),
                                         variable.GetName(), dictionaryIndex, false});
}

BpItemData::Pointer MakeValue(std::int32_t dictionaryIndex, const KoltObs& value,
                              std::int32_t mode) {
    const KOLT_Variable& variable = ActiveVariable(dictionaryIndex);
    std::string shown = ConvertObsToString(value, variable.GetFormat(), true);
    embedded::ReportKey key;  // stays empty for the system-missing value
    if (const auto* number = std::get_if<double>(&value)) {
        if (*number != MCMV::gMissingValue) key = *number;
    } else {
        key = shown;  // trailing blanks are no part of a string value
    }
    if (mode == kByLabel) {
        const std::string* label = variable.GetValueLabels().Find(value);
        if (label != nullptr && !label->empty()) shown = *label;
    }
    return MakeItem(BpItemData::Labelled{std::move(shown), std::move(key), dictionaryIndex, true});
}

/// Items are shared, so that a composite that grows leaves its earlier copies as they were.
template <class Change>
BpItemData::Pointer Changed(const BpItemData& item, Change change) {
    auto composite = std::get<BpItemData::Composite>(item.fContent);
    PREDSEL_ASSERT(!composite.fbFinished, "nothing is added to a finished composite");
    change(composite);
    return MakeItem(std::move(composite));
}

}  // namespace

BpString::BpString(std::string_view text, bool isKey)
    : BpItem(MakeItem(BpItemData::Text{std::string(text), isKey})) {}

BpNumber::BpNumber(double value, const BpFormatSpec& format)
    : BpItem(MakeItem(BpItemData::Number{value, format.Kind(), std::nullopt})) {}

BpNumber::BpNumber(double value, const BpFormatSpec& format, double logarithm)
    : BpItem(MakeItem(BpItemData::Number{value, format.Kind(), logarithm})) {}

BpVariable::BpVariable(std::int32_t dictionaryIndex, std::int32_t mode)
    : BpItem(MakeVariable(dictionaryIndex, mode)) {}

BpDataValue::BpDataValue(std::int32_t dictionaryIndex, const KoltObs& value, std::int32_t mode)
    : BpItem(MakeValue(dictionaryIndex, value, mode)) {}

BpComposite::BpComposite(std::string_view text, bool isKey)
    : BpItem(MakeItem(BpItemData::Composite{{std::string(text), isKey}, {}, {}, false})) {}

void BpComposite::Add(const BpItem& argument) {
    fpData = Changed(*fpData, [&](BpItemData::Composite& composite) {
        composite.fvArguments.push_back(argument.Data());
    });
}

void BpComposite::AddSublist(const std::vector<BpItem>& elements) {
    fpData = Changed(*fpData, [&](BpItemData::Composite& composite) {
        auto& list = composite.fvLists.emplace_back();
        for (const BpItem& element : elements) list.push_back(element.Data());
    });
}

void BpComposite::Finish() {
    fpData =
        Changed(*fpData, [](BpItemData::Composite& composite) { composite.fbFinished = true; });
}

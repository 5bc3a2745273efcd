#include "backend/predselect/tests/ParseFixture.h"

#include <utility>

#include "host/HostGlobals.h"

embedded::DataSetBuilder ParseData() {
    embedded::DataSetBuilder builder;
    builder.Numbers("y", {0, 1, 0, 1}).Level(kLevelNominal);
    builder.Numbers("sy", {1.5, 2.5, 3.5, 4.5}).Level(kLevelScale);
    builder.Numbers("f1", {0, 1, 1, 0}).Level(kLevelNominal);
    builder.Numbers("f2", {1, 2, 3, 1}).Level(kLevelOrdinal);
    builder.Numbers("f3", {1, 1, 2, 2}).Level(kLevelNominal);
    builder.Numbers("c1", {0.5, 1.5, 2.0, 9.0}).Level(kLevelScale);
    builder.Numbers("c2", {4.5, 3.5, 2.0, 1.0}).Level(kLevelScale);
    builder.Strings("text", {"a", "b", "a", "c"}).Level(kLevelNominal);
    builder.Numbers("part", {0, 1, 1, 1}).Level(kLevelNominal);
    builder.Numbers("wt", {1, 2, 1, 3}).Level(kLevelScale);
    return builder;
}

embedded::DataSet WeightedParseData() { return ParseData().Weight().Build(); }

ParsedCommand::ParsedCommand(const std::string& text) : ParsedCommand(text, ParseData().Build()) {}

ParsedCommand::ParsedCommand(const std::string& text, embedded::DataSet data)
    : fData(std::move(data)), fScript(embedded::ParseCommandText(text, "test")) {
    if (fScript.fvCommands.size() != 1) {
        throw std::invalid_argument("not one command: " + text +
                                    (fScript.fFault ? "\n" + fScript.fFault->Lines() : ""));
    }
    const embedded::CommandTokens& command = fScript.fvCommands.front();
    fSession = std::make_unique<embedded::HostSession>(fData, command, fReport);
    fSource = std::make_unique<ProcedureDataSource>();
    fSpecs.SetUniVariable(command.Name() == "SELECTPRED");
    fTokens = std::make_unique<KOLT_TokenSequence>(true);
    fParser = std::make_unique<PRSParser>(*fTokens, fSpecs, *fSource);
    fbOk = fParser->Parse();
}

bool ParsedCommand::ErrorWord() const { return pvGetCmnGlb()[kErrorWord] != 0; }

std::int64_t ParsedCommand::SplitCount() const { return pvGetCmnGlb()[kSplitFileCount]; }

std::string ParsedCommand::Predictors() const {
    return PredictorText(fSpecs.GetPredictList(), fSpecs.GetPredCatFlags());
}

std::string ParsedCommand::ForcedPredictors() const {
    return PredictorText(fSpecs.GetForcePredList(), fSpecs.GetForceCatFlags());
}

std::string ParsedCommand::PredictorText(const std::vector<std::int32_t>* list,
                                         const std::vector<bool>* flags) const {
    if (list == nullptr || flags == nullptr) {
        return list == nullptr && flags == nullptr ? "null" : "one of two";
    }
    std::string text;
    for (std::size_t i = 0; i < list->size(); ++i) {
        text +=
            (i == 0 ? "" : " ") + fData.Variable((*list)[i]).GetName() + (flags->at(i) ? "" : "*");
    }
    return text;
}

testing::AssertionResult ParsedCommand::SaidOnly(
    const std::function<void(const ParserMessage&)>& call) {
    if (Messages().size() != 1) {
        return testing::AssertionFailure() << Messages().size() << " messages:" << MessageTexts();
    }
    ParserMessage again;
    again.SetCommandName(fScript.fvCommands.front().Name());
    call(again);
    if (Messages().size() != 2) {
        return testing::AssertionFailure() << "the expected message was not sent";
    }
    const embedded::ReportMessage expected = fReport.fvMessages.back();
    fReport.fvMessages.pop_back();
    const embedded::ReportMessage& said = fReport.fvMessages.front();
    if (said.fText.empty() || said.fText != expected.fText || said.fKey != expected.fKey ||
        said.fLevel != expected.fLevel) {
        return testing::AssertionFailure() << "said\n"
                                           << said.fText << "\nin place of\n"
                                           << expected.fText;
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult ParsedCommand::SaidOnlyKey(const std::string& key,
                                                    embedded::MessageLevel level,
                                                    const std::vector<std::string>& words) const {
    if (Messages().size() != 1 || Messages().front().fKey != key ||
        Messages().front().fLevel != level) {
        return testing::AssertionFailure() << "in place of \"" << key << "\":" << MessageTexts();
    }
    for (const std::string& word : words) {
        if (Messages().front().fText.find(word) == std::string::npos) {
            return testing::AssertionFailure() << "no " << word << " in:" << MessageTexts();
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult ParsedCommand::SaidNothing() const {
    if (!Messages().empty() || ErrorWord()) {
        return testing::AssertionFailure() << "said:" << MessageTexts();
    }
    return testing::AssertionSuccess();
}

std::string ParsedCommand::MessageTexts() const {
    std::string text;
    for (const embedded::ReportMessage& message : Messages()) {
        text += "\n[" + message.fKey + "] " + message.fText;
    }
    return text;
}

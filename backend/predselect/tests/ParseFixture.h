#ifndef PREDSEL_BACKEND_TESTS_PARSEFIXTURE_H
#define PREDSEL_BACKEND_TESTS_PARSEFIXTURE_H

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backend/predselect/PRSParser.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "embedded/HostSession.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSet.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/output/Report.h"
#include "host/CommandLanguage.h"

/// Dictionary indices of ParseData's variables.
enum ParseVariable : std::int32_t { kY, kScaleY, kF1, kF2, kF3, kC1, kC2, kText, kPart, kWeight };

/// Targets y (nominal) and sy (scale); f1 to f3 nominal, c1 and c2 scale, text a string, part a
/// nominal number, wt a scale number that is not (yet) the weight variable.
embedded::DataSetBuilder ParseData();
/// The same with wt, the variable added last, as the weight variable.
embedded::DataSet WeightedParseData();

/// A command that was parsed against a data set, with everything that the parse stands on.
class ParsedCommand {
 public:
    explicit ParsedCommand(const std::string& text);
    ParsedCommand(const std::string& text, embedded::DataSet data);

    bool Ok() const { return fbOk; }
    PRSValidSpecs& Specs() { return fSpecs; }
    ProcedureDataSource& Source() { return *fSource; }
    const std::vector<embedded::ReportMessage>& Messages() const { return fReport.fvMessages; }
    bool ErrorWord() const;
    std::int64_t SplitCount() const;

    /// Predictors as text: "f1 c1*", an asterisk behind covariates; "null" without a list.
    std::string Predictors() const;
    std::string ForcedPredictors() const;

    /// True when the parse gave one message, the one that the call gives here and now.
    testing::AssertionResult SaidOnly(const std::function<void(const ParserMessage&)>& call);
    /// True when the parse gave one message, of this key and level, and its text holds the words.
    testing::AssertionResult SaidOnlyKey(const std::string& key, embedded::MessageLevel level,
                                         const std::vector<std::string>& words = {}) const;
    testing::AssertionResult SaidNothing() const;
    /// All messages, for a failure's text.
    std::string MessageTexts() const;

 private:
    std::string PredictorText(const std::vector<std::int32_t>* list,
                              const std::vector<bool>* flags) const;

    embedded::DataSet fData;
    embedded::CommandScript fScript;
    embedded::CommandReport fReport;
    std::unique_ptr<embedded::HostSession> fSession;
    std::unique_ptr<ProcedureDataSource> fSource;
    PRSValidSpecs fSpecs;
    std::unique_ptr<KOLT_TokenSequence> fTokens;
    std::unique_ptr<PRSParser> fParser;
    bool fbOk = false;
};

#endif  // PREDSEL_BACKEND_TESTS_PARSEFIXTURE_H

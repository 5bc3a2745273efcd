#include "backend/predselect/PRSMessage.h"

#include "host/Output.h"

namespace {

constexpr const char* kBelowPossiblePreds =
    "Parameter ^1 less than number of possible predictors in ^3, not subcommand ^2...";
constexpr const char* kAtMostPossiblePreds =
    "Parameter ^1 less than or equal to number of possible predictors in ^3, not ^2...";

void Send(std::int32_t level, const char* key, const char* first, const char* second,
          const char* third) {
    if (key == nullptr) {
        return;
    }
    if (first == nullptr) {
        BpError(BpString(key, true), kBpErrorShow, level);
        return;
    }
    BpComposite text(key, true);
    for (const char* argument : {first, second, third}) {
        if (argument == nullptr) {
            break;
        }
        text.Add(BpString(argument, false));
    }
    text.Finish();
    BpError(text, kBpErrorShow, level);
}

}  // namespace

void PRSMessage::Error(const char* key, const char* first, const char* second, const char* third) {
    Send(kBpError, key, first, second, third);
}

void PRSMessage::Warning(const char* key, const char* first, const char* second,
                         const char* third) {
    Send(kBpWarning, key, first, second, third);
}

void PRSMessage::AllPossiblePredsExcluded() const { Error("All possible predictors excluded..."); }

void PRSMessage::AllPredsMissingOrConstant() const {
    Error("All predictors missing or constant...");
}

void PRSMessage::DepVarConstant() const { Error("Dependent variable constant..."); }

void PRSMessage::OnlyDepVarInData() const { Error("Only dependent variable in data..."); }

void PRSMessage::NoPossiblePreds() const { Error("No possible predictors available in data..."); }

void PRSMessage::NoPredsAvailable() const { Error("No predictors available in data..."); }

void PRSMessage::ParamBelowPossiblePreds(const std::string& parameter,
                                         const std::string& subcommand, const std::string& command,
                                         bool mustBeLess) const {
    Error(mustBeLess ? kBelowPossiblePreds : kAtMostPossiblePreds, parameter.c_str(),
          subcommand.c_str(), command.c_str());
}

void PRSMessage::ParamBelowUniquePreds(const std::string& parameter, const std::string& command,
                                       bool mustBeLess) const {
    Error(mustBeLess ? "Parameter ^1 less than number of unique predictors in ^2..."
                     : "Parameter ^1 less than or equal to number of unique predictors in ^2...",
          parameter.c_str(), command.c_str());
}

void PRSMessage::SomeForcedExcluded() const { Error("Some forced predictors excluded..."); }

void PRSMessage::TooFewForExactSize() const { Error("Too few possible predictors, exact size..."); }

void PRSMessage::TooFewForMaxSize() const { Error("Too few possible predictors, maximum size..."); }

void PRSMessage::TrainVarOnPredList(const std::string& variable) const {
    Error("Train Samp var ^1 on pred var list ...", variable.c_str());
}

void PRSMessage::RankCriterionIgnored(const std::string& criterion, const std::string& parameter,
                                      const std::string& subcommand, bool mixed) const {
    Warning(mixed ? "Mixed rank criterion ^1 in parameter ^2 is ignored, subcommand ^3..."
                  : "Categorical rank criterion ^1 in parameter ^2 is ignored, subcommand ^3...",
            criterion.c_str(), parameter.c_str(), subcommand.c_str());
}

void PRSMessage::NoPredsExcluded() const { Warning("No predictors excluded ..."); }

void PRSMessage::NoUniquePredsSelected() const { Warning("No unique predictors were selected..."); }

void PRSMessage::NoValidTestCases() const { Warning("No valid test cases for classification..."); }

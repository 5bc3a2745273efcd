#ifndef PREDSEL_BACKEND_PRSMESSAGE_H
#define PREDSEL_BACKEND_PRSMESSAGE_H

#include <cstdint>
#include <string>

/// The procedure's own messages to the user. Each operation sends one key of the host's string
/// table, with its arguments, to the host; the texts belong to the host. Nothing fails and nothing
/// is returned: an error sets the host's error word, and the caller returns its own false result.
class PRSMessage {
 public:
    // Errors.
    void AllPossiblePredsExcluded() const;
    void AllPredsMissingOrConstant() const;
    void DepVarConstant() const;
    void OnlyDepVarInData() const;
    void NoPossiblePreds() const;
    void NoPredsAvailable() const;
    /// A subset size against the candidates of the command, forced ones not counted. mustBeLess is
    /// false where the number of candidates itself is allowed.
    void ParamBelowPossiblePreds(const std::string& parameter, const std::string& subcommand,
                                 const std::string& command, bool mustBeLess) const;
    /// The same for a command without forced predictors.
    void ParamBelowUniquePreds(const std::string& parameter, const std::string& command,
                               bool mustBeLess) const;
    void SomeForcedExcluded() const;
    void TooFewForExactSize() const;
    void TooFewForMaxSize() const;
    void TrainVarOnPredList(const std::string& variable) const;

    // Warnings.
    /// A criterion asked for in a report that these predictors don't allow. mixed is true for the
    /// criteria that a mix of factors and covariates would allow.
    void RankCriterionIgnored(const std::string& criterion, const std::string& parameter,
                              const std::string& subcommand, bool mixed) const;
    void NoPredsExcluded() const;
    void NoUniquePredsSelected() const;
    void NoValidTestCases() const;

    /// The two forms behind all others: a key with up to three arguments, which fill ^1, ^2 and ^3
    /// untranslated. A null key sends nothing; an argument counts only when those before it are
    /// there.
    static void Error(const char* key, const char* first = nullptr, const char* second = nullptr,
                      const char* third = nullptr);
    static void Warning(const char* key, const char* first = nullptr, const char* second = nullptr,
                        const char* third = nullptr);
};

#endif  // PREDSEL_BACKEND_PRSMESSAGE_H

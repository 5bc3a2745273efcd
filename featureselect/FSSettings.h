#ifndef PREDSEL_FEATURESELECT_FSSETTINGS_H
#define PREDSEL_FEATURESELECT_FSSETTINGS_H

#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

#include "featureselect/FSCriterion.h"
#include "featureselect/FSPersistence.h"
#include "host/Progress.h"

/// What a screening run is to do: the predictors and their kinds, the columns of a record, the
/// criteria to compute, the screening rules with their thresholds, and the progress and cancel
/// hooks. It is also the authority on which criterion is legal for which data and keeps the set of
/// criteria so at every change.
///
/// Nothing here fails: a setter drops a bad value and leaves its field alone, an index out of range
/// is ignored. Shares are spoken of in percent and held as fractions. One thread.
class FSSettings {
 public:
    // Predictor set types.
    static constexpr std::int32_t kAllCategorical = 0;
    static constexpr std::int32_t kAllContinuous = 1;
    static constexpr std::int32_t kMixed = 2;
    static constexpr std::int32_t kUnknownType = 3;  // no predictor yet

    // Weight conversions. Any other number is stored too, and leaves the weight as it is.
    static constexpr std::int32_t kWeightAsIs = 0;
    static constexpr std::int32_t kRoundWeight = 1;
    static constexpr std::int32_t kTruncateWeight = 2;

    /// No predictors, a categorical target, no criteria.
    FSSettings() = default;
    /// One predictor per element, true for a categorical one. An empty list counts as all
    /// categorical.
    FSSettings(std::vector<bool> predIsCategorical, bool targetIsCategorical);
    /// numPredictors of one kind. A count below 1 makes none, of that kind all the same.
    FSSettings(std::int32_t numPredictors, bool predIsCategorical, bool targetIsCategorical);

    void AddPredictor(bool categorical);
    void AddPredictors(std::int32_t count, bool categorical);
    void SetPredictorCategorical(std::int32_t index, bool categorical);
    /// All of first to last, or none when the range is not within the predictors.
    void SetPredictorsCategorical(std::int32_t first, std::int32_t last, bool categorical);
    void SetTargetCategorical(bool categorical);

    /// Switches a criterion on or off. False when the data do not allow the change; true when the
    /// criterion is in the asked state afterwards.
    bool SetCriterion(std::int32_t criterion, bool on);

    /// Shares, in percent from 0.0 to 100.0. 100.0 switches a rule off in effect.
    void SetMaxMissingPercent(double percent);
    void SetMaxSingleCategoryPercent(double percent);
    void SetMaxCategoriesPercent(double percent);
    void SetMaxOneCaseCategoriesPercent(double percent);
    /// Lower bounds, 0.0 or more.
    void SetMinCoefVar(double coefVar);
    void SetMinStdDev(double stdDev);
    /// The rules on and off.
    void SetDeleteManyMissing(bool on) { fDeleteManyMissing = on; }
    void SetDeleteManyConst(bool on) { fDeleteManyConst = on; }
    void SetDeleteManyCategs(bool on) { fDeleteManyCategs = on; }
    void SetDeleteManyCategsOneCase(bool on) { fDeleteManyCategsOneCase = on; }
    void SetDeleteSmallVar(bool on) { fDeleteSmallVar = on; }
    void SetDeleteSmallStdDev(bool on) { fDeleteSmallStdDev = on; }

    /// Records or predictors between two progress reports, 0 or more.
    void SetRecordsToSkip(std::int32_t records);
    void SetPredictorsToSkip(std::int32_t predictors);
    void SetTransactions(bool on) { fTransactions = on; }
    /// Column of the target; a negative one means that there is no target.
    void SetTargetPosition(std::int32_t column) { fTargetPosition = column < 0 ? -1 : column; }
    /// Columns of the case identifier and the weight, 0 or more.
    void SetCaseIdPosition(std::int32_t column);
    void SetWeightPosition(std::int32_t column);
    void SetWeightConversion(std::int32_t method) { fWeightConversion = method; }
    /// Both borrowed from the caller, who keeps them alive for as long as the engine runs.
    void SetProgressListener(ProgressListener* listener) { fpProgressListener = listener; }
    void SetCancelCheck(CancelCheck* check) { fpCancelCheck = check; }

    std::int32_t GetNumPredictors() const { return fNumPredictors; }
    const std::vector<bool>& GetPredIsCategorical() const { return fvPredIsCategorical; }
    /// False for an index out of range.
    bool IsPredictorCategorical(std::int32_t index) const;
    std::int32_t GetNumCategorical() const { return fNumCategorical; }
    std::int32_t GetPredSetType() const { return fPredSetType; }
    bool IsTargetCategorical() const { return fTargetIsCategorical; }
    const std::vector<bool>& GetCriteria() const { return fvCriteria; }
    /// REQUIRES: 0 <= criterion < FSCriterion::kCount.
    bool IsCriterionOn(std::int32_t criterion) const {
        return fvCriteria[static_cast<std::size_t>(criterion)];
    }
    ProgressListener* GetProgressListener() const { return fpProgressListener; }
    CancelCheck* GetCancelCheck() const { return fpCancelCheck; }
    std::int32_t GetRecordsToSkip() const { return fRecordsToSkip; }
    std::int32_t GetPredictorsToSkip() const { return fPredictorsToSkip; }
    bool GetTransactions() const { return fTransactions; }
    std::int32_t GetTargetPosition() const { return fTargetPosition; }
    std::int32_t GetCaseIdPosition() const { return fCaseIdPosition; }
    std::int32_t GetWeightPosition() const { return fWeightPosition; }
    std::int32_t GetWeightConversion() const { return fWeightConversion; }
    double GetMaxMissingPercent() const { return fMaxMissing * 100.0; }
    bool GetDeleteManyMissing() const { return fDeleteManyMissing; }
    double GetMaxSingleCategoryPercent() const { return fMaxSingleCategory * 100.0; }
    bool GetDeleteManyConst() const { return fDeleteManyConst; }
    double GetMaxCategoriesPercent() const { return fMaxCategories * 100.0; }
    bool GetDeleteManyCategs() const { return fDeleteManyCategs; }
    double GetMaxOneCaseCategoriesPercent() const { return fMaxOneCaseCategories * 100.0; }
    bool GetDeleteManyCategsOneCase() const { return fDeleteManyCategsOneCase; }
    double GetMinCoefVar() const { return fMinCoefVar; }
    bool GetDeleteSmallVar() const { return fDeleteSmallVar; }
    double GetMinStdDev() const { return fMinStdDev; }
    bool GetDeleteSmallStdDev() const { return fDeleteSmallStdDev; }

    /// How many best predictors to keep when nobody said: all of a few, else the larger of 30 and
    /// twice the square root. A count of 0 or less stands for the number of predictors.
    std::int32_t GetDefaultBestCount(std::int32_t count) const;

    /// Debugging text of every field.
    void Display(std::ostream& out) const;

    /// "All categorical" and so on; "Unrecognized" for any number that is no known type.
    static std::string_view PredSetTypeText(std::int32_t type);

    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    /// The hooks are not saved: they belong to one run.
    static constexpr Persistence::SavedClass kSaved{"FSSet", "FSSettings"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fNumPredictors,
                Persistence::Elements{self.fNumPredictors, self.fvPredIsCategorical},
                self.fNumCategorical, self.fPredSetType, self.fTargetIsCategorical,
                Persistence::Elements{FSCriterion::kCount, self.fvCriteria}, self.fRecordsToSkip,
                self.fPredictorsToSkip, self.fTransactions, self.fTargetPosition,
                self.fCaseIdPosition, self.fWeightPosition, self.fWeightConversion,
                self.fMaxMissing, self.fDeleteManyMissing, self.fMaxSingleCategory,
                self.fDeleteManyConst, self.fMaxCategories, self.fDeleteManyCategs,
                self.fMaxOneCaseCategories, self.fDeleteManyCategsOneCase, self.fMinCoefVar,
                self.fDeleteSmallVar, self.fMinStdDev, self.fDeleteSmallStdDev,
                Persistence::Check{[&self] {
                    return self.fNumCategorical >= 0 && self.fNumCategorical <= self.fNumPredictors;
                }});
    }

 private:
    friend class FSDeletionRules;  // compares with the fractions themselves, not with percents

    bool IsRefused(std::int32_t criterion, bool on) const;
    std::int32_t NumCategoricalCriteriaOn() const;
    void ResetCriteria();
    void AdjustCriteria();
    void Switch(std::int32_t criterion, bool on) {
        fvCriteria[static_cast<std::size_t>(criterion)] = on;
    }

    std::int32_t fNumPredictors = 0;
    std::vector<bool> fvPredIsCategorical;  // fNumPredictors elements
    std::int32_t fNumCategorical = 0;       // true elements of fvPredIsCategorical
    std::int32_t fPredSetType = kUnknownType;
    bool fTargetIsCategorical = true;
    std::vector<bool> fvCriteria = std::vector<bool>(FSCriterion::kCount, false);
    ProgressListener* fpProgressListener = nullptr;  // borrowed from the caller
    CancelCheck* fpCancelCheck = nullptr;            // borrowed from the caller
    std::int32_t fRecordsToSkip = 99;
    std::int32_t fPredictorsToSkip = 99;
    bool fTransactions = false;
    std::int32_t fTargetPosition = 0;   // column; -1 without target
    std::int32_t fCaseIdPosition = -1;  // column; negative without identifier
    std::int32_t fWeightPosition = -1;  // column; negative without weight
    std::int32_t fWeightConversion = kRoundWeight;
    double fMaxMissing = 0.7;  // fraction, as the next three
    bool fDeleteManyMissing = true;
    double fMaxSingleCategory = 0.95;
    bool fDeleteManyConst = true;
    double fMaxCategories = 0.9;  // of the unweighted valid cases
    bool fDeleteManyCategs = true;
    double fMaxOneCaseCategories = 0.9;  // of the categories
    bool fDeleteManyCategsOneCase = true;
    double fMinCoefVar = 0.001;  // absolute value
    bool fDeleteSmallVar = true;
    double fMinStdDev = 0.0;
    bool fDeleteSmallStdDev = true;
};

#endif  // PREDSEL_FEATURESELECT_FSSETTINGS_H

#ifndef PREDSEL_FEATURESELECT_IFSPREDTARGETACCUM_H
#define PREDSEL_FEATURESELECT_IFSPREDTARGETACCUM_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "featureselect/FSPersistence.h"
#include "featureselect/FSTestResult.h"
#include "host/Records.h"

class FSSettings;

/// All that screening and ranking need of one predictor, gathered in one pass: fed once per record
/// by FSPredictorSet, it keeps no record. There is one class for each pair of predictor and target
/// kind (IsCategorical tells the predictor's); an operation that makes no sense for a pair does
/// nothing.
///
/// The caller gives every record that counts to exactly one of AddPair, AddValue and AddMissing; a
/// missing value, or a categorical one whose code is -1, goes to AddMissing. A weight that is not
/// above 0, a NaN included, changes nothing. One thread.
///
/// The classes also have MergeFrom(other), which adds the cases of a later partition, exactly. It
/// belongs before FinishData. What was restored is exact only from then on: saved are rounded
/// numbers.
class IFSPredTargetAccum {
 public:
    virtual ~IFSPredTargetAccum() = default;

    /// One valid pair. Every caller passes true last; no class reads it.
    virtual void AddPair(double predictor, double target, double weight, bool track) = 0;
    virtual void AddMissing(double weight) = 0;
    /// One valid value when there is no target. With track false only the number of processed cases
    /// and the test for a constant take note of it.
    virtual void AddValue(double value, double weight, bool track) = 0;

    /// True also when no record was seen at all.
    virtual bool IsAllMissing() const = 0;
    /// No second value was met; true also when there was no valid one.
    virtual bool IsConstant() const = 0;
    /// The first rule that says to drop the predictor, FSDeletionReason::kManyMissing to kSmallVar,
    /// or kNone. After FinishData.
    virtual std::int32_t CheckDeletion(const FSSettings& settings) const = 0;
    /// All such rules, in the order of CheckDeletion; the vector is emptied first. Returns how
    /// many.
    virtual std::int32_t CheckAllDeletions(const FSSettings& settings,
                                           std::vector<std::int32_t>& reasons) const = 0;

    /// Derives variances and the correlation at the end of the pass.
    virtual void FinishData() = 0;

    /// A criterion's value, what orders predictors of equal value, and two more numbers of the same
    /// test. An output that cannot be computed is the missing value.
    virtual void ComputeCriterion(std::int32_t criterion, double& value, double& tieBreak1,
                                  double& tieBreak2, double& extra1, double& extra2) const;
    /// A criterion as a report shows it. 0 and 1: p-value, statistic, degrees of freedom. 2 and 3:
    /// value. 4: p-value, F and its two degrees of freedom. 5: p-value, correlation, t, degrees of
    /// freedom. The rest is missing, and all four with a result of false, for a criterion that the
    /// class does not report.
    virtual bool GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                        double& third, double& fourth) const = 0;

    virtual bool IsCategorical() const = 0;

    // See FSPersistence.h. What the pass derives at its end and the number of valid values of a
    // categorical predictor are not saved, and read as in an empty accumulator after a restore.
    virtual std::int64_t SaveBinary(std::ostream& stream) const = 0;
    virtual std::int64_t RestoreBinary(std::istream& stream) = 0;
    virtual std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const = 0;
    virtual std::int64_t RestoreXML(MCCommonXML::XMLReader& document) = 0;
    /// Debugging text.
    virtual void Display(std::ostream& out) const = 0;

    /// A criterion with all that belongs to it; ComputeCriterion hands out five numbers of this.
    /// All missing for a criterion that the class does not have.
    virtual FSTestResult Test(std::int32_t criterion) const = 0;
    /// Appends all that was gathered of the records, exactly: the same bytes for one set of records
    /// in any order, however it was cut into parts and merged. Has the lowest and the highest value
    /// or category instead of the first one.
    virtual void AppendExact(std::string& bytes) const = 0;

 protected:
    template <class... Outputs>
    static void SetMissing(Outputs&... outputs) {
        ((outputs = MCMV::gMissingValue), ...);
    }
};

#endif  // PREDSEL_FEATURESELECT_IFSPREDTARGETACCUM_H

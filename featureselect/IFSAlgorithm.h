#ifndef PREDSEL_FEATURESELECT_IFSALGORITHM_H
#define PREDSEL_FEATURESELECT_IFSALGORITHM_H

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "featureselect/FSStatus.h"
#include "host/Progress.h"
#include "host/Records.h"

class FSSettings;

/// The screening engine: reads every record once, drops predictors by the screening rules, ranks
/// the others by each criterion that the settings ask for, and answers questions about the result.
///
/// Made by FSFactory and driven by RunAll, or step by step in the order AccumulateData,
/// DeleteMissingOrConstant, DeleteByCriteria, RankPredictors; ScreenOnly stands by itself.
/// Every step returns a status and keeps it: after an error each later step returns that error and
/// does nothing. A cancelled step empties the engine and leaves status 1. Nothing throws.
/// One thread; Cancel is the one operation that a listener or check may call from within a pass.
///
/// Criteria are numbered 0 Pearson chi-square, 1 likelihood ratio chi-square, 2 Cramer's V,
/// 3 asymmetric lambda, 4 F statistic, 5 t statistic.
class IFSAlgorithm {
 public:
    /// Unweighted and weighted number of cases of a target category; -1 and -1.0 when unknown.
    using CategoryCount = std::pair<std::int32_t, double>;

    virtual ~IFSAlgorithm() = default;

    /// Name and version of the component, and the copyright line.
    virtual std::string GetVersion() const = 0;
    /// The status of the last step.
    virtual FSStatus GetStatus() const = 0;

    /// Reads the records, at most maxRecords of them (negative: all).
    /// 80013 no record with a valid weight, 80009 no valid value, 80007 and 80008 for transactions.
    virtual FSStatus AccumulateData(MCCommon::RecordIterator& records, std::int32_t maxRecords) = 0;
    virtual void GetRecordCounts(double& weightedValid, double& weightedExcluded,
                                 std::int32_t& unweightedValid,
                                 std::int32_t& unweightedExcluded) const = 0;

    /// -1 without a table of target categories.
    virtual std::int32_t GetNumberOfTargetCategories() const = 0;
    virtual CategoryCount GetTargetCategoryByValue(std::int32_t category) const = 0;
    /// The category at a position in ascending order; false, -1 and an unknown count outside it.
    virtual bool GetTargetCategoryByIndex(std::int32_t position, std::int32_t& category,
                                          CategoryCount& count) const = 0;

    /// Drops predictors without a valid value or with one value throughout.
    /// Warning 80010: none is left. 80011: none was left before.
    virtual FSStatus DeleteMissingOrConstant() = 0;
    /// Drops predictors by the screening rules. Warning 80011: none is left.
    virtual FSStatus DeleteByCriteria() = 0;
    virtual std::int32_t GetNumberOfDeleted() const = 0;
    /// Deleted predictors in ascending order.
    virtual std::vector<std::int32_t> GetDeletedIndices() const = 0;
    /// The reason (1 to 8) of each, parallel to GetDeletedIndices.
    virtual std::vector<std::int32_t> GetDeletionReasons() const = 0;

    /// Computes the criteria, sorts and ranks: all predictors for n = 0, else the n best ones.
    /// Error 80012, integer 0 the number remaining: fewer than n remain.
    virtual FSStatus RankPredictors(std::int32_t n) = 0;
    /// The whole run: AccumulateData, DeleteMissingOrConstant, DeleteByCriteria when screen asks
    /// for it, RankPredictors. A warning stops the chain too.
    virtual FSStatus RunAll(MCCommon::RecordIterator& records, std::int32_t maxRecords, bool screen,
                            std::int32_t n) = 0;
    /// Reads the records without a target and gives, for each predictor that breaks at least one
    /// screening rule, its index and all its reasons. Deletes nothing. The settings are left
    /// without a target. 80009 and 80013 are warnings here.
    virtual FSStatus ScreenOnly(MCCommon::RecordIterator& records,
                                std::vector<std::int32_t>& indices,
                                std::vector<std::vector<std::int32_t>>& reasons,
                                std::int32_t maxRecords) = 0;

    /// XML report of one criterion (FSOutputOne): the n best predictors in its order; 0: as many as
    /// were sorted. 1 cancelled, 6 not ranked yet, 80006 criterion wasn't asked for, and error
    /// 80012 behind a report that fewer than n predictors remain for.
    virtual FSStatus WriteOutputOne(std::ostream& stream, std::int32_t criterion,
                                    std::int32_t n) = 0;
    /// The numbers behind a criterion of a predictor, as the tables show them: p-value, statistic
    /// and degrees of freedom for 0 and 1; the value for 2 and 3; p-value, F, df1, df2 for 4;
    /// p-value, correlation, t, N - 2 for 5. False, and all missing, when the predictor is deleted
    /// or doesn't have the criterion.
    virtual bool GetPredictorCriterion(std::int32_t criterion, std::int32_t predictor,
                                       double& first, double& second, double& third,
                                       double& fourth) const = 0;

    /// XML report of the screening and of all criteria (FSOutputAll). 1 cancelled, 6 not screened
    /// yet.
    virtual FSStatus WriteOutputAll(std::ostream& stream) = 0;
    /// The whole state, for FSFactory::CreateFromBinary and CreateFromXML. Writes nothing after an
    /// error or a cancel (1), which is the result; else the result is the status of the last step.
    /// These four operations leave that status alone, and errors of the stream to its state.
    virtual FSStatus SaveBinary(std::ostream& stream) = 0;
    virtual FSStatus SaveXML(std::ostream& stream) = 0;

    virtual void Cancel() = 0;
    /// listener and check are borrowed and may be null.
    virtual void SetProgressListener(ProgressListener* listener) = 0;
    virtual void SetCancelCheck(CancelCheck* check) = 0;

    virtual FSSettings& GetSettings() = 0;
    virtual const FSSettings& GetSettings() const = 0;

    /// Rank by predictor index, from 0; -1 marks an unranked predictor. Empty for a criterion that
    /// wasn't asked for. Criterion 5 reads 4 for a mixed set with a continuous target.
    virtual std::vector<std::int32_t> GetRanks(std::int32_t criterion) const = 0;
    /// Value by predictor index, missing where there is none; otherwise as GetRanks.
    virtual std::vector<double> GetCriterionValues(std::int32_t criterion) const = 0;
    /// The n best predictors (0: as many as were sorted) with their criterion values, best first.
    /// 6 not ranked yet, 80006 criterion wasn't asked for, warning 80012 fewer than n remain.
    virtual FSStatus GetBestPredictors(std::int32_t criterion, std::vector<std::int32_t>& indices,
                                       std::vector<double>& values, std::int32_t n) = 0;

    virtual bool IsDataAccumulated() const = 0;
    virtual bool IsRanked() const = 0;
    virtual void Display(std::ostream& out) const = 0;

    /// Adds the cases of a later partition, which other has read under equal settings; between
    /// AccumulateData and the next step. The result is that of one pass over both, to the bit, but
    /// for what was restored: saved are rounded numbers.
    /// 80014, and nothing changed, when the two don't fit or are past that point.
    virtual FSStatus MergeFrom(const IFSAlgorithm& other) = 0;

    /// The natural logarithm of the p-value of a criterion of a predictor, which a double holds
    /// where it does not hold the p-value; minus infinity for a p-value of exactly 0. False, and
    /// missing, when the predictor is deleted, doesn't have the criterion or has no p-value.
    virtual bool GetPredictorLogP(std::int32_t criterion, std::int32_t predictor,
                                  double& logP) const = 0;
};

#endif  // PREDSEL_FEATURESELECT_IFSALGORITHM_H

#ifndef PREDSEL_NAIVEBAYES_NBSUBSETSEARCH_H
#define PREDSEL_NAIVEBAYES_NBSUBSETSEARCH_H

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "host/Blocks.h"
#include "host/Records.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBExactSum.h"
#include "naivebayes/NBInterruptState.h"
#include "naivebayes/NBStatus.h"
#include "naivebayes/NBSubsetModel.h"
#include "naivebayes/NBSubsetRecords.h"
#include "naivebayes/NBWriteOptions.h"
#include "naivebayes/NaiveBayesSettings.h"

class NBDataPreparator;
class NBInternalAdapter;
class NBRecordSimulator;
class NBVarList;
class NBayesInput;
class NBayesOutput;

/// Greedy forward selection of the candidates that enter the model. The forced predictors come
/// first; then at each step joins the candidate that most raises the average conditional
/// log-likelihood of the target. That gives a nested chain of subsets, one a size, of which one is
/// the model: the whole chain, or the best by the pseudo-BIC or by test records.
///
/// No probability changes in the search. All logarithms are natural. With N the weight of the
/// training records, S a subset, L_j the average log of predictor j's probability and L_0 that of
/// the target's prior in the training records:
///   J(S) = L_0 + sum over S of L_j, the average joint log-likelihood, without a pass;
///   Q_r(S) the log probability of the codes of record r, see NBSubsetRecords;
///   A(S) = J(S) - average over the records of Q_r(S), the average conditional log-likelihood.
///
/// Lives for one search. One run operation a life.
class NBSubsetSearch {
 public:
    /// All are borrowed from the engine. inputs: one table per variable of role 1 or 2, in list
    /// order, filled and with probabilities, as output. executor: shares the work, may be null.
    NBSubsetSearch(const std::vector<NBayesInput>& inputs, const NBayesOutput& output,
                   NBVarList& varList, const NaiveBayesSettings& settings,
                   NBInterruptState& interrupt, MCCommon::BlockExecutor* executor = nullptr);

    // The three runs. records: prepared training records, at most numRecords of them, left rewound.
    // maxSize counts forced predictors too and is not below their number, nor below 1. fits: the
    // records are in memory; else candidates are scored on records drawn from the model.
    // selectedOut takes the whole chain, as indices of the variable list in selection order;
    // bestSubsetsOut the numBest best sizes (at least 1 is asked for), best first. The chosen
    // candidates get role 1. After an interrupt: error 1, nothing is chosen.

    NBStatus RunExactSize(std::int32_t maxSize, MCCommon::MultiPassRecordIter& records,
                          std::int32_t numRecords, bool fits,
                          std::vector<std::int32_t>& selectedOut);
    NBStatus RunPseudoBIC(std::int32_t maxSize, MCCommon::MultiPassRecordIter& records,
                          std::int32_t numRecords, bool fits,
                          std::vector<std::int32_t>& selectedOut,
                          std::vector<NBSubset>& bestSubsetsOut, std::int32_t numBest);
    /// testRecords are original records, at most numTest are read (negative: all). Error 70003:
    /// none of them can be used.
    NBStatus RunTestData(std::int32_t maxSize, MCCommon::MultiPassRecordIter& records,
                         std::int32_t numRecords, bool fits,
                         MCCommon::MultiPassRecordIter& testRecords, std::int32_t numTest,
                         std::vector<std::int32_t>& selectedOut,
                         std::vector<NBSubset>& bestSubsetsOut, std::int32_t numBest,
                         const NBDataPreparator& preparator);

    /// A(S) by size, entry s-1 for size s, as many as maxSize; returns their number. 0 for a size
    /// that was not evaluated: those below the forced one, those beyond the chain, and, for an
    /// exact size, the forced one.
    std::int32_t GetCriteria(std::vector<double>& out) const;

    /// Writes the chain and the best subsets as an XML document. usedTestData names the criterion.
    /// options may be null. Always success; after an interrupt nothing is written.
    NBStatus WriteSelectionXML(std::ostream& stream, bool usedTestData,
                               const NBWriteOptions* options) const;

 private:
    /// What a step scores: the subset and the candidates, ascending, and the candidates' scores.
    struct Step {
        std::vector<std::int32_t> fvSelected;
        std::vector<std::int32_t> fvCandidates;
        std::vector<double> fvScores;
    };

    /// A step's best candidate.
    struct Choice {
        std::size_t fPlace;
        double fScore;     // A
        NBExactSum fLoss;  // -N * A, in units of NBGridLog
    };
    /// A size with a sum that stands for its criterion.
    struct Ranked {
        NBSubset fSubset;
        NBExactSum fSum;
    };

    // All three return -1 when interrupted; the evaluations else the best size, 0 when no test
    // record could be used.
    std::int32_t ForwardSelect(std::int32_t maxSize, MCCommon::MultiPassRecordIter& records,
                               std::int32_t numRecords, bool fits);
    std::int32_t EvaluatePseudoBIC(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords,
                                   std::vector<NBSubset>& bestOut);
    std::int32_t EvaluateTestData(NBInternalAdapter& adapter, std::int32_t numRecords,
                                  std::vector<NBSubset>& bestOut);

    /// N times L_j of every predictor and N times L_0, which it returns, in units of NBGridLog.
    NBExactSum ComputeLogLikelihoods();
    void SplitByRole(Step& step);
    /// What no pass takes of A of the subset with this candidate. joint: J of the subset.
    double OwnPart(double joint, std::int32_t table) const {
        return joint + fvPredictorLogLik[static_cast<std::size_t>(table)];
    }
    // The best of the candidates is that with the highest A, the first of equal ones: quick scores
    // leave those that rounding may have put behind, exact ones decide. Neither the order of the
    // records nor who does the work counts. joint: of the subset, see fvJointLogsBySize.
    /// On the kept records, which the best joins.
    Choice PickOnRecords(Step& step, const NBExactSum& joint);
    /// On records that it draws. Sets no loss.
    Choice PickOnDrawn(Step& step, const NBExactSum& joint, NBRecordSimulator& simulator);
    /// The places of all candidates that may be the best. Adds to the quick scores, which are
    /// factor times sums, what no pass takes. joint: J of the subset.
    std::vector<std::size_t> ListClose(Step& step, double joint, double factor) const;
    static std::vector<std::int32_t> ListAt(const Step& step,
                                            const std::vector<std::size_t>& places);
    /// A(S) of the sizes from the smallest to lastSize, on the training records.
    void EvaluateSizes(std::int32_t lastSize, MCCommon::MultiPassRecordIter& records,
                       std::int32_t numRecords);
    /// Adds the exact scores of the sizes from the smallest to lastSize on the records of fRecords.
    void AddSizes(std::int32_t lastSize, std::vector<NBExactSum>& sums);
    /// rounding: what sums of equal criteria differ by at most.
    std::int32_t KeepBest(std::vector<Ranked> sizes, double rounding,
                          std::vector<NBSubset>& bestOut);
    void ListSelected(std::vector<std::int32_t>& selectedOut) const;
    void ApplySelection(std::int32_t size);

    /// Puts the first numRecords training records that have a weight above 0 into fRecords, at most
    /// lot at a time; calls visit() after each lot. Until interrupted; then rewinds.
    template <class Visit>
    void ForEachLot(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords,
                    std::int32_t lot, Visit visit);
    /// Whether the records that the last ForEachLot read were as many as the tables count. An
    /// engine passes the same ones; then A is a mean over the records, else of two sums.
    bool AreRecordsThoseOfTheTables() const;
    /// Where the tables' codes stand in prepared training records.
    std::vector<std::int32_t> TrainingPositions() const;
    /// Of the sizes that are compared: that of the forced predictors, never 0.
    std::int32_t SmallestSize() const { return fNumForced > 1 ? fNumForced : 1; }
    std::int32_t ChainLength() const { return static_cast<std::int32_t>(fvSelectedOrder.size()); }

    const std::vector<NBayesInput>& fvInputs;
    const NBayesOutput& fOutput;
    NBVarList& fVarList;
    const NaiveBayesSettings& fSettings;
    double fTotalWeight;  // N
    double fUnit;         // a unit of NBGridLog a unit of weight
    bool fbWeighted;      // element 1 of a record is its weight
    std::int32_t fNumBestSubsets = 5;
    std::int32_t fNumForced = 0;
    std::vector<std::int32_t> fvSelectedOrder;  // table indices in order of entry
    std::vector<double> fvPredictorLogLik;      // L_j, a table each
    std::vector<double> fvCriterionBySize;      // A(s) at s-1
    std::vector<NBExactSum> fvPredictorLogs;    // N * L_j, in units of NBGridLog
    std::vector<NBExactSum> fvLossBySize;       // -N * A(s), likewise, at s-1
    std::vector<NBExactSum> fvJointLogsBySize;  // N * J(s), likewise
    bool fbSimulated = false;                   // candidates were scored on drawn records
    std::vector<NBSubset> fvBestSubsets;        // best first
    NBInterruptState& fInterrupt;
    NBSubsetModel fModel;
    NBSubsetRecords fRecords;
    bool fbKept = false;              // fRecords holds the training records
    bool fbByTarget = false;          // A is the mean log posterior of the records' own targets
    std::size_t fNumTargetsRead = 0;  // records with a target, of the last ForEachLot
};

#endif  // PREDSEL_NAIVEBAYES_NBSUBSETSEARCH_H

#ifndef PREDSEL_FEATURESELECT_FSPREDICTORSET_H
#define PREDSEL_FEATURESELECT_FSPREDICTORSET_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "featureselect/FSCancelState.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSMapIPCnt.h"
#include "featureselect/FSPersistence.h"
#include "featureselect/FSPredSort.h"
#include "featureselect/FSStatus.h"
#include "featureselect/IFSPredTargetAccum.h"
#include "host/Records.h"

class FSSettings;

struct FSBlockCases;

namespace MCCommon {
class BlockExecutor;
class RecordBlockSource;
struct RecordBlock;
}  // namespace MCCommon

namespace MCCommonXML {
class XMLElement;
}

/// The working store of one selection run: one accumulator per predictor, fed by a single pass over
/// the records; then the screening verdicts; then, per criterion, values, order and ranks.
///
/// FSAlgorithm calls the steps in order. A cancelled step ends early with what it has and reports
/// success; FSAlgorithm sees the cancel and resets the set. Keeps no record. One thread.
class FSPredictorSet {
 public:
    /// How far the set has come. The numbers are saved.
    enum State : std::int32_t {
        kInitial = 1,
        kAccumulated = 2,
        kChecked = 3,
        kComputed = 4,
        kSortedAll = 5,
        kSortedBest = 6,
        kRanked = 7,
    };

    /// settings and cancel are borrowed from the owner of the set and outlive it. The criteria that
    /// are on now are those that get ranks and values: one switched on later gets none.
    FSPredictorSet(const FSSettings& settings, FSCancelState& cancel);

    // --- Data pass (FSPredictorSetPass.cpp) ---
    // Records are read in blocks where the source offers them (FSPredictorSetBlocks.cpp), with the
    // same state and the same reports; the cancel check then is polled between blocks.

    /// Makes one accumulator per predictor, by its kind and the kind of target, and the table of
    /// target categories. False, and nothing done, when they exist already.
    bool AllocateAccumulators(bool withTarget);

    /// Reads at most maxRecords records (negative: all); a record counts when its weight is valid,
    /// whatever else is wrong with it. A column that a record doesn't have reads as missing.
    /// 80013: a weight column and no weight above 0. 80009: no valid value of any predictor.
    FSStatus AccumulateRecords(MCCommon::RecordIterator& records, std::int32_t maxRecords);

    /// Reads transactions: every record is one item, with the columns transaction identifier,
    /// predictor index, value, target of the transaction; indices rise within a transaction.
    /// 80007 index out of order, 80008 index out of range (both at once, with their integers),
    /// 80009 no valid value of any predictor.
    FSStatus AccumulateTransactions(MCCommon::RecordIterator& items);

    /// As AccumulateRecords, but without a target; 80013 and 80009 are warnings. All used records
    /// are counted as excluded: with no target there are no valid ones.
    FSStatus AccumulateForScreening(MCCommon::RecordIterator& records, std::int32_t maxRecords);

    /// Adds the cases of a later partition, which other has read under equal settings. All sums
    /// are exact, but of a set that was restored; partition order counts for the first value of
    /// each predictor. False, and nothing changed, unless both sets stand between data pass and
    /// FinishDataPass, nothing is deleted, their predictors and targets are of the same kinds, the
    /// input is not transactions, and the summed numbers of records fit 32 bits.
    bool MergeFrom(const FSPredictorSet& other);

    /// Derived statistics of all accumulators. The later steps call it where it is still due.
    FSStatus FinishDataPass();

    // --- Screening (FSPredictorSetScreening.cpp) ---

    /// Deletes predictors without a valid value (reason 1), else with one value throughout (2).
    /// Warning 80011: none was left before; 80010: none is left now.
    FSStatus DeleteMissingOrConstant();
    /// Deletes predictors by the first screening rule they break (reasons 3 to 8).
    /// Warning 80011: none is left.
    FSStatus DeleteByCriteria();
    /// All broken rules of each predictor that breaks one, with nothing deleted.
    /// Warning 80011: every predictor is deleted already.
    FSStatus CollectDeletionReasons(std::vector<std::int32_t>& indices,
                                    std::vector<std::vector<std::int32_t>>& reasons);

    // --- Criteria, order, ranks (FSPredictorSetRanking.cpp) ---

    /// All criteria that are on, for all remaining predictors. Starts a ranking afresh.
    FSStatus ComputeCriteria();
    /// Full sort of each criterion, see FSPredOrder.h.
    FSStatus SortAll();
    /// The head of the same orders: the count best of each criterion; below 1 means all that
    /// remain. A criterion with fewer records lowers the count for those after it.
    FSStatus SortBest(std::int32_t count);
    FSStatus RankAll();
    /// Ranks for the head that SortBest has sorted for every criterion.
    FSStatus RankBest();

    /// The head of a criterion's order. count 0 means what SortBest was given, else all remaining.
    /// 80006: the criterion isn't on.
    FSStatus GetBest(std::int32_t criterion, std::int32_t count, std::vector<std::int32_t>& indices,
                     std::vector<double>& values) const;
    /// Rank and value by predictor; empty for a criterion outside 0 to 5 or not on at construction.
    const std::vector<std::int32_t>& GetRanks(std::int32_t criterion) const;
    const std::vector<double>& GetCriterionValues(std::int32_t criterion) const;
    /// IFSPredTargetAccum::GetCriterionForDisplay of a remaining predictor; else false and missing.
    bool GetPredictorCriterion(std::int32_t criterion, std::int32_t predictor, double& first,
                               double& second, double& third, double& fourth) const;
    /// The natural logarithm of the p-value of a criterion of a remaining predictor, minus infinity
    /// for 0. False, and missing, for what has no p-value.
    bool GetPredictorLogP(std::int32_t criterion, std::int32_t predictor, double& logP) const;

    /// "Pearson", "Likelihood", "Cramer", "Lambda", "F-Statistic", "t-Statistic", else empty.
    static std::string_view GetCriterionName(std::int32_t criterion);
    /// Name of a deletion reason; empty outside 1 to 8.
    static std::string_view GetReasonName(std::int32_t reason);

    // --- State ---

    /// Frees everything and empties the set, as after a cancel. State and counters stay.
    void Reset();

    std::int32_t GetState() const { return fStatus; }
    std::int32_t GetNumberOfPredictors() const { return fNumPredictors; }
    std::int32_t GetNumberOfRemaining() const { return fNumPredictors - GetNumberOfDeleted(); }
    std::int32_t GetNumberOfDeleted() const {
        return static_cast<std::int32_t>(fvDeletedIndices.size());
    }
    const std::vector<std::int32_t>& GetDeletedIndices() const { return fvDeletedIndices; }
    const std::vector<std::int32_t>& GetDeletionReasons() const { return fvDeletionReasons; }
    void GetRecordCounts(double& weightedValid, double& weightedExcluded,
                         std::int32_t& unweightedValid, std::int32_t& unweightedExcluded) const;
    /// -1 without a table of target categories.
    std::int32_t GetNumberOfTargetCategories() const;
    /// The table of target categories, or null without one.
    const FSMapIPCnt* GetTargetCategories() const { return fpTargetAccum.get(); }

    void Display(std::ostream& out) const;

    // --- Reports (FSPredictorSetReports.cpp) ---

    /// The XML report of one criterion: the predictors in its order, the n best ones or, for n = 0,
    /// as many as were sorted. A number of no criterion has no predictors. 1 cancelled, 6 not
    /// ranked yet; then nothing is written. Errors of the stream show in its state.
    FSStatus WriteOutputOne(std::ostream& stream, std::int32_t criterion, std::int32_t n) const;
    /// The XML report of the screening and, once ranked, of every criterion of every remaining
    /// predictor. 1 cancelled, 6 not screened yet.
    FSStatus WriteOutputAll(std::ostream& stream) const;

    // --- Saved state (FSPredictorSetIO.cpp) ---

    /// See FSPersistence.h. A restore goes by the settings that the set was made with: they must
    /// have as many predictors.
    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    static constexpr Persistence::SavedClass kSaved{"PRSET", "FSPredictorSet"};
    /// In FSPredictorSetFields.h.
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive);

 private:
    struct Transaction;
    struct BlockRecords;
    struct BlockParts;

    void BeginPass(bool withTarget);
    template <class Take>
    void ReadRecords(MCCommon::RecordIterator& records, std::int32_t maxRecords, Take take);
    std::vector<std::int32_t> PredictorColumns(bool withTarget) const;
    bool ReadWeight(const MCCommon::Record& record, double& weight);
    bool ConvertWeight(double& weight) const;
    bool IsTargetMissing(double target) const;
    template <class AddValid>
    bool FeedPredictors(const MCCommon::Record& record, const std::vector<std::int32_t>& columns,
                        double weight, AddValid addValid);
    void ReadBlocks(MCCommon::RecordBlockSource& source, std::int32_t maxRecords, bool withTarget);
    void ReadBlockRecords(const MCCommon::RecordBlock& block, bool withTarget,
                          BlockRecords& records) const;
    void ReadBlockWeights(const MCCommon::RecordBlock& block, BlockRecords& records) const;
    void AddBlockRows(const MCCommon::RecordBlock& block, const std::vector<std::int32_t>& columns,
                      const std::vector<std::int32_t>& kinds, const BlockRecords& records,
                      std::size_t first, const FSBlockCases& cases,
                      MCCommon::BlockExecutor* executor);
    static bool NeedsNumbers(const std::vector<BlockParts>& all, const FSBlockCases& cases);
    static void FeedParts(const std::vector<BlockParts>& all, const FSBlockCases& cases,
                          MCCommon::BlockExecutor* executor);
    void CountBlockRows(const std::vector<BlockParts>& all, const BlockRecords& records,
                        std::size_t first, const FSBlockCases& cases);
    void AddWeights(const BlockRecords& records, std::size_t first,
                    std::span<const std::uint32_t> empty, const FSBlockCases& cases,
                    std::vector<FSMapIPCntEntry>& classes);
    void CountValid(double target, double weight);
    void CountExcluded(double weight);
    FSStatus PassResult(std::int16_t severity) const;
    bool IsCutShort(const Transaction& transaction) const;
    void CloseTransaction(const Transaction& transaction);
    void AddMissingItems(std::int32_t first, std::int32_t end);
    bool CanMerge(const FSPredictorSet& other) const;
    void FinishDataPassIfDue();

    template <class Verdict>
    FSStatus DeletePredictors(const FSStatus& noneLeft, Verdict verdict);
    void SortDeleted();

    void BeginRanking();
    void ComputePredictor(std::int32_t predictor, const IFSPredTargetAccum& accum);
    void AddResult(std::int32_t criterion, std::int32_t predictor, const FSTestResult& result);
    void RankHeads(std::int32_t limit);
    std::size_t ResultSlot(std::int32_t criterion) const;
    static bool IsCriterion(std::int32_t criterion);
    const IFSPredTargetAccum* AccumOf(std::int32_t predictor) const;
    std::int32_t RankOf(std::int32_t criterion, std::int32_t predictor) const;
    std::unique_ptr<MCCommonXML::XMLElement> StartReport(std::string_view rootName) const;
    void AddTarget(MCCommonXML::XMLElement& root) const;
    MCCommonXML::XMLElement& AddPredictor(MCCommonXML::XMLElement& parent, std::string_view name,
                                          std::int32_t predictor) const;
    void AddExcluded(MCCommonXML::XMLElement& root) const;
    void AddCriteria(MCCommonXML::XMLElement& root) const;
    void AddCriteriaAndRanks(MCCommonXML::XMLElement& element, std::int32_t predictor) const;
    void AddCriterionAndRank(MCCommonXML::XMLElement& element, std::int32_t criterion,
                             std::int32_t predictor) const;
    void AddSharedTest(MCCommonXML::XMLElement& element, std::int32_t criterion,
                       std::int32_t predictor) const;
    bool HoldsTogether() const;

    const FSSettings* fpSettings;  // borrowed, see the constructor
    FSCancelState* fpCancel;       // likewise
    std::int32_t fNumPredictors;
    std::int32_t fPredSetType;
    std::int32_t fStatus = kInitial;
    bool fMemoryAllocated = false;
    bool fDataPassCompleted = false;
    bool fNoValidData = true;
    bool fNoValidWeight = true;  // stays true without a weight column
    FSWeightSum fWeightedValid;
    FSWeightSum fWeightedExcluded;
    std::int32_t fUnweightedValid = 0;
    std::int32_t fUnweightedExcluded = 0;
    double fElapsed = 0;  // processor time of all steps so far [seconds]
    std::int32_t fNumBestSorted = 0;
    std::unique_ptr<FSMapIPCnt> fpTargetAccum;
    std::vector<std::unique_ptr<IFSPredTargetAccum>> fvpAccum;  // null after deletion
    std::vector<std::int32_t> fvDeletedIndices;
    std::vector<std::int32_t> fvDeletionReasons;  // parallel to fvDeletedIndices
    // By criterion number.
    std::array<std::vector<std::unique_ptr<FSPredSort>>, FSCriterion::kCount> fvpSort;
    std::array<std::vector<std::int32_t>, FSCriterion::kCount> fvRanks;  // by predictor
    std::array<std::vector<double>, FSCriterion::kCount> fvValues;       // by predictor
    std::array<std::vector<double>, FSCriterion::kCount> fvLogP;         // by predictor; not saved
};

#endif  // PREDSEL_FEATURESELECT_FSPREDICTORSET_H

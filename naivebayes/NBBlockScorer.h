#ifndef PREDSEL_NAIVEBAYES_NBBLOCKSCORER_H
#define PREDSEL_NAIVEBAYES_NBBLOCKSCORER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "host/Blocks.h"
#include "naivebayes/NBBlockScores.h"
#include "naivebayes/data/NBBlockBinning.h"

class NBayesInput;
class NBayesOutput;
class NBDataPreparator;

/// Scores a block of original records predictor by predictor. Each record gets the bits that it has
/// by itself: its factors are multiplied in the order of the tables, its sum adds up in the order
/// of the target's categories.
class NBBlockScorer {
 public:
    /// All borrowed, those of a built model. The block's columns stand in the order of the list.
    NBBlockScorer(const NBDataPreparator& preparator, const std::vector<NBayesInput>& tables,
                  const NBayesOutput& target, const MCCommon::RecordBlock& block);

    /// False when a predictor arrives as what it is not: the records are then scored one by one.
    bool IsUsable() const { return fbUsable; }
    /// Sets the results of all records. executor may be null.
    void Score(MCCommon::BlockExecutor* executor, NBBlockScores& scores) const;

 private:
    struct Predictor {
        MCCommon::BlockColumn fColumn;
        std::optional<NBBlockBinning> fBinning;  // of a continuous one
        /// Entries from here on are codes out of range.
        std::uint32_t fValidEnd = 0;
        /// fWidth factors an entry; 1 for what is missing or out of range.
        std::vector<double> fvFactors;
    };
    struct Scratch;

    bool AddPredictor(const NBDataPreparator& preparator, std::size_t input,
                      const NBayesInput& table, const NBBlockBinning* binning);
    void ScoreRows(std::size_t first, std::size_t end, NBBlockScores& scores) const;
    void MultiplyFactors(std::size_t first, Scratch& scratch) const;
    template <class Entry>
    void MultiplyFactors(const Predictor& predictor, const Entry* entries, Scratch& scratch) const;
    void FinishRow(std::size_t row, std::size_t inScratch, Scratch& scratch,
                   NBBlockScores& scores) const;

    const MCCommon::RecordBlock& fBlock;
    const NBayesOutput& fTarget;
    std::size_t fCategories;  // of the target
    std::size_t fWidth;       // the same, made even
    std::vector<Predictor> fvPredictors;
    bool fbUsable = true;
};

#endif  // PREDSEL_NAIVEBAYES_NBBLOCKSCORER_H

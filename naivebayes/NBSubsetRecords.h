#ifndef PREDSEL_NAIVEBAYES_NBSUBSETRECORDS_H
#define PREDSEL_NAIVEBAYES_NBSUBSETRECORDS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/Blocks.h"
#include "host/Records.h"
#include "naivebayes/NBEntryColumn.h"
#include "naivebayes/NBExactSum.h"
#include "naivebayes/NBSubsetModel.h"

struct NBInterruptState;

/// The records that a search scores, and the subset that grows on them.
///
/// Q_r(S) = log(sum over target categories k of Pi[k] * product over j in S of P_j[x_rj][k]) is the
/// log probability of the codes of record r in the predictors of S; a missing code contributes no
/// factor. Codes are kept column by column, and for each record the Pi[k] times the product over
/// the subset so far, so that trying a further predictor takes one row of its table a record. The
/// products are scaled by powers of 2.
///
/// There are two sums over the records. Score is quick: one logarithm serves all the records of a
/// piece, see NBMixtures::Product; its rounding is bounded and depends on the order of the records.
/// ScoreExactly takes one logarithm a record, of numbers of 106 bits on a fixed grid, and adds
/// without rounding: what it gives depends on no order, and is equal where the records' logarithms
/// are, in whatever way they came about. Where records keep their target category y it sums
///     log(posterior of y)^-1 = Q_r(S) - log(Pi[y] * product over j in S of P_j[x_rj][y]),
/// which a predictor that adds nothing to a record leaves as it is, to the bit.
///
/// Probabilities stay plain, and nothing guards against underflow: a product of very many small
/// ones that does not fit into a double is 0 and its score infinite. Intended. Records near that,
/// and those whose weight too few others have, are scored one by one from their codes: product by
/// predictor in the order of the list that is given, one logarithm each.
///
/// Pieces and the order of all additions depend on the records alone, not on who does the work.
class NBSubsetRecords {
 public:
    /// In the place of a candidate: none, the subset as it is.
    static constexpr std::int32_t kNone = -1;

    /// model and interrupt are borrowed and must stay. executor: borrowed, may be null. The
    /// interrupt is polled on the caller's thread, every few milliseconds.
    NBSubsetRecords(const NBSubsetModel& model, NBInterruptState& interrupt,
                    MCCommon::BlockExecutor* executor);

    /// No records, the empty subset. numExpected: makes room for so many.
    void Clear(std::size_t numExpected = 0);
    /// Appends a record, its target code at position 0. positions: where the code of each table
    /// stands in it; a table at -1 may not be asked for.
    void Add(const MCCommon::Record& record, const std::vector<std::int32_t>& positions,
             double weight);
    /// Appends the rows of a block whose weight is above 0. weightPosition: -1 when each record
    /// counts once.
    void Add(const MCCommon::RecordBlock& block, const std::vector<std::int32_t>& positions,
             std::int32_t weightPosition);
    /// Ends the adding: the empty subset.
    void Arrange();
    std::size_t GetNumRecords() const { return fNumRecords; }
    /// Records with a target category.
    std::size_t GetNumTargets() const { return fNumTargets; }

    /// Back to the empty subset.
    void Restart();
    /// Takes a further predictor into the subset.
    void Join(std::int32_t table);
    /// Factor times the sum of weight * Q of the subset with each candidate. selected: the subset's
    /// tables, in the order of multiplication. Equal columns with equal tables get equal scores.
    /// Left unfinished by an interrupt.
    void Score(const std::vector<std::int32_t>& selected,
               const std::vector<std::int32_t>& candidates, double factor,
               std::vector<double>& scoresOut);
    /// How far a score of these records can be from its true value for the probabilities of
    /// NBSubsetModel::GetExactRows. numSelected: the size of the subset.
    double ScoreError(std::size_t numSelected, double factor, double score) const;
    /// The sum of weight * logarithm, in units of NBGridLog, of the subset with each candidate:
    /// with byTarget those of 1 / posterior, where there is a target category, else Q. Left
    /// unfinished by an interrupt.
    void ScoreExactly(const std::vector<std::int32_t>& selected,
                      const std::vector<std::int32_t>& candidates, bool byTarget,
                      std::vector<NBExactSum>& sumsOut) const;

 private:
    /// Neighbouring records that are scored together.
    struct Piece {
        std::size_t fFirst = 0;      // its first slot
        std::size_t fCount = 0;      // records
        double fWeight = 0.0;        // of each
        bool fbMixed = false;        // weights differ: they stand in fvWeights
        std::int64_t fExponent = 0;  // what was taken out of its products, as a power of 2
        bool fbNearUnderflow = false;
        bool fbLetGo = false;  // some numbers of its products
        /// Scored quickly from codes.
        bool IsPlain() const { return fbMixed || fbNearUnderflow; }
        /// Scored exactly from codes.
        bool IsBeyondProducts() const { return fbNearUnderflow || fbLetGo; }
    };
    /// What one thread scores a piece exactly with.
    struct Scratch;
    /// A subset, a further predictor or kNone, and what is asked for.
    struct Asked {
        const std::vector<std::int32_t>& fvSelected;
        std::int32_t fCandidate;
        bool fbByTarget;
    };

    /// Puts records of the same weight together where there are enough of them. Returns the records
    /// by slot, kEmpty where a slot stays empty.
    std::vector<std::size_t> SortByWeight();
    /// Makes pieces of so many records from the next slot on.
    void AppendPieces(std::size_t count, double weight, bool mixed);
    void JoinPiece(Piece& piece, std::size_t table);
    double WeightOf(const Piece& piece, std::size_t slot) const {
        return piece.fbMixed ? fvWeights[slot] : piece.fWeight;
    }
    /// The row of a slot in a table.
    std::size_t RowAt(std::int32_t table, std::size_t slot) const;
    /// Factor times the sums of weight * Q over a piece, in the candidates' places.
    void ScorePiece(const Piece& piece, const std::vector<std::int32_t>& selected,
                    const std::vector<std::int32_t>& candidates, double factor,
                    double* scores) const;
    void ScorePlainly(const Piece& piece, const std::vector<std::int32_t>& selected,
                      const std::vector<std::int32_t>& candidates, double factor,
                      double* scores) const;
    /// The product over the selected tables of a slot, a number a target.
    void Multiply(std::size_t slot, const std::vector<std::int32_t>& selected,
                  std::vector<double>& product) const;
    /// The sum over the targets of product * row * prior for one more table or kNone.
    double Mixture(std::size_t slot, std::int32_t table, const std::vector<double>& product) const;
    /// The exact sum over a piece.
    void ScorePieceExactly(const Piece& piece, const Asked& asked, Scratch& scratch,
                           NBExactSum& sum) const;
    /// The same from codes.
    void ScoreCodesExactly(const Piece& piece, const Asked& asked, NBExactSum& sum) const;
    /// Adds the logarithm of one record, from its codes.
    void AddRecordExactly(const Piece& piece, std::size_t slot, const Asked& asked,
                          NBExactSum& sum) const;
    /// Goes through `count` things in rounds until interrupted. For each round begin(things of the
    /// round), then visit(first thing of the round, at, end) for stretches of the round's things,
    /// counted within it, side by side, then finish(things of the round). work: row products that a
    /// thing takes, above 0.
    template <class Begin, class Visit, class Finish>
    void InRounds(std::size_t count, std::size_t work, Begin begin, Visit visit,
                  Finish finish) const;
    /// Calls visit(piece, its number in the round) for all pieces, likewise. cost: row products a
    /// record.
    template <class Begin, class Visit, class Finish>
    void ForEachPiece(std::size_t cost, Begin begin, Visit visit, Finish finish) const;

    const NBSubsetModel& fModel;
    NBInterruptState& fInterrupt;
    MCCommon::BlockExecutor* fpExecutor;
    std::size_t fNumRecords = 0;
    std::size_t fNumTargets = 0;
    std::size_t fNumSlots = 0;             // those of a piece begin at a multiple of four
    std::vector<NBEntryColumn> fvColumns;  // a table each; by slot once arranged
    std::vector<std::uint32_t> fvTargets;  // by slot: category + 1, 0 for none
    std::vector<double> fvWeights;         // by slot, none where all are the same
    double fTotalWeight = 0.0;
    std::vector<Piece> fvPieces;
    // Products by slot, in two parts each, scaled: the largest is from 1 to 2.
    std::vector<NBSubsetModel::Group> fvProducts;
    std::vector<NBSubsetModel::Group> fvLowProducts;
    std::vector<std::int32_t> fvExponents;  // by slot: product = scaled * 2^exponent
};

#endif  // PREDSEL_NAIVEBAYES_NBSUBSETRECORDS_H

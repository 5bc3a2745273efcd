#ifndef PREDSEL_NAIVEBAYES_NBSUBSETRECORDS_H
#define PREDSEL_NAIVEBAYES_NBSUBSETRECORDS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/Blocks.h"
#include "host/Records.h"
#include "naivebayes/NBEntryColumn.h"
#include "naivebayes/NBSubsetModel.h"

struct NBInterruptState;

/// The records that a search scores, and the subset that grows on them.
///
/// Q_r(S) = log(sum over target categories k of Pi[k] * product over j in S of P_j[x_rj][k]) is the
/// log probability of the codes of record r in the predictors of S; a missing code contributes no
/// factor. Asked for are sums of share_r * Q_r. Codes are kept column by column, and for each
/// record the Pi[k] times the product over the subset so far, so that trying a further predictor
/// takes one row of its table a record. The products are scaled by powers of 2, and one logarithm
/// serves all the records of a piece: see NBMixtures::Product.
///
/// Probabilities stay plain, and nothing guards against underflow: a product of very many small
/// ones that does not fit into a double is 0 and its score infinite. Intended. Records near that,
/// and those whose share too few others have, are scored one by one from their codes: product by
/// predictor in the order of the list that is given, one logarithm each.
///
/// Pieces and the order of all additions depend on the records alone, not on who does the work.
class NBSubsetRecords {
 public:
    /// model and interrupt are borrowed and must stay. executor: borrowed, may be null. The
    /// interrupt is polled on the caller's thread, every few milliseconds.
    NBSubsetRecords(const NBSubsetModel& model, NBInterruptState& interrupt,
                    MCCommon::BlockExecutor* executor);

    /// No records, the empty subset. numExpected: makes room for so many.
    void Clear(std::size_t numExpected = 0);
    /// Appends a record. positions: where the code of each table stands in it; a table at -1 may
    /// not be asked for.
    void Add(const MCCommon::Record& record, const std::vector<std::int32_t>& positions,
             double share);
    /// Appends the rows of a block whose weight is above 0, with this factor for a share of 1.
    /// weightPosition: -1 when each record counts once.
    void Add(const MCCommon::RecordBlock& block, const std::vector<std::int32_t>& positions,
             std::int32_t weightPosition, double factor);
    /// Ends the adding: the empty subset.
    void Arrange();
    std::size_t GetNumRecords() const { return fNumRecords; }

    /// Back to the empty subset.
    void Restart();
    /// Takes a further predictor into the subset.
    void Join(std::int32_t table);
    /// The sum of share * Q of the subset. selected: its tables, in the order of multiplication.
    double Score(const std::vector<std::int32_t>& selected);
    /// The sum of share * Q of the subset with each candidate. Equal columns with equal tables get
    /// equal scores. Left unfinished by an interrupt.
    void Score(const std::vector<std::int32_t>& selected,
               const std::vector<std::int32_t>& candidates, std::vector<double>& scoresOut);
    /// The same record by record in the order of adding, a logarithm each: the sums that decide
    /// between candidates whose scores differ by no more than rounding. Left unfinished by an
    /// interrupt.
    void ScoreInOrder(const std::vector<std::int32_t>& selected,
                      const std::vector<std::int32_t>& candidates,
                      std::vector<double>& scoresOut) const;

 private:
    /// Neighbouring records that are scored together.
    struct Piece {
        std::size_t fFirst = 0;      // its first slot
        std::size_t fCount = 0;      // records
        double fShare = 0.0;         // of each
        bool fbMixed = false;        // shares differ: they stand in fvShares
        std::int64_t fExponent = 0;  // what was taken out of its products, as a power of 2
        bool fbNearUnderflow = false;
        bool IsPlain() const { return fbMixed || fbNearUnderflow; }
    };

    /// Puts records of the same share together where there are enough of them. Returns the records
    /// by slot, kEmpty where a slot stays empty.
    std::vector<std::size_t> SortByShare();
    /// Makes pieces of so many records from the next slot on.
    void AppendPieces(std::size_t count, double share, bool mixed);
    void JoinPiece(Piece& piece, std::size_t table);
    /// The sums of share * Q over a piece, in the candidates' places.
    void ScorePiece(const Piece& piece, const std::vector<std::int32_t>& selected,
                    const std::vector<std::int32_t>& candidates, double* scores) const;
    void ScorePlainly(const Piece& piece, const std::vector<std::int32_t>& selected,
                      const std::vector<std::int32_t>& candidates, double* scores) const;
    /// Adds share * Q of one record to the scores, from its codes. product: a number a target.
    void ScoreSlot(std::size_t slot, double share, const std::vector<std::int32_t>& selected,
                   const std::vector<std::int32_t>& candidates, std::vector<double>& product,
                   double* scores) const;
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
    void ForEachPiece(std::size_t cost, Begin begin, Visit visit, Finish finish);

    const NBSubsetModel& fModel;
    NBInterruptState& fInterrupt;
    MCCommon::BlockExecutor* fpExecutor;
    std::size_t fNumRecords = 0;
    std::size_t fNumSlots = 0;             // those of a piece begin at a multiple of four
    std::vector<NBEntryColumn> fvColumns;  // a table each; by slot once arranged
    std::vector<double> fvShares;          // by slot, none where all are the same
    std::vector<std::uint32_t> fvSlots;    // by record, none where it is the record's number
    std::vector<Piece> fvPieces;
    std::vector<NBSubsetModel::Group> fvProducts;  // by slot, scaled: the largest is from 1 to 2
    std::vector<std::int32_t> fvExponents;         // by slot: product = scaled * 2^exponent
};

#endif  // PREDSEL_NAIVEBAYES_NBSUBSETRECORDS_H

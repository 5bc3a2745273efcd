#ifndef PREDSEL_FEATURESELECT_FSBLOCKNUMBERS_H
#define PREDSEL_FEATURESELECT_FSBLOCKNUMBERS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSFixedSums.h"
#include "featureselect/FSMoments.h"
#include "featureselect/FSRowLines.h"

/// What the exact sums of all predictors share of the records of a block, worked out once: their
/// order class by class, and weights and targets on their grids. Read side by side by the
/// accumulators of a pass.
class FSBlockNumbers {
 public:
    /// Of the records that the cases count. lines: whether categorical predictors need the lines of
    /// the records; columns: whether continuous predictors need the rest.
    FSBlockNumbers(const FSBlockCases& cases, bool lines, bool columns);

    /// Records whose weight or target is too far from the others' for a common grid. They are in
    /// none of the sums here and belong to the accumulators one by one.
    std::span<const std::uint32_t> Odd() const { return fvOdd; }

    const FSRowLines& Lines() const { return fLines; }

    /// A column's values of the records that count, class by class, in the order of all columns.
    /// scratch holds them where they do not stand so already.
    std::span<const double> InOrder(std::span<const double> column,
                                    std::vector<double>& scratch) const;
    /// Where class number `group` ends in that order; it begins where the one before ends.
    std::size_t EndOf(std::size_t group) const { return fvEnds[group]; }
    std::size_t Classes() const { return fvEnds.size(); }
    std::size_t Counted() const { return fvEnds.empty() ? 0 : fvEnds.back(); }
    /// Positions in the block of the records in order.
    std::uint32_t RowAt(std::size_t place) const {
        return fbAsTheyStand ? static_cast<std::uint32_t>(place) : fvRows[place];
    }

    /// In order; empty for unit weights.
    std::span<const double> Weights() const { return fvWeights; }
    /// Weights, or weights and targets, of all records in order.
    const FSMoments& Target() const { return fTarget; }
    /// The product of weight and target in order, as the sum of two doubles, each on its grid; with
    /// unit weights TargetHigh is the target and TargetLow nothing.
    const FSFixedSums::Limbs& TargetHigh() const { return fHigh; }
    const FSFixedSums::Limbs& TargetLow() const { return fLow; }

 private:
    void Order(const FSBlockCases& cases);
    void Settle(const FSBlockCases& cases, bool lines, bool columns);
    void TakeTargets(const FSBlockCases& cases);

    std::vector<std::uint8_t> fvCounts;  // of the records of the block
    std::vector<std::uint32_t> fvRows;
    std::vector<std::size_t> fvEnds;
    bool fbAsTheyStand = false;
    std::vector<double> fvWeights;
    FSRowLines fLines;
    FSMoments fTarget;
    FSFixedSums::Limbs fHigh;
    FSFixedSums::Limbs fLow;
    std::vector<std::uint32_t> fvOdd;
};

/// A column of a continuous predictor over the records of a block, for its exact sums.
class FSOrderedColumn {
 public:
    /// numbers is borrowed and outlives the column.
    FSOrderedColumn(std::span<const double> column, const FSBlockNumbers& numbers);

    /// Whether it fits a grid at all; else its records belong to the accumulator one by one.
    bool IsPlain() const { return fRange.fbPlain; }
    const FSFixedSums::Range& GetRange() const { return fRange; }

    /// Adds the values of a class, and the weight of the records that have none.
    void AddMoments(std::size_t group, FSMoments& moments, FSWeightSum& missing);
    /// Adds the pairs with the target, of all records.
    void AddPairs(FSPairMoments& pairs, FSWeightSum& missing);
    /// Positions in the block of the records that were left out of all sums, as their values are
    /// too far from the others', ascending by class. They belong to the accumulator one by one.
    std::span<const std::uint32_t> Apart() const { return fvApart; }

 private:
    void Weigh();
    void AddUnit(std::size_t first, std::span<const double> values, FSMoments& moments,
                 FSWeightSum& missing);
    void AddWeighted(std::size_t first, std::span<const double> values, FSMoments& moments,
                     FSWeightSum& missing);
    /// Of the records at these places, counted from first.
    std::vector<std::uint32_t> RowsAt(std::size_t first, const FSFixedSums::Rows& places) const;

    const FSBlockNumbers& fNumbers;
    std::vector<double> fvScratch;
    std::span<const double> fvValues;  // in order
    FSFixedSums::Range fRange;
    FSFixedSums::Limbs fHigh;  // of weight * value, with weights
    FSFixedSums::Limbs fLow;
    std::vector<std::uint32_t> fvApart;
};

#endif  // PREDSEL_FEATURESELECT_FSBLOCKNUMBERS_H

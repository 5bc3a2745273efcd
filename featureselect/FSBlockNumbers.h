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
    /// Of the records that the cases count. columns: whether there are continuous predictors, who
    /// need more than the lines.
    FSBlockNumbers(const FSBlockCases& cases, bool columns);

    /// Records whose weight or target is too far from the others' for a common grid. They are in
    /// none of the sums here and belong to the accumulators one by one.
    std::span<const std::uint32_t> Odd() const { return fvOdd; }

    /// Of the records, where weights or a target are numbers; else empty.
    const FSRowLines& Lines() const { return fLines; }

    /// Records of one class, and of one weight where there are few weights, next to each other.
    struct Run {
        double fWeight = 1.0;  // of each record, if the block has runs of equal weight
        std::size_t fFirst = 0;
        std::size_t fEnd = 0;
    };

    /// A column's values of the records that count, run by run, in the order of all columns.
    /// scratch holds them where they do not stand so already.
    std::span<const double> InOrder(std::span<const double> column,
                                    std::vector<double>& scratch) const;
    /// All runs in that order, class by class; none of them is empty.
    std::span<const Run> Runs() const { return fvRuns; }
    /// Those of a class.
    std::span<const Run> RunsOf(std::size_t group) const {
        const std::size_t first = group == 0 ? 0 : fvRunEnds[group - 1];
        return Runs().subspan(first, fvRunEnds[group] - first);
    }
    std::size_t Counted() const { return fvRuns.empty() ? 0 : fvRuns.back().fEnd; }
    /// Positions in the block of the records in order.
    std::uint32_t RowAt(std::size_t place) const {
        return fbAsTheyStand ? static_cast<std::uint32_t>(place) : fvRows[place];
    }

    /// In order; empty where every run has one weight.
    std::span<const double> Weights() const { return fvWeights; }
    /// Weights, or weights and targets, of all records in order.
    const FSMoments& Target() const { return fTarget; }
    /// The product of weight and target in order, as the sum of two doubles, each on its grid; with
    /// runs of one weight TargetHigh is the target and TargetLow nothing.
    const FSFixedSums::Limbs& TargetHigh() const { return fHigh; }
    const FSFixedSums::Limbs& TargetLow() const { return fLow; }

 private:
    void Order(const FSBlockCases& cases);
    void Settle(const FSBlockCases& cases, bool columns);
    void TakeTargets(const FSBlockCases& cases);

    std::vector<std::uint8_t> fvCounts;  // of the records of the block
    std::vector<std::uint32_t> fvRows;
    std::vector<Run> fvRuns;
    std::vector<std::size_t> fvRunEnds;  // by class
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
    std::span<const double> ValuesOf(const FSBlockNumbers::Run& run) const {
        return fvValues.subspan(run.fFirst, run.fEnd - run.fFirst);
    }
    void AddRun(const FSBlockNumbers::Run& run, FSMoments& moments, FSWeightSum& missing);
    void AddWeighted(const FSBlockNumbers::Run& run, FSMoments& moments, FSWeightSum& missing);
    void AddRunPairs(const FSBlockNumbers::Run& run, FSPairMoments& pairs,
                     FSFixedSums::Rows& missing);
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

#ifndef PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H
#define PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H

#include <array>
#include <cstdint>
#include <ostream>
#include <span>
#include <string_view>
#include <variant>
#include <vector>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSMomentLanes.h"
#include "featureselect/IFSPredTargetAccum.h"
#include "host/Records.h"

/// What the accumulators of a continuous predictor have in common, whatever the target.
class FSContinuousAccum : public IFSPredTargetAccum {
 public:
    void AddMissing(double weight) override;
    bool IsAllMissing() const override { return fProcessed == fMissing; }
    bool IsConstant() const override { return fConstant; }
    std::int32_t CheckDeletion(const FSSettings& settings) const override;
    std::int32_t CheckAllDeletions(const FSSettings& settings,
                                   std::vector<std::int32_t>& reasons) const override;
    bool IsCategorical() const override { return false; }

 protected:
    double ValidWeight() const { return fProcessed - fMissing; }
    void TrackConstant(double value);
    /// Of the valid values of a block.
    void TrackConstants(std::span<const double> values, const FSBlockCases& cases);
    /// Feeds the columns of numbers to the accumulators of a class, some of them side by side
    /// through Class::AddLanes(accumulators, columns, cases), and the rest value by value.
    template <class Class>
    static void AddInLanes(std::span<const FSBlockPart> parts, const FSBlockCases& cases);
    /// Whether the lanes can take over what has been added so far.
    bool FitsLanes(const FSBlockCases& cases) const;
    void LoadWeights(FSMomentLanes::Weights& weights, std::size_t lane) const;
    void StoreWeights(const FSMomentLanes::Weights& weights, std::size_t lane);
    /// Adds the weights and the constancy of a later partition.
    void MergeCounts(const FSContinuousAccum& other);
    void DisplayWeights(std::ostream& out) const;
    void DisplayConstant(std::ostream& out, std::string_view firstValueLabel) const;
    /// Mean and standard deviation that the screening rules test.
    virtual double ScreenedMean() const = 0;
    virtual double ScreenedStdDev() const = 0;

    double fProcessed = 0;                     // weight of all records, missing included
    double fMissing = 0;                       // weight of missing values
    double fFirstValue = MCMV::gMissingValue;  // first valid value
    bool fConstant = true;                     // no second value so far, by exact comparison
};

template <class Class>
void FSContinuousAccum::AddInLanes(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    std::array<Class*, FSMomentLanes::kLanes> accums{};
    FSMomentLanes::Columns columns{};
    std::size_t lanes = 0;
    const auto run = [&] {
        if (lanes == 0) return;
        // The lanes left over do the work of the first for nobody.
        for (std::size_t lane = lanes; lane < columns.size(); ++lane) columns[lane] = columns[0];
        Class::AddLanes(std::span<Class* const>(accums.data(), lanes), columns, cases);
        lanes = 0;
    };
    for (const FSBlockPart& part : parts) {
        auto& accum = static_cast<Class&>(*part.fpAccum);
        const auto* values = std::get_if<MCCommon::BlockColumn::Numbers>(&part.fColumn.fValues);
        if (values == nullptr || !accum.FitsLanes(cases)) {
            part.AddPlainly(cases);
            continue;
        }
        accum.TrackConstants(*values, cases);
        accums[lanes] = &accum;
        columns[lanes] = values->data();
        if (++lanes == columns.size()) run();
    }
    run();
}

#endif  // PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H

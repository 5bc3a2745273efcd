#ifndef PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H
#define PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H

#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSBlockNumbers.h"
#include "featureselect/FSWeightSum.h"
#include "featureselect/IFSPredTargetAccum.h"
#include "host/Records.h"

/// What the accumulators of a continuous predictor have in common, whatever the target.
class FSContinuousAccum : public IFSPredTargetAccum {
 public:
    void AddMissing(double weight) override;
    bool IsAllMissing() const override { return ValidWeight() == 0.0; }
    bool IsConstant() const override { return fConstant; }
    std::int32_t CheckDeletion(const FSSettings& settings) const override;
    std::int32_t CheckAllDeletions(const FSSettings& settings,
                                   std::vector<std::int32_t>& reasons) const override;
    bool IsCategorical() const override { return false; }

 protected:
    FSWeightSum ValidWeight() const { return fProcessed - fMissing; }
    void TrackConstant(double value);
    /// Feeds the columns of numbers to the accumulators of a class through
    /// Class::AddColumn(column, cases), which returns the valid weight and adds that of missing
    /// values to fMissing, and the rest value by value.
    template <class Class>
    static void AddColumns(std::span<const FSBlockPart> parts, const FSBlockCases& cases);
    /// Adds the weights and the constancy of a later partition.
    void MergeCounts(const FSContinuousAccum& other);
    void DisplayWeights(std::ostream& out) const;
    void DisplayConstant(std::ostream& out, std::string_view firstValueLabel) const;
    /// Mean and standard deviation that the screening rules test.
    virtual double ScreenedMean() const = 0;
    virtual double ScreenedStdDev() const = 0;

    /// Canonical bytes of what is common: see IFSPredTargetAccum::AppendExact.
    void AppendCounts(std::string& bytes) const;

    FSWeightSum fProcessed;                    // weight of all records, missing included
    FSWeightSum fMissing;                      // weight of missing values
    double fFirstValue = MCMV::gMissingValue;  // first valid value
    bool fConstant = true;                     // no second value so far, by exact comparison
    // Of the valid values; not saved. The missing value, both, before the first one.
    double fLowest = MCMV::gMissingValue;
    double fHighest = MCMV::gMissingValue;

 private:
    void TrackRange(double lowest, double highest);
    void TrackColumn(std::span<const double> values, const FSBlockCases& cases,
                     const FSFixedSums::Range& range);
};

template <class Class>
void FSContinuousAccum::AddColumns(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    for (const FSBlockPart& part : parts) {
        auto& accum = static_cast<Class&>(*part.fpAccum);
        const auto* values = std::get_if<MCCommon::BlockColumn::Numbers>(&part.fColumn.fValues);
        if (values == nullptr || cases.fpNumbers == nullptr) {
            part.AddPlainly(cases);
            continue;
        }
        FSOrderedColumn column(*values, *cases.fpNumbers);
        if (!column.IsPlain()) {
            part.AddPlainly(cases);
            continue;
        }
        accum.TrackColumn(*values, cases, column.GetRange());
        FSWeightSum missing;
        accum.fProcessed += accum.AddColumn(column, cases, missing);
        accum.fProcessed += missing;
        accum.fMissing += missing;
        part.AddRows(cases, column.Apart());
    }
}

#endif  // PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H

#ifndef PREDSEL_FEATURESELECT_FSCATEGORICALACCUM_H
#define PREDSEL_FEATURESELECT_FSCATEGORICALACCUM_H

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSBlockNumbers.h"
#include "featureselect/FSCount.h"
#include "featureselect/FSMapICnt.h"
#include "featureselect/IFSPredTargetAccum.h"

/// What the accumulators of a categorical predictor have in common, whatever the target.
class FSCategoricalAccum : public IFSPredTargetAccum {
 public:
    void AddMissing(double weight) override;
    bool IsAllMissing() const override { return ValidWeight() == 0.0; }
    bool IsConstant() const override { return fConstant; }
    std::int32_t CheckDeletion(const FSSettings& settings) const override;
    std::int32_t CheckAllDeletions(const FSSettings& settings,
                                   std::vector<std::int32_t>& reasons) const override;
    bool IsCategorical() const override { return true; }

 protected:
    FSWeightSum ValidWeight() const { return fProcessed - fMissing; }
    void TrackConstant(std::int32_t category);
    /// Of the valid codes of a block.
    template <class Entry>
    void TrackConstants(std::span<const Entry> entries, const FSBlockCases& cases);
    /// Counts the records of a block: those with a code and the weights of both kinds.
    template <class Entry>
    void CountRecords(std::span<const Entry> entries, const FSBlockCases& cases,
                      const FSWeightSum& valid, const FSWeightSum& missing);
    /// The records of a block by their codes, where these are too many for a table: calls
    /// run(entry, records of the entry, ascending) for the entries upwards, 0 for missing included.
    template <class Entry, class Run>
    static void ForEachCode(std::span<const Entry> entries, const FSBlockCases& cases, Run run);
    /// Feeds the columns of codes to accumulators of a class by
    /// Class::AddEntries(entries, end of the entries, cases), and the rest value by value.
    template <class Class>
    static void AddColumns(std::span<const FSBlockPart> parts, const FSBlockCases& cases);
    /// Whether a table of all cells is worth its while.
    static bool IsDense(std::uint32_t entryEnd, const FSBlockCases& cases) {
        return (cases.Classes() + 1) * entryEnd <= 4 * cases.Rows() + 4096;
    }
    /// Adds the counters and predictor categories of a later partition.
    void MergeCounts(const FSCategoricalAccum& other);
    /// Display of the five scalar fields.
    void DisplayCounters(std::ostream& out, std::string_view firstCategoryLabel) const;
    /// Whether categories that hold one case can drop the predictor.
    virtual bool HasOneCaseRule() const { return true; }

    /// Canonical bytes of what is common: see IFSPredTargetAccum::AppendExact.
    void AppendCounts(std::string& bytes) const;

    FSWeightSum fProcessed;             // weight of all records, missing included
    std::int32_t fUnweightedValid = 0;  // number of valid values; not saved
    FSWeightSum fMissing;               // weight of missing values
    std::int32_t fFirstCategory = -1;   // first valid category; -1 before it
    bool fConstant = true;              // no second category so far
    FSMapICnt fPredCounts;              // weight per predictor category
};

template <class Entry>
void FSCategoricalAccum::TrackConstants(std::span<const Entry> entries, const FSBlockCases& cases) {
    for (std::size_t row = 0; fConstant && row < entries.size(); ++row) {
        if (cases.Counts(row) && entries[row] != 0) {
            TrackConstant(static_cast<std::int32_t>(entries[row] - 1));
        }
    }
}

template <class Entry>
void FSCategoricalAccum::CountRecords(std::span<const Entry> entries, const FSBlockCases& cases,
                                      const FSWeightSum& valid, const FSWeightSum& missing) {
    std::int32_t count = 0;
    if (cases.fbUnit) {
        count = static_cast<std::int32_t>(static_cast<double>(valid));
    } else {
        for (std::size_t row = 0; row < entries.size(); ++row) {
            count += cases.Counts(row) && entries[row] != 0 ? 1 : 0;
        }
    }
    FSCountMore(fUnweightedValid, count);
    fProcessed += valid;
    fProcessed += missing;
    fMissing += missing;
}

template <class Entry, class Run>
void FSCategoricalAccum::ForEachCode(std::span<const Entry> entries, const FSBlockCases& cases,
                                     Run run) {
    constexpr int kRowBits = 32;
    std::vector<std::uint64_t> sorted;  // entry, then row
    sorted.reserve(entries.size());
    for (std::size_t row = 0; row < entries.size(); ++row) {
        if (cases.Counts(row)) sorted.push_back(std::uint64_t{entries[row]} << kRowBits | row);
    }
    std::sort(sorted.begin(), sorted.end());
    std::vector<std::uint32_t> rows;
    for (std::size_t at = 0; at < sorted.size();) {
        const std::uint64_t entry = sorted[at] >> kRowBits;
        rows.clear();
        for (; at < sorted.size() && sorted[at] >> kRowBits == entry; ++at) {
            rows.push_back(static_cast<std::uint32_t>(sorted[at]));
        }
        run(static_cast<std::uint32_t>(entry), std::span<std::uint32_t>(rows));
    }
}

template <class Class>
void FSCategoricalAccum::AddColumns(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    for (const FSBlockPart& part : parts) {
        auto& accum = static_cast<Class&>(*part.fpAccum);
        if (!part.fColumn.IsCategorical() || (!cases.fbUnit && cases.fpNumbers == nullptr)) {
            part.AddPlainly(cases);
            continue;
        }
        std::visit(
            [&]<class Values>(const Values& entries) {
                if constexpr (!std::is_same_v<Values, MCCommon::BlockColumn::Numbers>) {
                    accum.TrackConstants(entries, cases);
                    accum.AddEntries(entries, part.fColumn.fEntryEnd, cases);
                }
            },
            part.fColumn.fValues);
    }
}

#endif  // PREDSEL_FEATURESELECT_FSCATEGORICALACCUM_H

#ifndef PREDSEL_FEATURESELECT_FSBLOCKCASES_H
#define PREDSEL_FEATURESELECT_FSBLOCKCASES_H

#include <cstdint>
#include <span>
#include <vector>

#include "featureselect/FSTruncate.h"
#include "host/Blocks.h"

class FSBlockNumbers;
class IFSPredTargetAccum;

/// What the accumulators of all predictors need of the records of a block, worked out once: which
/// of them count, their weights and their targets. One value for each record. Read side by side by
/// the accumulators of a pass.
struct FSBlockCases {
    enum Target { kNone, kCategorical, kContinuous };

    Target fTarget = kNone;
    std::span<const double> fWeights;  // of a record that counts, above 0; of the others, any
    std::span<const double> fTargets;  // of the records that count; with a target
    /// Position of the target's category in fClassKeys; fClassKeys.size() for a record that does
    /// not count, its target missing or its weight invalid. Without categories there is one class.
    std::span<const std::uint16_t> fClasses;
    std::span<const std::int32_t> fClassKeys;  // ascending
    std::int32_t fCounted = 0;                 // records that count
    bool fbUnit = true;                        // all their weights are 1.0
    /// What exact sums share of these records, borrowed; null where nothing needs it: no continuous
    /// variable and unit weights.
    const FSBlockNumbers* fpNumbers = nullptr;

    std::size_t Rows() const { return fClasses.size(); }
    std::size_t Classes() const { return fClassKeys.size(); }
    bool Counts(std::size_t row) const { return fClasses[row] < fClassKeys.size(); }
};

/// One predictor's accumulator, borrowed from the predictor set, and its column of the block, cut
/// to the records of the cases.
struct FSBlockPart {
    IFSPredTargetAccum* fpAccum = nullptr;
    MCCommon::BlockColumn fColumn;

    /// Value by value, as record by record.
    void AddPlainly(const FSBlockCases& cases) const;
    /// Some of the records so. REQUIRES: they would count, if the cases counted them.
    void AddRows(const FSBlockCases& cases, std::span<const std::uint32_t> rows) const;
};

namespace FSBlockColumn {

/// The value of a column as a record holds it.
inline double ValueOf(double number) { return number; }
template <class Entry>
double ValueOf(Entry entry) {
    return static_cast<double>(entry) - 1.0;
}

/// As FSIsMissing of that value.
inline bool IsMissing(double number, bool categorical) { return FSIsMissing(number, categorical); }
template <class Entry>
bool IsMissing(Entry entry, bool categorical) {
    return categorical && entry == 0;
}

/// The rows from first on, count of them.
MCCommon::BlockColumn Cut(const MCCommon::BlockColumn& column, std::size_t first,
                          std::size_t count);

}  // namespace FSBlockColumn

#endif  // PREDSEL_FEATURESELECT_FSBLOCKCASES_H

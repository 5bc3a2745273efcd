#ifndef PREDSEL_FEATURESELECT_FSCELLCOUNTS_H
#define PREDSEL_FEATURESELECT_FSCELLCOUNTS_H

#include <cstdint>
#include <span>
#include <vector>

#include "featureselect/FSBlockCases.h"

/// Crosstab of a column of codes with the classes of the target over the records of a block.
namespace FSCellCounts {

/// Records per cell, [class * entryEnd + entry]; after the classes a row of the records that do not
/// count. There are less than 2^32 of them.
template <class Entry>
std::vector<std::uint32_t> Count(std::span<const Entry> entries, std::uint32_t entryEnd,
                                 const FSBlockCases& cases);

/// Records per class.
std::vector<std::uint32_t> CountClasses(const FSBlockCases& cases);

}  // namespace FSCellCounts

#endif  // PREDSEL_FEATURESELECT_FSCELLCOUNTS_H

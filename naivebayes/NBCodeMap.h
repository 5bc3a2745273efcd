#ifndef PREDSEL_NAIVEBAYES_NBCODEMAP_H
#define PREDSEL_NAIVEBAYES_NBCODEMAP_H

#include <cstdint>
#include <vector>

class INBEncoder;

/// What the category codes of two models mean to each other when the models are merged. Encoders
/// are borrowed and may be null.
namespace NBCodeMap {

/// This side's code for each code of the other side, by the value that it stands for; this side
/// learns values that it lacks. -1: there is none, because this side lacks the value and takes it
/// for missing, or the sides are of different kinds. Bins, and codes without encoders, mean the
/// same on both sides. otherRows: the other side's categories where it has no encoder.
std::vector<std::int32_t> Make(INBEncoder* thisEncoder, const INBEncoder* otherEncoder,
                               std::int32_t otherRows);

/// Gives this side the other side's labels, at the codes of the map.
void CopyLabels(INBEncoder* thisEncoder, const INBEncoder* otherEncoder,
                const std::vector<std::int32_t>& codeMap);

/// -1 for a code that is outside the map, or that it leads outside the count of codes.
std::int32_t Find(const std::vector<std::int32_t>& codeMap, std::int32_t code,
                  std::int32_t numCodes);

}  // namespace NBCodeMap

#endif  // PREDSEL_NAIVEBAYES_NBCODEMAP_H

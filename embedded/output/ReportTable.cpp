#include "embedded/output/ReportTable.h"

#include <algorithm>

namespace embedded {

std::vector<std::size_t> AxisDimensions(const ReportTable& table, ReportAxis axis) {
    std::vector<std::size_t> dimensions;
    for (std::size_t d = 0; d < table.fvDimensions.size(); ++d)
        if (table.fvDimensions[d].fAxis == axis) dimensions.push_back(d);
    std::stable_sort(dimensions.begin(), dimensions.end(), [&table](std::size_t a, std::size_t b) {
        return table.fvDimensions[a].fOrder > table.fvDimensions[b].fOrder;
    });
    return dimensions;
}

}  // namespace embedded

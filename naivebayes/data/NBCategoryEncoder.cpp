#include "naivebayes/data/NBCategoryEncoder.h"

#include <cstddef>
#include <ostream>

#include "naivebayes/data/NBEncoderDisplay.h"

void NBCategoryEncoder::SetCategoryLabels(const std::vector<std::string>& labels) {
    fvCategoryLabels = labels;
}

void NBCategoryEncoder::SetCategoryLabel(std::int32_t code, const std::string& label) {
    const auto numCodes = static_cast<std::size_t>(GetNumCodes());
    if (fvCategoryLabels.size() < numCodes) fvCategoryLabels.resize(numCodes);
    if (code >= 0 && code < GetNumCodes()) fvCategoryLabels[static_cast<std::size_t>(code)] = label;
}

void NBCategoryEncoder::DisplayLabelsAndMissing(std::ostream& out) const {
    out << "\t\tValue Labels:\n";
    NBEncoderDisplay::List(fvCategoryLabels, out);
    NBEncoderDisplay::UserMissing(GetUserMissing(), out);
}

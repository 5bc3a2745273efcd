#include "naivebayes/data/NBBinningEncoder.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>
#include <ostream>
#include <utility>

#include "host/Records.h"
#include "naivebayes/IOException.h"
#include "naivebayes/NBayesInputBase.h"
#include "naivebayes/data/NBEncoderDisplay.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

namespace {

// Cutpoints that close bins at the ends. No number lies beyond them: infinities do not either.
constexpr double kBelowAll = std::numeric_limits<double>::lowest();
constexpr double kAboveAll = std::numeric_limits<double>::max();

/// Whether the value is at the cutpoint or below it.
bool HoldsUpTo(double cutpoint, double value) {
    return cutpoint > kBelowAll && std::min(value, kAboveAll) <= cutpoint;
}

}  // namespace

NBBinningEncoder::NBBinningEncoder(std::vector<double> cutpoints) {
    SetCutpoints(std::move(cutpoints));
}

NBBinningEncoder::NBBinningEncoder(double min, double max, std::int32_t numBins)
    : fNumBins(numBins) {
    const double width = (max - min) / numBins;
    // Each by itself: adding up the width would round differently.
    for (std::int32_t k = 1; k < numBins; ++k) fvCutpoints.push_back(k * width + min);
}

void NBBinningEncoder::SetCutpoints(std::vector<double> cutpoints) {
    fvCutpoints = std::move(cutpoints);
    fNumBins = static_cast<std::int32_t>(fvCutpoints.size()) + 1;
    fExplicitCutpoints = true;
}

double NBBinningEncoder::Encode(double value) const {
    if (value == MCMV::gMissingValue) return kMissingCode;
    if (fpUserMissing != nullptr && fpUserMissing->IsMissing(value)) return kMissingCode;
    // Without cutpoints there are two codes all the same. Intended: see
    // WithoutCutpointsTheSignDecides.
    if (fvCutpoints.empty()) return value >= 0.0 ? 1.0 : 0.0;
    const auto bin =
        std::partition_point(fvCutpoints.begin(), fvCutpoints.end(),
                             [value](double cutpoint) { return !HoldsUpTo(cutpoint, value); });
    return static_cast<double>(bin - fvCutpoints.begin());
}

bool NBBinningEncoder::IsReachable(std::size_t bin) const {
    if (fvCutpoints.empty()) return bin < 2;
    const double above = bin == 0 ? kBelowAll : std::max(fvCutpoints[bin - 1], kBelowAll);
    const double upTo = bin < fvCutpoints.size() ? fvCutpoints[bin] : kAboveAll;
    return above < kAboveAll && above < upTo;
}

std::unique_ptr<NBBinningEncoder> NBBinningEncoder::MakeCollapsedCopy(
    const NBayesInputBase& table) const {
    auto copy = std::make_unique<NBBinningEncoder>(*this);
    const std::size_t numRows = table.GetCounts().size();
    const auto numFilled = table.GetNumNonEmpty();
    // A table of other bins has nothing to say about these.
    if (numRows != fvCutpoints.size() + 1) return copy;
    if (numFilled >= static_cast<std::int32_t>(numRows) || numFilled < 2) return copy;

    const auto nextFilled = [&table, numRows](std::size_t from) {
        while (from < numRows && !table.IsFilled(from)) ++from;
        return from;
    };
    auto& cutpoints = copy->fvCutpoints;
    const auto close = [&cutpoints](std::size_t from, std::size_t end, double to) {
        for (std::size_t k = from; k < end; ++k) cutpoints[k] = to;
    };

    const std::size_t first = nextFilled(0);
    if (first == numRows) return copy;
    close(0, first, kBelowAll);
    std::size_t before = first;  // the last filled bin so far
    for (std::size_t next = nextFilled(before + 1); next < numRows; next = nextFilled(before + 1)) {
        if (next > before + 1) {
            close(before, next, std::midpoint(fvCutpoints[before], fvCutpoints[next - 1]));
        }
        before = next;
    }
    close(before, numRows - 1, kAboveAll);
    return copy;
}

bool NBBinningEncoder::SetUserMissing(const INBUserMissing* definition) {
    const auto* const numeric = dynamic_cast<const NBNumericUserMissing*>(definition);
    if (definition != nullptr && numeric == nullptr) return false;
    fpUserMissing = numeric;
    return true;
}

const INBUserMissing* NBBinningEncoder::GetUserMissing() const { return fpUserMissing; }

std::int64_t NBBinningEncoder::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBBinningEncoder::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBBinningEncoder::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBBinningEncoder::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBBinningEncoder::Display(std::ostream& out) const {
    out << "\tNBBinningEncoder: number of bins = " << fNumBins << '\n';
    out << "\t\tCutpoints: ";
    NBEncoderDisplay::List(fvCutpoints, out);
    out << "\t\tCutpoints set explicitly? " << (fExplicitCutpoints ? "Yes." : "No.") << '\n';
    NBEncoderDisplay::UserMissing(fpUserMissing, out);
}

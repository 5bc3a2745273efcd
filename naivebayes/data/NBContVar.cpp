#include "naivebayes/data/NBContVar.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ostream>

#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

NBContVar::NBContVar(std::string name, std::string label, const std::vector<double>& cutpoints,
                     std::int32_t role)
    : fName(std::move(name)),
      fLabel(std::move(label)),
      fRole(role),
      fNumBins(static_cast<std::int32_t>(cutpoints.size()) + 1) {
    const std::size_t count = cutpoints.size();
    if (count == 1) {
        constexpr double kAroundSingle = 50.0;
        fMin = cutpoints[0] - kAroundSingle;
        fMax = cutpoints[0] + kAroundSingle;
    } else if (count > 1) {
        fMin = cutpoints[0] - (cutpoints[1] - cutpoints[0]);
        fMax = cutpoints[count - 1] + (cutpoints[count - 1] - cutpoints[count - 2]);
    }
    if (fNumBins >= 2 && fRole != NBRole::kUnused) {
        fpEncoder = std::make_unique<NBBinningEncoder>(cutpoints);
    }
}

NBContVar::NBContVar(std::string name, std::string label, double min, double max,
                     std::int32_t numBins, std::int32_t role)
    : fName(std::move(name)),
      fLabel(std::move(label)),
      fRole(role),
      fMin(min),
      fMax(max),
      fNumBins(numBins) {
    if (CanHaveBins() && fNumBins >= 2) {
        fpEncoder = std::make_unique<NBBinningEncoder>(fMin, fMax, fNumBins);
    }
}

NBContVar::NBContVar(const NBContVar& other)
    : INBVariable(other),
      fName(other.fName),
      fLabel(other.fLabel),
      fRole(other.fRole),
      fMin(other.fMin),
      fMax(other.fMax),
      fNumBins(other.fNumBins) {
    if (other.fpEncoder) fpEncoder = std::make_unique<NBBinningEncoder>(*other.fpEncoder);
    // Replaces the other's definition in the copied encoder.
    SetUserMissing(other.fpUserMissing ? other.fpUserMissing->Clone() : nullptr);
}

NBContVar& NBContVar::operator=(const NBContVar& other) {
    fName = other.fName;
    fLabel = other.fLabel;
    fRole = other.fRole;
    fMin = other.fMin;
    fMax = other.fMax;
    fNumBins = other.fNumBins;
    if (!other.fpEncoder) {
        fpEncoder.reset();
    } else if (!fpEncoder) {
        fpEncoder = std::make_unique<NBBinningEncoder>(*other.fpEncoder);
    }
    SetUserMissing(other.fpUserMissing ? other.fpUserMissing->Clone() : nullptr);
    return *this;
}

std::int32_t NBContVar::MakeBinningEncoder(std::int32_t numBins) {
    if (fpEncoder) {
        RefreshNumCategories();
        return 0;
    }
    if (numBins >= 2 && fNumBins < 2) fNumBins = numBins;
    if (!CanHaveBins() || fNumBins < 2) return 0;
    TakeEncoder(std::make_unique<NBBinningEncoder>(fMin, fMax, fNumBins));
    return 1;
}

std::int32_t NBContVar::SetCutpoints(const std::vector<double>& cutpoints) {
    const bool ascending = std::adjacent_find(cutpoints.begin(), cutpoints.end(),
                                              std::not_fn(std::less<>())) == cutpoints.end();
    if (fpEncoder || cutpoints.empty() || !ascending) {
        RefreshNumCategories();
        return 0;
    }
    TakeEncoder(std::make_unique<NBBinningEncoder>(cutpoints));
    return 1;
}

std::int32_t NBContVar::DropEncoder(bool force) {
    if (!fpEncoder || (fpEncoder->IsExplicit() && !force)) return 0;
    fpEncoder.reset();
    return 1;
}

void NBContVar::TakeEncoder(std::unique_ptr<NBBinningEncoder> encoder) {
    fpEncoder = std::move(encoder);
    fpEncoder->SetUserMissing(fpUserMissing.get());
    RefreshNumCategories();
}

std::int32_t NBContVar::RefreshNumCategories() {
    if (fpEncoder) fNumBins = fpEncoder->GetNumCodes();
    return fNumBins;
}

bool NBContVar::SetUserMissing(std::unique_ptr<INBUserMissing> definition) {
    if (!TakeUserMissing(std::move(definition), fpUserMissing)) return false;
    if (fpEncoder) fpEncoder->SetUserMissing(fpUserMissing.get());
    return true;
}

std::int32_t NBContVar::GetRangeState() {
    if (fMin > fMax) return NBRangeState::kEmpty;
    return fMin == fMax ? NBRangeState::kConstant : NBRangeState::kUsable;
}

std::int64_t NBContVar::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NBContVar::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NBContVar::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NBContVar::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NBContVar::Display(std::ostream& out) const {
    constexpr std::streamsize kDigits = 16;
    out << "Continuous variable: name = " << fName << ", label = " << fLabel
        << ", role = " << NBRole::Text(fRole) << '\n';
    const std::streamsize before = out.precision(kDigits);
    out << "\tNumber of bins = " << fNumBins << ", min = " << fMin << ", max = " << fMax << '\n';
    out.precision(before);
    if (fpEncoder) {
        fpEncoder->Display(out);
    } else {
        out << "\tEncoder not set.\n";
    }
}

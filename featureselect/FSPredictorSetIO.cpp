// The saved state of a predictor set.
#include "featureselect/FSArchives.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/FSPredictorSetFields.h"
#include "featureselect/FSSettings.h"

std::int64_t FSPredictorSet::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSPredictorSet::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSPredictorSet::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSPredictorSet::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}

// Whether the counts and indices of a restored state agree, so that every operation stays within
// its vectors.
bool FSPredictorSet::HoldsTogether() const {
    if (fNumPredictors < 0 || fNumPredictors != fpSettings->GetNumPredictors()) return false;
    if (fNumBestSorted < 0 || fUnweightedValid < 0 || fUnweightedExcluded < 0) return false;
    const auto predictors = static_cast<std::size_t>(fNumPredictors);

    // The predictors without an accumulator are the deleted ones.
    if (fvpAccum.size() != (fMemoryAllocated ? predictors : 0)) return false;
    std::size_t deleted = 0;
    for (std::size_t predictor = 0; predictor < fvpAccum.size(); ++predictor) {
        if (fvpAccum[predictor]) continue;
        if (deleted == fvDeletedIndices.size() ||
            fvDeletedIndices[deleted] != static_cast<std::int32_t>(predictor)) {
            return false;
        }
        ++deleted;
    }
    if (deleted != fvDeletedIndices.size()) return false;

    // A criterion has ranks and values for all predictors or for none.
    const auto fits = [predictors](const auto& results) {
        return results.empty() || results.size() == predictors;
    };
    for (std::size_t slot = 0; slot < fvpSort.size(); ++slot) {
        if (!fits(fvRanks[slot]) || !fits(fvValues[slot])) return false;
        for (const auto& record : fvpSort[slot]) {
            if (record->fPredictor < 0 || record->fPredictor >= fNumPredictors) return false;
        }
    }
    return true;
}

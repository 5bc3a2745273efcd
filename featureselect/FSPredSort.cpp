#include "featureselect/FSPredSort.h"

#include <ostream>
#include <string_view>

#include "featureselect/FSArchives.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"

bool FSPredSort::GoesBefore(const FSPredSort& other, std::int32_t criterion) const {
    if (fCriterion == MCMV::gMissingValue) return false;
    if (other.fCriterion == MCMV::gMissingValue) return true;
    const bool isMeasure = criterion == FSCriterion::kCramer || criterion == FSCriterion::kLambda;
    if (fCriterion != other.fCriterion) {
        return isMeasure ? fCriterion > other.fCriterion : fCriterion < other.fCriterion;
    }
    if (fTieBreak1 != other.fTieBreak1) return fTieBreak1 > other.fTieBreak1;
    if (isMeasure) return false;
    const bool isChiSquare =
        criterion == FSCriterion::kPearson || criterion == FSCriterion::kLikelihood;
    return isChiSquare ? fTieBreak2 < other.fTieBreak2 : fTieBreak2 > other.fTieBreak2;
}

void FSPredSort::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSPredSort");
    FSDisplay::Line(out, "Criterion value = ", fCriterion);
    FSDisplay::Line(out, "1st tie-breaking value = ", fTieBreak1);
    FSDisplay::Line(out, "2nd tie-breaking value = ", fTieBreak2);
    FSDisplay::End(out, "FSPredSort");
}

std::int64_t FSPredSort::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSPredSort::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSPredSort::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSPredSort::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}

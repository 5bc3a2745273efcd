#include "featureselect/FSPredSort.h"

#include <ostream>
#include <string_view>

#include "featureselect/FSArchives.h"
#include "featureselect/FSDisplay.h"

FSPredSort FSPredSort::Of(std::int32_t predictor, const FSTestResult& result) {
    FSPredSort record{result.fValue, result.fTieBreak1, result.fTieBreak2, predictor};
    record.fTest = result.fTest;
    record.fLogP = result.fLogP;
    record.fStatistic = result.fStatistic;
    record.fDf1 = result.fDf1;
    record.fDf2 = result.fDf2;
    return record;
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

#include "naivebayes/NBAttribSelectReporter.h"

std::int32_t NBAttribSelectReporter::GetInteger(const std::string& name) const {
    if (name == "selectedPredictors") return fProgress.fSelectedPredictors;
    if (name == "candidatePredictors") return fProgress.fCandidatePredictors;
    if (name == "maxPredictors") return fProgress.fMaxPredictors;
    if (name == "trainRecords") return fProgress.fTrainRecords;
    return -1;
}

double NBAttribSelectReporter::GetDouble(const std::string& name) const {
    return name == "elapsedTime" ? fProgress.fElapsed : MCMV::gMissingValue;
}

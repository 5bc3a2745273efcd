#include "featureselect/FSReporter.h"

#include "host/Records.h"

std::int32_t FSReporter::GetInteger(const std::string& name) const {
    if (name == "records") return fRecords;
    if (name == "predictors") return fPredictors;
    return -1;
}

double FSReporter::GetDouble(const std::string& name) const {
    return name == "elapsedTime" ? fElapsed : MCMV::gMissingValue;
}

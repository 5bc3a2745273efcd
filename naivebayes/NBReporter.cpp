#include "naivebayes/NBReporter.h"

std::int32_t NBReporter::GetInteger(const std::string& name) const {
    return name == "trainRecords" ? fTrainRecords : -1;
}

double NBReporter::GetDouble(const std::string& name) const {
    return name == "elapsedTime" ? fElapsed : MCMV::gMissingValue;
}

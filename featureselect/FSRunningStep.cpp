#include "featureselect/FSRunningStep.h"

#include <ctime>

#include "featureselect/FSReporter.h"

namespace {

std::int64_t ProcessMilliseconds() {
    return static_cast<std::int64_t>(std::clock()) * 1000 / CLOCKS_PER_SEC;
}

}  // namespace

FSRunningStep::FSRunningStep(double& elapsedSeconds, ProgressListener* listener, std::int32_t skip)
    : fElapsed(elapsedSeconds),
      fpListener(listener),
      fSkip(skip),
      fCountdown(skip),
      fStartMilliseconds(ProcessMilliseconds()) {}

FSRunningStep::~FSRunningStep() { fElapsed += SecondsSoFar(); }

void FSRunningStep::Report(std::int32_t records, std::int32_t predictors) {
    fCountdown = fSkip;
    fpListener->OnProgress(FSReporter(records, predictors, fElapsed + SecondsSoFar()));
}

double FSRunningStep::SecondsSoFar() const {
    return static_cast<double>(ProcessMilliseconds() - fStartMilliseconds) / 1000.0;
}

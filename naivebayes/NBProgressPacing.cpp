#include "naivebayes/NBProgressPacing.h"

#include <ctime>

namespace {

std::int64_t ProcessMilliseconds() {
    return static_cast<std::int64_t>(std::clock()) * 1000 / CLOCKS_PER_SEC;
}

}  // namespace

NBProgressPacing::NBProgressPacing(ProgressListener* listener, std::int32_t skip)
    : fpListener(listener),
      fSkip(skip),
      fCountdown(skip),
      fStartMilliseconds(ProcessMilliseconds()) {}

double NBProgressPacing::ElapsedSeconds() const {
    return static_cast<double>(ProcessMilliseconds() - fStartMilliseconds) / 1000.0;
}

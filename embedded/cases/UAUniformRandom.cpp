#include "embedded/HostSession.h"
#include "host/Random.h"

UAUniformRandom::UAUniformRandom() {
    fTwister.Initialize(embedded::HostSession::Active().Options().fSeed);
}

UAUniformRandom::~UAUniformRandom() = default;

double UAUniformRandom::GetRandom() { return fTwister.GetRealOpen(); }

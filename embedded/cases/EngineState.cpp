#include "host/EngineState.h"

#include "embedded/HostSession.h"
#include "embedded/cases/AdapterState.h"
#include "host/Assertion.h"

bool WantsEngineState() {
    return static_cast<bool>(embedded::HostSession::Active().Options().fTakeEngine);
}

void OfferEngineState(const SavableEngine& engine) {
    if (!WantsEngineState()) return;
    const embedded::HostSession& session = embedded::HostSession::Active();
    PREDSEL_ASSERT(session.Adapter() != nullptr, "the adapter of the run lives");
    session.Options().fTakeEngine(engine, session.Adapter()->Layout());
}

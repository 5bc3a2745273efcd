#ifndef PREDSEL_HOST_ENGINESTATE_H
#define PREDSEL_HOST_ENGINESTATE_H

#include <iosfwd>
#include <string>

/// An engine at the end of a run, with all that it can say of itself.
class SavableEngine {
 public:
    virtual ~SavableEngine() = default;
    /// The procedure's name: "SELECTPRED" or "NAIVEBAYES".
    virtual std::string GetCommandName() const = 0;
    /// Writes the engine's whole state. False when the engine or the stream refuses.
    virtual bool SaveBinary(std::ostream& stream) const = 0;
    virtual bool SaveXML(std::ostream& stream) const = 0;
};

/// True when the host will keep the engine's state at the end of this run. The procedure then
/// describes categories by their values, so that the state can be merged and scored elsewhere.
bool WantsEngineState();

/// Called once, when a run has ended well and before the engine is torn down; the adapter of the
/// run still lives. A host that keeps no states does nothing.
void OfferEngineState(const SavableEngine& engine);

#endif  // PREDSEL_HOST_ENGINESTATE_H

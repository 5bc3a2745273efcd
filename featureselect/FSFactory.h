#ifndef PREDSEL_FEATURESELECT_FSFACTORY_H
#define PREDSEL_FEATURESELECT_FSFACTORY_H

#include <memory>

#include "featureselect/FSStatus.h"
#include "featureselect/IFSAlgorithm.h"

/// Makes screening engines, and tells why one could not be made.
class FSFactory {
 public:
    /// An engine on settings that are borrowed from the caller and outlive it. Null when the engine
    /// starts in an error or the factory is shut down; GetStatus tells why.
    std::unique_ptr<IFSAlgorithm> CreateFromSettings(FSSettings& settings);

    /// How the last call ended.
    FSStatus GetStatus() const { return fStatus; }

    /// Ends the factory: status 1 from now on, and no further engine. An engine belongs to its
    /// caller as soon as it is made and runs on; cancelling it is the caller's affair.
    void Shutdown();

 private:
    enum class State { kOpen, kShutDown };

    State fState = State::kOpen;
    FSStatus fStatus;
};

#endif  // PREDSEL_FEATURESELECT_FSFACTORY_H

#ifndef PREDSEL_FEATURESELECT_FSFACTORY_H
#define PREDSEL_FEATURESELECT_FSFACTORY_H

#include <iosfwd>
#include <memory>

#include "featureselect/FSStatus.h"
#include "featureselect/IFSAlgorithm.h"

/// Makes screening engines, and tells why one could not be made.
class FSFactory {
 public:
    /// An engine on settings that are borrowed from the caller and outlive it. Null when the engine
    /// starts in an error or the factory is shut down; GetStatus tells why.
    std::unique_ptr<IFSAlgorithm> CreateFromSettings(FSSettings& settings);

    /// A saved engine, with settings of its own; no listener and no check. Null and a status when
    /// that fails: 80003 the stream had failed before, 80004 and 80005 it holds no saved engine.
    /// The binary form may be followed by more; an XML document is read to its end.
    std::unique_ptr<IFSAlgorithm> CreateFromBinary(std::istream& stream);
    std::unique_ptr<IFSAlgorithm> CreateFromXML(std::istream& stream);

    /// How the last call ended.
    FSStatus GetStatus() const { return fStatus; }

    /// Ends the factory: status 1 from now on, and no further engine. An engine belongs to its
    /// caller as soon as it is made and runs on; cancelling it is the caller's affair.
    void Shutdown();

 private:
    enum class State { kOpen, kShutDown };

    std::unique_ptr<IFSAlgorithm> Checked(std::unique_ptr<IFSAlgorithm> algorithm);
    bool MayRestore(const std::istream& stream);

    State fState = State::kOpen;
    FSStatus fStatus;
};

#endif  // PREDSEL_FEATURESELECT_FSFACTORY_H

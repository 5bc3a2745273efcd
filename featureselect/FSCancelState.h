#ifndef PREDSEL_FEATURESELECT_FSCANCELSTATE_H
#define PREDSEL_FEATURESELECT_FSCANCELSTATE_H

#include "host/Progress.h"

/// Whether a run has been called off: by Cancel(), or by the host's check, whose first positive
/// answer sticks so that no later step starts again.
class FSCancelState {
 public:
    /// check is borrowed from the owner of the run and may be null.
    explicit FSCancelState(CancelCheck* check = nullptr) : fpCheck(check) {}

    /// The test that every loop of the engine makes: polls the check while nobody has cancelled.
    bool IsCancelled() {
        if (!fbCancelled && fpCheck != nullptr) fbCancelled = fpCheck->IsCancelled();
        return fbCancelled;
    }

    /// Whether a cancel is already known, without asking the check.
    bool WasCancelled() const { return fbCancelled; }

    void Cancel() { fbCancelled = true; }
    void SetCancelCheck(CancelCheck* check) { fpCheck = check; }

 private:
    CancelCheck* fpCheck;  // borrowed, see the constructor
    bool fbCancelled = false;
};

#endif  // PREDSEL_FEATURESELECT_FSCANCELSTATE_H

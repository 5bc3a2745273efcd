#ifndef PREDSEL_EMBEDDED_FILES_INTERRUPT_H
#define PREDSEL_EMBEDDED_FILES_INTERRUPT_H

namespace embedded {

/// How the last stop processor that answered positively came to do so.
enum class StopCause { None, TimeLimit, Interrupt };

/// Asks every running and later stop processor to signal. Safe to call from a signal handler.
void RequestInterrupt() noexcept;

/// Forgets an earlier interrupt and the last cause; called after each run of commands.
void ClearStop() noexcept;

StopCause LastStopCause() noexcept;

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_FILES_INTERRUPT_H

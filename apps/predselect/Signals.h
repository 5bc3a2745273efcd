#ifndef PREDSEL_APPS_SIGNALS_H
#define PREDSEL_APPS_SIGNALS_H

namespace app {

/// SIGINT, SIGTERM and SIGHUP from now on: while nothing but reading has happened they end the
/// process at once, with one line on standard error. Those that were ignored before stay so.
/// SIGPIPE and SIGXFSZ no longer end it: the writing fails instead.
void CatchSignals();

/// From now on a signal asks the running command to stop and is answered by Interrupted().
void StopThroughCommands();

/// A signal has come since StopThroughCommands.
bool Interrupted();

}  // namespace app

#endif  // PREDSEL_APPS_SIGNALS_H

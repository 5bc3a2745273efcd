#include "apps/predselect/Signals.h"

#include <csignal>
#include <cstring>

#include <unistd.h>

#include "apps/predselect/ProgramError.h"
#include "embedded/files/Interrupt.h"

namespace app {
namespace {

volatile std::sig_atomic_t gStopThroughCommands = 0;
volatile std::sig_atomic_t gInterrupted = 0;

extern "C" void OnSignal(int /*signal*/) {
    if (gStopThroughCommands != 0) {
        gInterrupted = 1;
        embedded::RequestInterrupt();
        return;
    }
    constexpr char kLine[] = "predselect: interrupted\n";
    // The process ends in any case; there is nobody to tell of a failed write.
    [[maybe_unused]] const auto written = write(STDERR_FILENO, kLine, std::strlen(kLine));
    _exit(kInterrupted);
}

}  // namespace

void CatchSignals() {
    struct sigaction action {};
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

void StopThroughCommands() { gStopThroughCommands = 1; }

bool Interrupted() { return gInterrupted != 0; }

}  // namespace app

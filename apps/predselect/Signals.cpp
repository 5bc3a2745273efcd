#include "apps/predselect/Signals.h"

#include <unistd.h>

#include <csignal>
#include <string_view>

#include "apps/predselect/ProgramError.h"
#include "apps/predselect/Terminal.h"
#include "embedded/files/Interrupt.h"

namespace app {
namespace {

volatile std::sig_atomic_t gStopThroughCommands = 0;
volatile std::sig_atomic_t gInterrupted = 0;
volatile std::sig_atomic_t gWipeLine = 0;

extern "C" void OnSignal(int /*signal*/) {
    if (gStopThroughCommands != 0) {
        gInterrupted = 1;
        embedded::RequestInterrupt();
        return;
    }
    std::string_view line = "\r\x1b[Kpredselect: interrupted\n";
    constexpr std::size_t kWipe = 4;  // the bytes that wipe a line of progress
    if (gWipeLine == 0) line.remove_prefix(kWipe);
    // The process ends in any case; there is nobody to tell of a failed write.
    [[maybe_unused]] const auto written = write(STDERR_FILENO, line.data(), line.size());
    _exit(kInterrupted);
}

}  // namespace

void CatchSignals() {
    gWipeLine = ProgressIsSeen() ? 1 : 0;
    struct sigaction action {};
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    // Without SA_RESTART: output to a reader that does not read must be interruptible.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void StopThroughCommands() { gStopThroughCommands = 1; }

bool Interrupted() { return gInterrupted != 0; }

}  // namespace app

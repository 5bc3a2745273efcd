#ifndef PREDSEL_APPS_PROGRAMERROR_H
#define PREDSEL_APPS_PROGRAMERROR_H

#include <stdexcept>
#include <string>

namespace app {

/// How the program ends.
enum ExitStatus : int {
    kDone = 0,
    kCommandFailed = 1,
    kWrongUse = 2,   // of the program, or a command that does not parse
    kFileFault = 3,  // a file could not be read or written
    kInterrupted = 130
};

/// Ends the program with a status and one line on standard error: what, where, how to mend it.
class ProgramError : public std::runtime_error {
 public:
    ProgramError(ExitStatus status, const std::string& message)
        : std::runtime_error(message), fStatus(status) {}
    ExitStatus Status() const { return fStatus; }

 private:
    ExitStatus fStatus;
};

}  // namespace app

#endif  // PREDSEL_APPS_PROGRAMERROR_H

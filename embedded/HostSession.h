#ifndef PREDSEL_EMBEDDED_HOSTSESSION_H
#define PREDSEL_EMBEDDED_HOSTSESSION_H

#include <cstdint>
#include <memory>

class ProgressListener;

namespace embedded {

class DataSet;         // embedded/data/DataSet.h
class CommandTokens;   // embedded/command/CommandTokens.h
struct CommandReport;  // embedded/output/Report.h

/// The host for the length of one command: what the functions and classes of host/ stand on.
/// One session is active at a time, from construction to destruction, on one thread.
class HostSession {
 public:
    /// Borrows all three for its lifetime. Clears the error word, writes the command's name into
    /// the system block and the split-file count into the global words.
    HostSession(DataSet& data, const CommandTokens& command, CommandReport& report);
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    /// The active session. Asking without one is a programming error.
    static HostSession& Active();

    DataSet& Data() const { return fData; }
    const CommandTokens& Command() const { return fCommand; }
    CommandReport& Report() const { return fReport; }

    /// Who is told how far the reading of cases has come; null when nobody. Borrowed.
    void SetProgress(ProgressListener* listener) { fpProgress = listener; }
    ProgressListener* Progress() const { return fpProgress; }

 private:
    DataSet& fData;
    const CommandTokens& fCommand;
    CommandReport& fReport;
    ProgressListener* fpProgress = nullptr;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_HOSTSESSION_H

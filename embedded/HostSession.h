#ifndef PREDSEL_EMBEDDED_HOSTSESSION_H
#define PREDSEL_EMBEDDED_HOSTSESSION_H

#include <cstdint>
#include <map>
#include <string>

#include "embedded/RunOptions.h"
#include "embedded/data/NewColumns.h"
#include "embedded/files/ModelFiles.h"

struct UAAdapterState;  // embedded/cases/AdapterState.h

namespace embedded {

class DataSet;         // embedded/data/DataSet.h
class CommandTokens;   // embedded/command/CommandTokens.h
struct CommandReport;  // embedded/output/Report.h

/// The host for the length of one command: what the functions and classes of host/ stand on.
/// One session is active at a time, from construction to destruction, on one thread.
class HostSession {
 public:
    /// Borrows the first three for its lifetime. Clears the error word, writes the command's name
    /// into the system block and the split-file count into the global words.
    HostSession(DataSet& data, const CommandTokens& command, CommandReport& report,
                RunOptions options = {});
    ~HostSession();
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    /// The active session. Asking without one is a programming error.
    static HostSession& Active();

    DataSet& Data() const { return fData; }
    const CommandTokens& Command() const { return fCommand; }
    CommandReport& Report() const { return fReport; }
    const RunOptions& Options() const { return fOptions; }

    /// Who is told how far the reading of cases has come; null when nobody. Borrowed.
    void SetProgress(ProgressListener* listener) { fOptions.fpProgress = listener; }
    ProgressListener* Progress() const { return fOptions.fpProgress; }

    /// The variables that the command makes, behind those of the data set.
    NewColumns& New() { return fNewColumns; }
    /// A variable of the data set or a new one.
    const KOLT_Variable& Variable(std::int32_t index) const;

    /// The path to write a model file to in place of this one. Throws a std::exception that gives
    /// the reason when there can be none.
    std::string PlaceModelFile(const std::string& path);

    /// The adapter of the command while it lives. Borrowed.
    void SetAdapter(const UAAdapterState* adapter) { fpAdapter = adapter; }
    const UAAdapterState* Adapter() const { return fpAdapter; }
    /// Counts a case whose value of this variable the adapter's first pass had not met.
    void NoteUnknownCase(std::int32_t variable) { ++fUnknownCases[variable]; }

    /// What is left to say when the command has ended: notes on unknown categories.
    void AddClosingNotes() const;
    /// Keeps what a command that ended well has made: new variables and model files. Throws a
    /// std::exception that gives the reason when the files cannot come to their places; nothing is
    /// kept then.
    void Keep();

 private:
    DataSet& fData;
    const CommandTokens& fCommand;
    CommandReport& fReport;
    RunOptions fOptions;
    NewColumns fNewColumns;
    ModelFiles fModelFiles;  // those that the caller of the run does not place
    const UAAdapterState* fpAdapter = nullptr;
    std::map<std::int32_t, std::int64_t> fUnknownCases;  // by variable
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_HOSTSESSION_H

#ifndef PREDSEL_EMBEDDED_RUNOPTIONS_H
#define PREDSEL_EMBEDDED_RUNOPTIONS_H

#include <cstdint>
#include <functional>
#include <string>

class ProgressListener;
class SavableEngine;

namespace embedded {

struct RecordLayout;  // embedded/cases/RecordLayout.h

/// What the caller of a run decides.
struct RunOptions {
    /// Told how far the reading of cases has come; may be null. Borrowed.
    ProgressListener* fpProgress = nullptr;
    /// Threads for the columns of a block; 0: one a processor. No result depends on it.
    std::int32_t fThreads = 0;
    /// Random numbers of every command begin with it.
    std::uint32_t fSeed = 2026;
    /// The folder for the engines' temporary files; empty: TMPDIR, else /tmp.
    std::string fTempDir{};
    /// Takes the engine of each command that has ended well, while it lives, and how its records
    /// were made. Procedures are told that nobody wants engines when it is empty. It must not
    /// throw.
    std::function<void(const SavableEngine& engine, const RecordLayout& layout)> fTakeEngine{};
    /// Gives the path to write a model file to in place of the one that the command names: a
    /// temporary file beside it, which the caller renames or removes when it knows how the run
    /// ended. Throws a std::exception whose text is the reason when there can be no such file.
    /// When it is empty, the run does all this itself, command by command.
    std::function<std::string(const std::string& path)> fPlaceModelFile{};
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_RUNOPTIONS_H

#ifndef PREDSEL_APPS_STATEFILE_H
#define PREDSEL_APPS_STATEFILE_H

#include <string>

#include "embedded/cases/RecordLayout.h"

class SavableEngine;

namespace app {

/// What a state file holds: the engine's own bytes, untouched, and what it takes to make records
/// for it. docs/formats/state-file.md has the layout.
struct StateFile {
    std::string fCommand;  // the procedure whose engine it is: "NAIVEBAYES"
    embedded::RecordLayout fLayout;
    std::string fState;
};

/// The state of an engine that lives. Throws ProgramError when it cannot be saved.
StateFile TakeState(const SavableEngine& engine, const embedded::RecordLayout& layout);
/// The same as the engine's own XML document.
std::string TakeStateAsXML(const SavableEngine& engine);

/// The file's content.
std::string WrittenState(const StateFile& state);

/// What messages call the file of that path; "-" is standard input.
std::string StateName(const std::string& path);

/// Reads a file whose checksum is right and whose header does not contradict itself; "-" is
/// standard input. Throws ProgramError (kFileFault) that names the file: it cannot be read, is no
/// state file, is of another version, or damaged. The engine's bytes may still be anything: whoever
/// restores from them checks.
StateFile ReadState(const std::string& path);

}  // namespace app

#endif  // PREDSEL_APPS_STATEFILE_H

#ifndef PREDSEL_APPS_BAYESCOMMANDTEXT_H
#define PREDSEL_APPS_BAYESCOMMANDTEXT_H

#include <cstdint>
#include <optional>
#include <string>

#include "apps/predselect/Options.h"

namespace app {

/// The NAIVEBAYES command that the options stand for, a subcommand a line. memAllocate: the memory
/// for training records in the command's unit; without it the command's default holds.
std::string BayesCommandText(const ProgramOptions& options,
                             std::optional<std::int64_t> memAllocate);

/// What MEMALLOCATE has to be for this many records to stay in memory, within the limit in bytes;
/// nothing when the command's default suffices.
std::optional<std::int64_t> MemAllocateFor(std::int64_t records, std::int64_t columns,
                                           std::uint64_t limit);

/// Half of the machine's memory, in bytes.
std::uint64_t HalfOfMemory();

}  // namespace app

#endif  // PREDSEL_APPS_BAYESCOMMANDTEXT_H

#ifndef PREDSEL_HOST_HOSTGLOBALS_H
#define PREDSEL_HOST_HOSTGLOBALS_H

#include <cstdint>
#include <string_view>

/// Words of the block that pvGetCmnGlb returns.
enum CmnGlbWord : std::int32_t {
    kErrorWord = 0,       // non-zero once an error has been recorded for this command
    kSplitFileCount = 1,  // number of split-file variables
    kPreservedWordA = 2,  // the host's own; a procedure leaves it as it found it
    kPreservedWordB = 3,  // the same
    kCmnGlbWordCount = 4
};

/// What pvGetCmaSys returns.
struct CmaSysBlock {
    char fCommandName[16];  // the first characters of the running command's name, zero-padded
};

extern "C" {
/// The host's global words, one block a process, at an address that never changes. Callable while
/// a library is being loaded.
std::int64_t* pvGetCmnGlb();
/// The running command, the same rules.
CmaSysBlock* pvGetCmaSys();
}

/// The host's rule for command words: equal without regard to the case of ASCII letters.
bool AreStringsEqualCase(std::string_view a, std::string_view b);

#endif  // PREDSEL_HOST_HOSTGLOBALS_H

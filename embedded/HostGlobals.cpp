#include "host/HostGlobals.h"

#include <algorithm>

#include "embedded/command/AsciiCase.h"

namespace {

// Constant-initialised, so that they are there while a library is being loaded.
constinit std::int64_t gCmnGlb[kCmnGlbWordCount] = {};
constinit CmaSysBlock gCmaSys = {};

}  // namespace

std::int64_t* pvGetCmnGlb() { return gCmnGlb; }

CmaSysBlock* pvGetCmaSys() { return &gCmaSys; }

bool AreStringsEqualCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return embedded::UpperAscii(x) == embedded::UpperAscii(y);
    });
}

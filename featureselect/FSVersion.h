#ifndef PREDSEL_FEATURESELECT_FSVERSION_H
#define PREDSEL_FEATURESELECT_FSVERSION_H

#include <string_view>

namespace FSVersion {

/// In the banner, the reports and the saved XML state.
inline constexpr std::string_view kCopyright = "Copyright (c) 2026 The predselect authors";

}  // namespace FSVersion

#endif  // PREDSEL_FEATURESELECT_FSVERSION_H

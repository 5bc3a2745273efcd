#ifndef PREDSEL_NAIVEBAYES_NBVERSION_H
#define PREDSEL_NAIVEBAYES_NBVERSION_H

#include <string_view>

/// How the component names itself.
namespace NBVersion {

inline constexpr std::string_view kComponent = "Naive Bayes Component Ver. 1.0";
inline constexpr std::string_view kCopyright = "Copyright (c) 2026 The predselect authors";
/// The application in documents, unless NBWriteOptions say otherwise.
inline constexpr std::string_view kAppName = "KOLT Naive Bayes Component C++";
inline constexpr std::string_view kAppVersion = "1.0";

}  // namespace NBVersion

#endif  // PREDSEL_NAIVEBAYES_NBVERSION_H

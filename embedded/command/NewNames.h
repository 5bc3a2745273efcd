#ifndef PREDSEL_EMBEDDED_COMMAND_NEWNAMES_H
#define PREDSEL_EMBEDDED_COMMAND_NEWNAMES_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace embedded {

/// True for a name that a variable has.
using NameIsTaken = std::function<bool(const std::string& name)>;

/// The root itself when it is free, else the root with the lowest free number from 1 behind it.
std::string FreeName(const std::string& root, const NameIsTaken& isTaken);

/// count names: the root with consecutive numbers behind it, from 1 or from the lowest number from
/// which all are free.
std::vector<std::string> FreeNames(const std::string& root, std::int32_t count,
                                   const NameIsTaken& isTaken);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_NEWNAMES_H

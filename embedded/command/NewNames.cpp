#include "embedded/command/NewNames.h"

#include <utility>

namespace embedded {

std::string FreeName(const std::string& root, const NameIsTaken& isTaken) {
    std::string name = root;
    for (std::int32_t number = 1; isTaken(name); ++number) name = root + std::to_string(number);
    return name;
}

std::vector<std::string> FreeNames(const std::string& root, std::int32_t count,
                                   const NameIsTaken& isTaken) {
    std::vector<std::string> names;
    for (std::int32_t number = 1; static_cast<std::int32_t>(names.size()) < count; ++number) {
        std::string name = root + std::to_string(number);
        if (isTaken(name)) {
            // The numbers are to follow each other: begin again behind the one that is taken.
            names.clear();
        } else {
            names.push_back(std::move(name));
        }
    }
    return names;
}

}  // namespace embedded

#ifndef PREDSEL_TESTS_SUPPORT_RANDOMSEED_H
#define PREDSEL_TESTS_SUPPORT_RANDOMSEED_H

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

namespace testsupport {

/// A new seed for each run, printed so that the run can be repeated: set PREDSEL_TEST_SEED to it.
inline std::uint32_t RandomSeed() {
    const char* wanted = std::getenv("PREDSEL_TEST_SEED");
    const auto seed = wanted == nullptr
                          ? static_cast<std::uint32_t>(std::random_device{}())
                          : static_cast<std::uint32_t>(std::stoul(std::string(wanted)));
    std::cout << "PREDSEL_TEST_SEED=" << seed << '\n';
    return seed;
}

}  // namespace testsupport

#endif  // PREDSEL_TESTS_SUPPORT_RANDOMSEED_H

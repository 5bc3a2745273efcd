#ifndef PREDSEL_HOST_RANDOM_H
#define PREDSEL_HOST_RANDOM_H

#include <cstdint>
#include <random>

namespace MCCommon {

/// A source of uniform numbers.
class MCRandom {
 public:
    virtual ~MCRandom() = default;
    /// The next number, from 0 to below 1.
    virtual double GetRandom() = 0;
};

}  // namespace MCCommon

namespace MCCommonMath {

/// The Mersenne Twister MT19937 of Matsumoto and Nishimura (1998). A seed gives the same sequence
/// on every machine.
class MCRandomTwister {
 public:
    /// Seeds by the authors' init_genrand (2002).
    void Initialize(std::uint32_t seed) { fEngine.seed(seed); }
    /// A real in the open interval (0, 1): (32 bits + 0.5) / 2^32, the authors' genrand_real3.
    double GetRealOpen() { return (static_cast<double>(fEngine()) + 0.5) * (1.0 / 4294967296.0); }

 private:
    std::mt19937 fEngine;
};

}  // namespace MCCommonMath

/// The host's own source, seeded by the host for each command: the same seed, the same numbers.
class UAUniformRandom : public MCCommon::MCRandom {
 public:
    UAUniformRandom();
    ~UAUniformRandom() override;
    double GetRandom() override;

 private:
    MCCommonMath::MCRandomTwister fTwister;
};

#endif  // PREDSEL_HOST_RANDOM_H

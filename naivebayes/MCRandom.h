#ifndef PREDSEL_NAIVEBAYES_MCRANDOM_H
#define PREDSEL_NAIVEBAYES_MCRANDOM_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <type_traits>

#include "host/Random.h"
#include "host/Xml.h"
#include "persistence/Fields.h"

/// Uniform numbers for simulated records, from one of four generators: the Mersenne Twister, an
/// older congruential generator, the C library's, or a source of the caller's. The first two are
/// portable: a seed gives the same sequence on every machine.
class MCRandom {
 public:
    /// userSource: borrowed; when there is one it overrides everything else. twister counts only
    /// with portable. The library's generator is not seeded here.
    MCRandom(std::uint32_t seed, bool portable, bool twister, MCCommon::MCRandom* userSource);

    /// The next number: in (0, 1) from the twister, in [0, 1) from the older generator, and
    /// rand() / 32767 from the library's, which may be 1 and, where RAND_MAX is larger, far beyond.
    double GetUniform();
    /// Starts a new sequence. For the library's generator that is the process's own.
    void SetSeed(std::uint32_t seed);
    /// false: from now on the library's generator, unless there is a user source. true does not
    /// bring the twister back.
    void SetPortable(bool portable);

    bool IsPortable() const { return fbPortable; }
    bool IsTwister() const { return fbTwister; }
    MCCommon::MCRandom* GetUserSource() const { return fpUserSource; }

    /// 20 bytes: seed and kind. The state of a running generator is not saved.
    std::int64_t SaveBinary(std::ostream& stream) const;
    /// A restored twister starts anew from its seed, with the first number that is asked of it.
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);
    void Display(std::ostream& out) const;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        using Random = std::remove_reference_t<Self>;
        archive(kSaved, Values<Random>{self});
    }

 private:
    /// What is saved, the seed as a double.
    template <class Random>
    struct Values {
        Random& fRandom;

        template <class Self, class Archive>
        static void Fields(Self&& values, Archive& archive) {
            Random& random = values.fRandom;
            auto seed = static_cast<double>(random.fSeed);
            archive.Items(seed, random.fbPortable, random.fbTwister);
            if constexpr (Archive::kRestores) {
                archive.Require(seed > -1.0 && seed < 4294967296.0);
                archive.Require(random.fbPortable || !random.fbTwister);
                random.fSeed = static_cast<std::uint32_t>(seed);
                random.fpTwisterSource.reset();
            }
        }
    };

    /// Makes the twister if need be and starts its sequence.
    void StartTwister();

    static constexpr Persistence::SavedClass kSaved{"MCRa", "MCRandom", "Error reading MCRandom!\n",
                                                    "Failure reading MCRandom!\n"};

    std::uint32_t fSeed;  // the older generator's running state, too
    bool fbPortable;
    bool fbTwister;
    std::unique_ptr<MCCommonMath::MCRandomTwister> fpTwisterSource;  // null unless in use
    MCCommon::MCRandom* fpUserSource;                                // borrowed, may be null
};

#endif  // PREDSEL_NAIVEBAYES_MCRANDOM_H

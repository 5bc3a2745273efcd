#include "naivebayes/MCRandom.h"

#include <cstdlib>
#include <ostream>

#include "naivebayes/IOException.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

MCRandom::MCRandom(std::uint32_t seed, bool portable, bool twister, MCCommon::MCRandom* userSource)
    : fSeed(seed),
      fbPortable(portable),
      fbTwister(portable && twister && userSource == nullptr),
      fpUserSource(userSource) {
    if (fbTwister) StartTwister();
}

void MCRandom::StartTwister() {
    if (!fpTwisterSource) fpTwisterSource = std::make_unique<MCCommonMath::MCRandomTwister>();
    fpTwisterSource->Initialize(fSeed);
}

double MCRandom::GetUniform() {
    if (fpUserSource != nullptr) return fpUserSource->GetRandom();
    if (fbPortable && !fbTwister) {
        // The multiplicative congruential method of Lehmer (1951).
        constexpr std::uint64_t kMultiplier = 397204094;
        constexpr std::uint64_t kModulus = 2147483647;
        constexpr double kScale = 4.656612873077393e-10;  // 2^-31, so that 1 is never reached
        fSeed = static_cast<std::uint32_t>(fSeed * kMultiplier % kModulus);
        return fSeed * kScale;
    }
    if (fbTwister) {
        if (!fpTwisterSource) StartTwister();
        return fpTwisterSource->GetRealOpen();
    }
    return std::rand() / 32767.0;
}

void MCRandom::SetSeed(std::uint32_t seed) {
    fSeed = seed;
    if (!fbPortable) std::srand(seed);
    if (fbTwister) StartTwister();
}

void MCRandom::SetPortable(bool portable) {
    fbPortable = portable;
    if (!portable && fbTwister) {
        fbTwister = false;
        fpTwisterSource.reset();
    }
}

std::int64_t MCRandom::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t MCRandom::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t MCRandom::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t MCRandom::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void MCRandom::Display(std::ostream& out) const {
    out << "MCRandom: \nThe seed = " << fSeed << "  Portable?  ";
    if (!fbPortable) {
        out << "No.\n";
    } else {
        out << (fbTwister ? "Yes, Mersenne Twister.\n" : "Yes, old KOLT one.\n");
    }
}

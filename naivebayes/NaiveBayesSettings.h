#ifndef PREDSEL_NAIVEBAYES_NAIVEBAYESSETTINGS_H
#define PREDSEL_NAIVEBAYES_NAIVEBAYESSETTINGS_H

#include <cstdint>
#include <iosfwd>
#include <string>

#include "host/Progress.h"
#include "host/Random.h"
#include "host/Xml.h"
#include "persistence/Fields.h"

/// How the classifier works. Copied by the engine that is made from it.
struct NaiveBayesSettings {
    /// Values of fRandomKind.
    static constexpr std::int32_t kMersenneTwister = 0;
    static constexpr std::int32_t kOlderPortable = 1;
    static constexpr std::int32_t kLibrary = 2;
    static constexpr std::int32_t kUserProvided = 3;

    ProgressListener* fpListener = nullptr;      // borrowed, not saved
    std::int32_t fNumSkip = 0;                   // progress reports to leave out between two
    MCStopProcessor* fpStopProcessor = nullptr;  // borrowed, not saved
    std::int32_t fMaxRecordsInMemory = 1000;
    std::int32_t fNumSimulated = 1000;  // records drawn where the training records are not kept
    std::uint32_t fSeed = 876543;
    std::int32_t fRandomKind = kMersenneTwister;
    MCCommon::MCRandom* fpUserRandom = nullptr;  // borrowed, not saved; counts for kUserProvided
    std::string fTempDir;  // with its trailing separator; empty: the system's own. Not saved

    /// 23 bytes.
    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);
    void Display(std::ostream& out) const;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        static constexpr Persistence::SavedClass kSaved{"NBS", "NaiveBayesSettings"};
        archive(kSaved, self.fNumSkip, self.fSeed, self.fMaxRecordsInMemory, self.fNumSimulated,
                self.fRandomKind);
    }
};

#endif  // PREDSEL_NAIVEBAYES_NAIVEBAYESSETTINGS_H

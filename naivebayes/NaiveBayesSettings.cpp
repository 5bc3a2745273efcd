#include "naivebayes/NaiveBayesSettings.h"

#include <ostream>

#include "naivebayes/IOException.h"
#include "persistence/BinaryArchive.h"
#include "persistence/XMLArchive.h"

std::int64_t NaiveBayesSettings::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t NaiveBayesSettings::RestoreBinary(std::istream& stream) {
    return Persistence::RestoreBinary<MCNaive::IOException>(*this, stream);
}

std::int64_t NaiveBayesSettings::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t NaiveBayesSettings::RestoreXML(MCCommonXML::XMLReader& document) {
    return Persistence::RestoreXML<MCNaive::IOException>(*this, document);
}

void NaiveBayesSettings::Display(std::ostream& out) const {
    out << "Start of NaiveBayesSettings display\n"
        << "Progress listener address = " << static_cast<const void*>(fpListener) << '\n'
        << "Number of progress reports to skip = " << fNumSkip << '\n'
        << "Max records in memory = " << fMaxRecordsInMemory << '\n'
        << "Number of records for simulated data = " << fNumSimulated << '\n'
        << "Seed for random number generator = " << fSeed << '\n'
        << "Random number generator to use = ";
    switch (fRandomKind) {
        case kMersenneTwister:
            out << "Mersenne Twister";
            break;
        case kOlderPortable:
            out << "Older portable RNG from KOLT";
            break;
        case kLibrary:
            out << "Library RNG (not portable)";
            break;
        case kUserProvided:
            out << "User provided RNG";
            break;
        default:
            out << fRandomKind;
    }
    out << "\nEnd of NaiveBayesSettings display\n";
}

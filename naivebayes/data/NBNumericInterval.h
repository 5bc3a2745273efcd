#ifndef PREDSEL_NAIVEBAYES_DATA_NBNUMERICINTERVAL_H
#define PREDSEL_NAIVEBAYES_DATA_NBNUMERICINTERVAL_H

#include <cstdint>
#include <iosfwd>
#include <limits>

#include "host/Records.h"
#include "host/Xml.h"
#include "persistence/Fields.h"

/// A range of numbers, both ends inside. One with its low end above its high end holds nothing.
class NBNumericInterval {
 public:
    /// Ends that stand for none.
    static constexpr double kNoLow = std::numeric_limits<double>::lowest();
    static constexpr double kNoHigh = std::numeric_limits<double>::max();

    /// From 0 to 0.
    NBNumericInterval() = default;
    NBNumericInterval(double low, double high) : fLow(low), fHigh(high) {}
    /// All numbers up to the bound, or all from the bound upward.
    NBNumericInterval(double bound, bool isUpper)
        : fLow(isUpper ? kNoLow : bound), fHigh(isUpper ? bound : kNoHigh) {}

    double GetLow() const { return fLow; }
    double GetHigh() const { return fHigh; }
    /// Both store the value and tell whether the interval then holds anything.
    bool SetLow(double value) {
        fLow = value;
        return fHigh >= value;
    }
    bool SetHigh(double value) {
        fHigh = value;
        return value >= fLow;
    }
    bool IsEmpty() const { return fLow > fHigh; }
    bool HasNoLow() const { return fLow == kNoLow; }
    bool HasNoHigh() const { return fHigh == kNoHigh; }
    bool Contains(double value) const { return value >= fLow && fHigh >= value; }
    bool operator==(const NBNumericInterval&) const = default;

    /// 24 bytes.
    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);
    void Display(std::ostream& out) const;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        // In XML an open high end is the missing value. So a high end that really is the most
        // negative number comes back open. Intended: see XMLTurnsALowestHighEndIntoNone.
        double high = self.fHigh;
        if constexpr (!Archive::kRestores && Archive::kXML) {
            if (self.HasNoHigh()) high = MCMV::gMissingValue;
        }
        archive(kSaved, self.fLow, high);
        if constexpr (Archive::kRestores) {
            self.fHigh = Archive::kXML && high == MCMV::gMissingValue ? kNoHigh : high;
        }
    }

 private:
    static constexpr Persistence::SavedClass kSaved{"NBNumInt", "NBNumericInterval",
                                                    "Error reading NBNumericInterval!\n",
                                                    "Failure reading NBNumericInterval!\n"};

    double fLow = 0.0;
    double fHigh = 0.0;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBNUMERICINTERVAL_H

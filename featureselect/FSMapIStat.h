#ifndef PREDSEL_FEATURESELECT_FSMAPISTAT_H
#define PREDSEL_FEATURESELECT_FSMAPISTAT_H

#include <cstdint>
#include <ostream>
#include <utility>
#include <vector>

#include "featureselect/FSPersistence.h"
#include "featureselect/FSSortedEntries.h"

struct FSMapIStatEntry {
    std::int32_t fKey = 0;
    double fWeight = 0;
    double fMean = 0;
    double fSecondMoment = 0;  // sum of weight * (value - mean)^2
    double fVariance = 0;      // set by FinishVariances

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive.Items(self.fKey, self.fWeight, self.fMean, self.fSecondMoment, self.fVariance);
    }
};

/// Weight, mean and spread of a continuous variable per category, categories ascending.
class FSMapIStat : public FSSortedEntries<FSMapIStatEntry> {
 public:
    FSMapIStat() = default;
    /// Of these entries, ascending by key.
    explicit FSMapIStat(std::vector<FSMapIStatEntry> entries) { fvEntries = std::move(entries); }

    /// Adds one value by the recurrence of West (1979), CACM 22(9). A weight that is not above 0
    /// changes nothing. True when the category existed.
    bool Add(std::int32_t key, double value, double weight);
    /// False, and the outputs untouched, for an unknown category.
    bool Find(std::int32_t key, double& weight, double& mean, double& secondMoment,
              double& variance) const;
    /// Adds the cases of a later partition (Chan, Golub & LeVeque 1983). Variances are left to
    /// FinishVariances.
    void MergeFrom(const FSMapIStat& other);
    /// Sets every variance: second moment / (weight - 1), or 0 when the weight is not above 1.
    void FinishVariances();
    void Display(std::ostream& out) const;

    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    static constexpr Persistence::SavedClass kSaved{
        .fTag = "FSMIS", .fName = "FSMapIStat", .fMinLevel = 3};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fvEntries);
    }
};

#endif  // PREDSEL_FEATURESELECT_FSMAPISTAT_H

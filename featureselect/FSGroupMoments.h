#ifndef PREDSEL_FEATURESELECT_FSGROUPMOMENTS_H
#define PREDSEL_FEATURESELECT_FSGROUPMOMENTS_H

#include <cstdint>
#include <ostream>
#include <span>
#include <string>

#include "featureselect/FSMapIStat.h"
#include "featureselect/FSMoments.h"
#include "featureselect/FSSortedEntries.h"

struct FSGroupMomentsEntry {
    std::int32_t fKey = 0;
    FSMoments fMoments;
    double fVariance = 0;  // set by FinishVariances
};

/// Exact moments of a continuous variable per category, categories ascending. FSMapIStat is the
/// form in which they are saved and shown.
class FSGroupMoments : public FSSortedEntries<FSGroupMomentsEntry> {
 public:
    /// A weight that is not above 0 changes nothing.
    void Add(std::int32_t key, double value, double weight);
    /// Adds moments of categories, ascending.
    void Merge(std::span<const FSGroupMomentsEntry> groups);
    void MergeFrom(const FSGroupMoments& other) { Merge(other.Entries()); }
    /// Sets every variance: second moment / (weight - 1), or 0 when the weight is not above 1.
    void FinishVariances();
    /// Of all categories together.
    FSMoments Total() const;

    /// Rounded to doubles.
    FSMapIStat Rounded() const;
    /// From rounded ones, exact from then on.
    static FSGroupMoments Of(const FSMapIStat& rounded);

    void AppendTo(std::string& bytes) const;
    void Display(std::ostream& out) const;
};

#endif  // PREDSEL_FEATURESELECT_FSGROUPMOMENTS_H

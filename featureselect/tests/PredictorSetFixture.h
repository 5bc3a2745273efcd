#ifndef PREDSEL_FEATURESELECT_TESTS_PREDICTORSETFIXTURE_H
#define PREDSEL_FEATURESELECT_TESTS_PREDICTORSETFIXTURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "featureselect/FSCancelState.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/FSPredictorSetFields.h"
#include "featureselect/FSSettings.h"
#include "tests/support/MemoryArchive.h"
#include "tests/support/ProgressHooks.h"
#include "tests/support/RecordList.h"

constexpr double kMissing = MCMV::gMissingValue;
constexpr bool kCategorical = true;
constexpr bool kContinuous = false;

using Rows = std::vector<std::vector<double>>;
using Indices = std::vector<std::int32_t>;

struct RecordCounts {
    double fWeightedValid = -1;
    double fWeightedExcluded = -1;
    std::int32_t fValid = -1;
    std::int32_t fExcluded = -1;

    bool operator==(const RecordCounts&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const RecordCounts& counts) {
    return out << "valid " << counts.fValid << " (" << counts.fWeightedValid << "), excluded "
               << counts.fExcluded << " (" << counts.fWeightedExcluded << ")";
}

template <class Source>
RecordCounts CountsOf(const Source& source) {
    RecordCounts counts;
    source.GetRecordCounts(counts.fWeightedValid, counts.fWeightedExcluded, counts.fValid,
                           counts.fExcluded);
    return counts;
}

/// Weights that an accumulator has seen.
struct Seen {
    double fProcessed;
    double fMissing;

    bool operator==(const Seen&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Seen& seen) {
    return out << seen.fMissing << " missing of " << seen.fProcessed;
}

/// The values that object number `which` of a class lists itself, in the saved order.
inline std::vector<double> SavedFields(const std::vector<testsupport::SavedValue>& state,
                                       const std::string& className, int which) {
    std::vector<double> fields;
    int found = -1;
    for (const auto& value : state) {
        if (value.fObject != className) continue;
        if (value.fNumber == 0) ++found;
        if (found == which) fields.push_back(value.fValue);
    }
    return fields;
}

/// Of every remaining predictor, in order. The first two fields of each accumulator class are its
/// processed and its missing weight.
inline std::vector<Seen> SeenBy(const FSPredictorSet& set) {
    std::vector<Seen> all;
    for (const auto& value : testsupport::StateOf(set)) {
        if (!value.fObject.ends_with("Accum")) continue;
        if (value.fNumber == 0) all.push_back({value.fValue, -1});
        if (value.fNumber == 1) all.back().fMissing = value.fValue;
    }
    return all;
}

/// The sort records of all criteria in a row, as saved.
inline std::vector<FSPredSort> SortRecords(const FSPredictorSet& set) {
    std::vector<FSPredSort> records;
    const auto state = testsupport::StateOf(set);
    for (int which = 0;; ++which) {
        const auto fields = SavedFields(state, "FSPredSort", which);
        if (fields.empty()) return records;
        records.push_back({fields[0], fields[1], fields[2], static_cast<std::int32_t>(fields[3])});
    }
}

/// Puts the processor time at 0, so that two sets can be compared. What isn't saved is lost.
inline void ClearElapsed(FSPredictorSet& set) {
    auto bytes = testsupport::Save(set);
    constexpr std::size_t kElapsed = 5 + 2 * 4;  // after the tag and two integers
    std::memset(bytes.data() + kElapsed, 0, sizeof(double));
    testsupport::RestoreInto(set, bytes);
}

/// A predictor set with its settings and cancel state. Change the settings, then call Make.
class PredictorSetTest : public testing::Test {
 protected:
    void Make() { fpSet = std::make_unique<FSPredictorSet>(fSettings, fCancel); }

    FSStatus Read(const Rows& rows, std::int32_t maxRecords = -1) {
        testsupport::RecordList records(rows);
        return fpSet->AccumulateRecords(records, maxRecords);
    }

    FSSettings fSettings;
    FSCancelState fCancel;
    std::unique_ptr<FSPredictorSet> fpSet;
};

inline void ExpectStatus(const FSStatus& status, std::uint32_t code, int severity) {
    EXPECT_EQ(status.fCode, code);
    EXPECT_EQ(status.fSeverity, severity);
}

#endif  // PREDSEL_FEATURESELECT_TESTS_PREDICTORSETFIXTURE_H

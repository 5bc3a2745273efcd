#ifndef PREDSEL_NAIVEBAYES_TESTS_ENGINEFIXTURE_H
#define PREDSEL_NAIVEBAYES_TESTS_ENGINEFIXTURE_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host/Progress.h"
#include "host/Records.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBOutput.h"
#include "naivebayes/NBOutputStatistics.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/data/NBVarList.h"

// Data, sources and engines for the tests of the facade.

namespace enginetest {

inline constexpr double kMissing = MCMV::gMissingValue;
inline constexpr std::int32_t kInput = 1;
inline constexpr std::int32_t kCandidate = 2;
inline constexpr std::int32_t kTarget = 3;
inline constexpr std::int32_t kUnused = 5;

using Rows = std::vector<std::vector<double>>;

/// Records in memory; an empty row is delivered as null.
class Source : public MCCommon::MultiPassRecordIter {
 public:
    explicit Source(const Rows& rows) {
        for (const auto& row : rows) {
            fvRecords.push_back(row.empty() ? std::nullopt
                                            : std::make_optional(MCCommon::Record(row)));
        }
    }
    bool HasMore() override { return fNext < fvRecords.size(); }
    const MCCommon::Record* Next() override {
        if (!HasMore()) return nullptr;
        const auto& record = fvRecords[fNext++];
        return record ? &*record : nullptr;
    }
    std::int32_t GetFailReason() const override {
        return fNext < fvRecords.size() ? MCCommon::kITER_SUCCESS : MCCommon::kITER_NO_VALID_CASE;
    }
    std::int32_t NewPass() override {
        ++fNumPasses;
        fNext = 0;
        return GetFailReason();
    }

    std::size_t fNext = 0;
    std::int32_t fNumPasses = 0;

 private:
    std::vector<std::optional<MCCommon::Record>> fvRecords;
};

/// Gives the positive answer from the poll after so many others, once: sticking is the engine's.
class StopAtPoll : public MCStopProcessor {
 public:
    explicit StopAtPoll(std::int32_t refusals) : MCStopProcessor(0.0), fRefusals(refusals) {}
    bool IsCancelled() override { return fPolls++ == fRefusals; }

 private:
    std::int32_t fRefusals;
    std::int32_t fPolls = 0;
};

inline std::vector<double> Values(std::int32_t count) {
    std::vector<double> values;
    for (std::int32_t i = 0; i < count; ++i) values.push_back(10.0 * (i + 1));
    return values;
}

/// Adds a numeric categorical variable with the values 10, 20, ...
inline std::int32_t AddCategorical(NBVarList& list, const std::string& name, std::int32_t count,
                                   std::int32_t role) {
    return list.AddNumericCatVar(name, "", Values(count), {}, role);
}

/// Target "t" first, then a predictor a letter, "a" onwards, of these numbers of categories.
inline NBVarList CategoricalList(std::int32_t targets, const std::vector<std::int32_t>& categories,
                                 std::int32_t role = kInput) {
    NBVarList list;
    AddCategorical(list, "t", targets, kTarget);
    for (std::size_t j = 0; j < categories.size(); ++j) {
        AddCategorical(list, "p" + std::to_string(j), categories[j], role);
    }
    return list;
}

inline std::unique_ptr<INBAlgorithm> Create(const NBVarList& list,
                                            const NaiveBayesSettings& settings = {}) {
    NBStatus status;
    auto engine = CreateNBAlgorithm(status, settings, list);
    EXPECT_EQ(status, NBStatus());
    return engine;
}

inline NBStatus Build(INBAlgorithm& engine, const Rows& rows) {
    Source source(rows);
    return engine.BuildModel(source, static_cast<std::int32_t>(rows.size()));
}

inline std::unique_ptr<INBAlgorithm> Built(const NBVarList& list, const Rows& rows) {
    auto engine = Create(list);
    EXPECT_EQ(Build(*engine, rows), NBStatus());
    return engine;
}

/// SelectSubset with the arguments that most tests leave alone.
struct Selection {
    std::vector<std::int32_t> fvSelected;
    std::vector<double> fvCriteria;
    std::vector<NBSubset> fvBest;
    std::int32_t fMaxSize = -1;
    bool fbExact = false;
    std::int32_t fNumBest = 0;
    std::ostream* fpXML = nullptr;

    NBStatus Run(INBAlgorithm& engine, const Rows& rows) {
        Source source(rows);
        return engine.SelectSubset(source, static_cast<std::int32_t>(rows.size()), fvSelected,
                                   fvCriteria, fvBest, fMaxSize, fbExact, nullptr, 0, fNumBest,
                                   fpXML, nullptr);
    }
    NBStatus Run(INBAlgorithm& engine, const Rows& rows, Source& test, std::int32_t numTest) {
        Source source(rows);
        return engine.SelectSubset(source, static_cast<std::int32_t>(rows.size()), fvSelected,
                                   fvCriteria, fvBest, fMaxSize, fbExact, &test, numTest, fNumBest,
                                   fpXML, nullptr);
    }
};

inline std::string SavedBinary(INBAlgorithm& engine) {
    std::ostringstream stream;
    EXPECT_EQ(engine.SaveBinary(stream), NBStatus());
    return stream.str();
}

inline std::string SavedXML(INBAlgorithm& engine) {
    std::ostringstream stream;
    EXPECT_EQ(engine.SaveXML(stream), NBStatus());
    return stream.str();
}

inline std::unique_ptr<INBAlgorithm> RestoredBinary(const std::string& bytes) {
    std::istringstream stream(bytes);
    NBStatus status;
    auto engine = RestoreNBAlgorithm(status, stream);
    EXPECT_EQ(status, NBStatus());
    return engine;
}

inline std::unique_ptr<INBAlgorithm> RestoredXML(const std::string& text) {
    std::istringstream stream(text);
    NBStatus status;
    auto engine = RestoreNBAlgorithmXML(status, stream);
    EXPECT_EQ(status, NBStatus());
    return engine;
}

struct Counts {
    double fWeight = 0.0;
    double fExcludedWeight = 0.0;
    std::int32_t fRecords = 0;
    std::int32_t fExcluded = 0;
    bool operator==(const Counts&) const = default;
};

inline Counts RecordCounts(const INBAlgorithm& engine) {
    Counts counts;
    engine.GetRecordCounts(counts.fWeight, counts.fExcludedWeight, counts.fRecords,
                           counts.fExcluded);
    return counts;
}

inline NBStatus Error(std::uint32_t code) { return NBStatus(code, false); }

/// A status with integer arguments.
inline NBStatus With(NBStatus status, std::int32_t first, std::int32_t second = 0,
                     std::int32_t third = 0) {
    status.fIntArgs = {first, second, third};
    return status;
}

/// Rows of codes below these numbers, target first, -1 now and then for a predictor. Predictor j
/// tells less of the target the higher j is.
inline Rows RandomRows(std::mt19937& random, std::size_t count, std::int32_t targets,
                       const std::vector<std::int32_t>& categories) {
    const auto draw = [&random](std::int32_t below) {
        return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(below));
    };
    Rows rows;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t target = draw(targets);
        std::vector<double> row{static_cast<double>(target)};
        for (std::size_t j = 0; j < categories.size(); ++j) {
            const bool tells = draw(4 + 2 * static_cast<std::int32_t>(j)) < 3;
            const std::int32_t code = tells ? target % categories[j] : draw(categories[j]);
            row.push_back(draw(12) == 0 ? -1.0 : code);
        }
        rows.push_back(row);
    }
    return rows;
}

}  // namespace enginetest

#endif  // PREDSEL_NAIVEBAYES_TESTS_ENGINEFIXTURE_H

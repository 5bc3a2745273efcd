// Whatever the order of the records, however they are cut into parts, read and put together again:
// every result has the same bits. Prints a row of the table in docs/accuracy.md for each shape:
// tables, permutations, splits.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "featureselect/FSAlgorithm.h"
#include "featureselect/FSFactory.h"
#include "featureselect/FSSettings.h"
#include "featureselect/tests/TableRecords.h"
#include "tests/support/CaseName.h"
#include "tests/support/RandomSeed.h"

namespace {

using testsupport::TableColumn;
using testsupport::TableColumns;
using Rows = std::vector<std::size_t>;
using Random = std::mt19937_64;

constexpr double kMissing = MCMV::gMissingValue;

bool Chance(Random& random, double probability) {
    return std::bernoulli_distribution(probability)(random);
}

int Between(Random& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

/// The rows of a column in another order, or some of them.
TableColumn Take(const TableColumn& column, const Rows& rows) {
    return std::visit(
        [&](const auto& values) {
            std::decay_t<decltype(values)> taken;
            for (const std::size_t row : rows) taken.push_back(values[row]);
            return TableColumn{std::move(taken), column.fEntryEnd};
        },
        column.fValues);
}

struct Shape {
    const char* fName;
    bool fbCategorical, fbContinuous;  // predictors of that kind
    bool fbTargetCategorical;
};

void PrintTo(const Shape& shape, std::ostream* out) { *out << shape.fName; }

/// A table with its settings, drawn at random. Columns: target, weight where there is one,
/// predictors.
class Table {
 public:
    Table(const Shape& shape, std::size_t rows, Random& random) : fRows(rows), fRandom(random) {
        std::vector<bool> kinds;
        for (int at = Between(fRandom, 2, Chance(fRandom, 0.2) ? 20 : 5); at > 0; --at) {
            kinds.push_back(shape.fbContinuous ? shape.fbCategorical && at % 2 == 0 : true);
        }
        fSettings = FSSettings(kinds, shape.fbTargetCategorical);
        fvColumns.push_back(shape.fbTargetCategorical ? Codes() : Numbers());
        if (Chance(fRandom, 0.6)) {
            fSettings.SetWeightPosition(1);
            fvColumns.push_back(Weights());
        }
        for (const bool categorical : kinds) {
            fvColumns.push_back(categorical ? Codes() : Numbers());
        }
        // Thresholds that some of the predictors pass and others don't.
        fSettings.SetMinCoefVar(Chance(fRandom, 0.5) ? 0.001 : 0.3);
        if (Chance(fRandom, 0.3)) fSettings.SetMinStdDev(0.9);
    }

    TableColumns Taken(const Rows& rows) const {
        TableColumns taken;
        for (const TableColumn& column : fvColumns) taken.push_back(Take(column, rows));
        return taken;
    }

    const std::size_t fRows;
    FSSettings fSettings;
    TableColumns fvColumns;

 private:
    double Normal() { return std::normal_distribution<double>()(fRandom); }
    double Pick(const std::vector<double>& from) {
        return from[static_cast<std::size_t>(
            Between(fRandom, 0, static_cast<int>(from.size()) - 1))];
    }

    TableColumn Codes() {
        const int levels =
            std::array{1, 2, 3, 3, 7, 30, 200}[static_cast<std::size_t>(Between(fRandom, 0, 6))];
        const double missing = Pick({0, 0, 0.1, 0.75});
        const bool drifts = Chance(fRandom, 0.3);  // the later rows, the higher the codes
        std::vector<std::uint16_t> codes(fRows);
        for (std::size_t row = 0; row < fRows; ++row) {
            if (Chance(fRandom, missing)) continue;
            const int first =
                drifts ? static_cast<int>(row * static_cast<std::size_t>(levels) / fRows) : 0;
            codes[row] = static_cast<std::uint16_t>(Between(fRandom, first, levels - 1) + 1);
        }
        return {std::move(codes), static_cast<std::uint32_t>(levels) + 1};
    }

    /// A number of one of these kinds.
    double Number(int kind, std::size_t row) {
        const auto at = static_cast<double>(row);
        switch (kind) {
            case 0:
                return Normal();
            case 1:
                return 1e7 + Normal();
            case 2:
                return -1e12 + Normal();
            case 3:
                return 0.05 * at + Normal();  // drifts
            case 4:
                return 1e12 + 1e6 * at + Normal();
            case 5:
                return std::ldexp(Normal(), Between(fRandom, -300, 300));
            case 6:
                return std::ldexp(Normal(), 980);
            case 7:
                return std::ldexp(Normal(), -980);
            case 8:
                return Between(fRandom, -3, 3);
            case 9:
                return Between(fRandom, 0, 100) / 10.0;
            case 10:
                return Chance(fRandom, 0.9) ? 0.1 : 0.3;
            case 11:
                return Chance(fRandom, 0.5) ? 0.0 : -0.0;
            case 12:  // now and then one of any size
                return std::ldexp(Normal(),
                                  Chance(fRandom, 0.05) ? Between(fRandom, -1000, 980) : 0);
            case 13:
                return std::ldexp(Normal(), -1060);  // few bits are left there
            case 14:
                return std::clamp(Normal() * 1e308, -1.7e308, 1.7e308);
            default:
                return 7.25;
        }
    }
    TableColumn Numbers() {
        const int kind = Between(fRandom, 0, 15);
        const double missing = Pick({0, 0, 0.1, 0.75});
        std::vector<double> values(fRows);
        for (std::size_t row = 0; row < fRows; ++row) {
            values[row] = Chance(fRandom, missing) ? kMissing : Number(kind, row);
        }
        return {std::move(values), 1};
    }

    TableColumn Weights() {
        const int kind = Between(fRandom, 0, 4);
        if (kind > 0) fSettings.SetWeightConversion(FSSettings::kWeightAsIs);
        std::vector<double> values(fRows);
        for (double& value : values) {
            if (Chance(fRandom, 0.05)) {
                value = Pick({0, -1, kMissing});
            } else if (kind < 2) {
                value = Between(fRandom, 0, 4);
            } else if (kind == 2) {
                value = std::uniform_real_distribution<double>(0, 3)(fRandom);
            } else if (kind == 3) {
                value = Pick({0.1, 0.3, 1.0 / 3, 1e-9, 1e9, 2.5});
            } else {  // sums around 2^53, where doubles stop to hold every whole number
                value = Pick({9007199254740990.0, 9007199254740992.0, 1, 3});
            }
        }
        return {std::move(values), 1};
    }

    Random& fRandom;
};

/// All that a run gives, in one order.
class Outcome {
 public:
    /// With labels, says of each number what it is.
    Outcome(const IFSAlgorithm& engine, const std::vector<FSStatus>& statuses, bool withLabels)
        : fbWithLabels(withLabels) {
        for (const FSStatus& status : statuses) Add("status", status.fCode);
        AddCounts(engine);
        for (const std::int32_t index : engine.GetDeletedIndices()) Add("deleted", index);
        for (const std::int32_t reason : engine.GetDeletionReasons()) Add("reason", reason);
        for (std::int32_t criterion = 0; criterion < 6; ++criterion)
            AddCriterion(engine, criterion);
    }

    /// The criteria alone, of predictors that have not been screened.
    explicit Outcome(const IFSAlgorithm& engine) : fbWithLabels(true) {
        for (std::int32_t criterion = 0; criterion < 6; ++criterion)
            AddCriterion(engine, criterion);
    }

    bool operator==(const Outcome& other) const { return fvNumbers == other.fvNumbers; }

    /// The first number in which two differ; this one has labels.
    std::string Difference(const Outcome& other) const {
        std::ostringstream text;
        text << std::hexfloat;
        for (std::size_t at = 0; at < fvNumbers.size(); ++at) {
            if (at < other.fvNumbers.size() && fvNumbers[at] == other.fvNumbers[at]) continue;
            text << fvLabels[at] << ": " << std::bit_cast<double>(fvNumbers[at]) << " and ";
            if (at < other.fvNumbers.size()) {
                text << std::bit_cast<double>(other.fvNumbers[at]);
            } else {
                text << "nothing";
            }
            return text.str();
        }
        return "more numbers";
    }

 private:
    void Add(const std::string& label, double value) {
        fvNumbers.push_back(std::bit_cast<std::uint64_t>(value));
        if (fbWithLabels) fvLabels.push_back(label);
    }
    void AddCounts(const IFSAlgorithm& engine) {
        double weightedValid = 0.0, weightedExcluded = 0.0;
        std::int32_t valid = 0, excluded = 0;
        engine.GetRecordCounts(weightedValid, weightedExcluded, valid, excluded);
        Add("weighted valid", weightedValid);
        Add("weighted excluded", weightedExcluded);
        Add("valid", valid);
        Add("excluded", excluded);
        std::int32_t category = 0;
        IFSAlgorithm::CategoryCount count;
        for (int at = 0; engine.GetTargetCategoryByIndex(at, category, count); ++at) {
            Add("category", category);
            Add("cases of a category", count.first);
            Add("weight of a category", count.second);
        }
    }
    void AddCriterion(const IFSAlgorithm& engine, std::int32_t criterion) {
        const std::string label =
            fbWithLabels ? "criterion " + std::to_string(criterion) + ' ' : std::string();
        for (const double value : engine.GetCriterionValues(criterion)) Add(label + "value", value);
        for (const std::int32_t rank : engine.GetRanks(criterion)) Add(label + "rank", rank);
        for (int predictor = 0; predictor < engine.GetSettings().GetNumPredictors(); ++predictor) {
            std::array<double, 4> shown{};
            Add(label + "is there", engine.GetPredictorCriterion(criterion, predictor, shown[0],
                                                                 shown[1], shown[2], shown[3]));
            for (std::size_t at = 0; at < shown.size(); ++at) {
                Add(fbWithLabels ? label + "predictor " + std::to_string(predictor) + " number " +
                                       std::to_string(at)
                                 : label,
                    shown[at]);
            }
        }
    }

    bool fbWithLabels;
    std::vector<std::uint64_t> fvNumbers;  // bits of doubles
    std::vector<std::string> fvLabels;     // parallel, or empty
};

/// Reads rows of a table as records or in blocks, on threads or not, as drawn.
FSStatus Read(IFSAlgorithm& engine, const Table& table, const Rows& rows, Random& random) {
    const TableColumns columns = table.Taken(rows);
    if (Chance(random, 0.4)) {
        testsupport::OneByOne records(columns, rows.size());
        return engine.AccumulateData(records, -1);
    }
    constexpr std::array<std::size_t, 5> kBlockRows{1, 7, 64, 1000, 70000};
    const int threads = Chance(random, 0.2) ? Between(random, 1, 3) : 0;
    testsupport::InBlocks blocks(
        columns, rows.size(), kBlockRows[static_cast<std::size_t>(Between(random, 0, 4))], threads);
    return engine.AccumulateData(blocks, -1);
}

std::vector<FSStatus> FinishRun(IFSAlgorithm& engine, FSStatus read) {
    std::vector<FSStatus> statuses{read};
    statuses.push_back(engine.DeleteMissingOrConstant());
    statuses.push_back(engine.DeleteByCriteria());
    statuses.push_back(engine.RankPredictors(0));
    return statuses;
}

/// The rows in another order: any, backwards, or but for two of them.
Rows Reordered(std::size_t count, Random& random) {
    Rows rows(count);
    std::iota(rows.begin(), rows.end(), 0);
    const int way = Between(random, 0, 9);
    if (way == 0) {
        std::reverse(rows.begin(), rows.end());
    } else if (way == 1) {
        std::swap(rows.front(),
                  rows[static_cast<std::size_t>(Between(random, 0, static_cast<int>(count) - 1))]);
    } else {
        std::shuffle(rows.begin(), rows.end(), random);
    }
    return rows;
}

using Engines = std::vector<std::unique_ptr<IFSAlgorithm>>;

/// One engine for each of some parts of the rows. Empty when a part has nothing valid: an engine in
/// an error merges with none.
Engines ReadInParts(const Table& table, FSSettings& settings, const Rows& rows, Random& random) {
    std::vector<std::size_t> cuts{0, rows.size()};
    for (int cut = Between(random, 1, 6); cut > 0; --cut) {
        cuts.push_back(static_cast<std::size_t>(Between(random, 0, static_cast<int>(rows.size()))));
    }
    std::sort(cuts.begin(), cuts.end());
    Engines parts;
    for (std::size_t at = 0; at + 1 < cuts.size(); ++at) {
        const Rows part(rows.begin() + static_cast<std::ptrdiff_t>(cuts[at]),
                        rows.begin() + static_cast<std::ptrdiff_t>(cuts[at + 1]));
        parts.push_back(FSFactory().CreateFromSettings(settings));
        if (!Read(*parts.back(), table, part, random).IsOk()) return {};
    }
    return parts;
}

/// Merges any two until one is left.
std::unique_ptr<IFSAlgorithm> Merged(Engines parts, Random& random) {
    while (parts.size() > 1) {
        std::shuffle(parts.begin(), parts.end(), random);
        EXPECT_TRUE(parts[parts.size() - 2]->MergeFrom(*parts.back()).IsOk());
        parts.pop_back();
    }
    return std::move(parts[0]);
}

struct Trials {
    int fPermutations = 0;
    int fSplits = 0;
};

class FSOrderFreedom : public testing::TestWithParam<Shape> {
 protected:
    /// The results of a run in parts where it can be cut, else of a whole one.
    static Outcome RunOtherwise(const Table& table, Random& random, bool withLabels,
                                Trials& trials) {
        FSSettings settings = table.fSettings;
        const Rows rows = Reordered(table.fRows, random);
        for (int cuts = Chance(random, 0.6) ? 3 : 0; cuts > 0; --cuts) {
            Engines parts = ReadInParts(table, settings, rows, random);
            if (parts.empty()) continue;
            ++trials.fSplits;
            const auto engine = Merged(std::move(parts), random);
            return {*engine, FinishRun(*engine, FSStatus::Success()), withLabels};
        }
        ++trials.fPermutations;
        const auto engine = FSFactory().CreateFromSettings(settings);
        const FSStatus read = Read(*engine, table, rows, random);
        return {*engine, FinishRun(*engine, read), withLabels};
    }

    static Outcome RunAsItIs(const Table& table, bool withLabels) {
        FSSettings settings = table.fSettings;
        FSAlgorithm engine(settings);
        testsupport::OneByOne records(table.fvColumns, table.fRows);
        return {engine, FinishRun(engine, engine.AccumulateData(records, -1)), withLabels};
    }

    /// A table of so many rows, read in so many ways.
    static void Try(std::size_t rows, int ways, std::uint64_t seed, Trials& trials) {
        Random random(seed);
        const Table table(GetParam(), rows, random);
        const Outcome expected = RunAsItIs(table, false);
        for (int way = 0; way < ways; ++way) {
            const auto waySeed = random();
            Random wayRandom(waySeed);
            if (RunOtherwise(table, wayRandom, false, trials) == expected) continue;
            Random again(waySeed);
            Trials uncounted;
            FAIL() << "table of " << rows << " rows, seed " << seed << ", way " << way << ": "
                   << RunOtherwise(table, again, true, uncounted).Difference(expected);
        }
    }
};

// Of all shapes together: more than 10,000 orders and cuts in all.
TEST_P(FSOrderFreedom, AnyOrderCutAndMergeGivesTheSameBits) {
    const std::uint64_t seed = std::uint64_t{testsupport::RandomSeed()} << 20;
    Trials trials;
    std::uint64_t table = 0;
    // From small to large, so that the first failure is a small one.
    for (const std::size_t rows : {2, 3, 5, 10, 20, 40, 80, 120, 200}) {
        for (int round = 0; round < 12 && !HasFailure(); ++round)
            Try(rows, 18, seed + table++, trials);
    }
    if (!HasFailure()) Try(3000, 10, seed + table++, trials);
    std::cout << "| " << GetParam().fName << " | " << table << " | " << trials.fPermutations
              << " | " << trials.fSplits << " |\n";
    EXPECT_GE(trials.fPermutations + trials.fSplits, HasFailure() ? 0 : 1900);
}

INSTANTIATE_TEST_SUITE_P(Shapes, FSOrderFreedom,
                         testing::Values(Shape{"CategoricalByCategorical", true, false, true},
                                         Shape{"ContinuousByCategorical", false, true, true},
                                         Shape{"MixedByCategorical", true, true, true},
                                         Shape{"CategoricalByContinuous", true, false, false},
                                         Shape{"ContinuousByContinuous", false, true, false},
                                         Shape{"MixedByContinuous", true, true, false}),
                         testsupport::CaseName());

// --- Weights and repetitions ---

/// Rows that stand for many: a target, weights and predictors of four numbers and a factor.
struct Repeated {
    Repeated(std::size_t rows, int most, bool targetCategorical, Random& random)
        : fSettings({false, false, true, false, false}, targetCategorical) {
        std::vector<double> weights(rows);
        for (double& weight : weights) weight = Between(random, (most + 1) / 2, most);
        const auto draw = [&](auto number) {
            std::vector<double> values(rows);
            for (double& value : values) value = number();
            return TableColumn{std::move(values), 1};
        };
        std::normal_distribution<double> normal;
        const auto code = [&] { return static_cast<double>(Between(random, 0, 2)); };
        // All bits of a mantissa, and all of one sign, so that sums grow as fast as they can.
        const auto full = [&] {
            return std::ldexp(1.0, 20) - std::ldexp(Between(random, 1, 9), -33);
        };
        fColumns = {targetCategorical ? draw(code) : draw([&] { return normal(random); }),
                    TableColumn{weights, 1},
                    draw(full),
                    draw([&] { return -1e12 + normal(random); }),
                    draw(code),
                    draw([&] { return normal(random); }),
                    draw([&] { return std::ldexp(normal(random), 990); })};
        for (std::size_t row = 0; row < rows; ++row) {
            fvTimes.insert(fvTimes.end(), static_cast<std::size_t>(weights[row]), row);
        }
        std::shuffle(fvTimes.begin(), fvTimes.end(), random);
    }

    Outcome Weighted() const {
        FSSettings settings = fSettings;
        settings.SetWeightPosition(1);
        FSAlgorithm engine(settings);
        testsupport::OneByOne records(fColumns,
                                      std::get<std::vector<double>>(fColumns[0].fValues).size());
        EXPECT_TRUE(engine.RunAll(records, -1, false, 0).IsOk());
        return Outcome(engine);
    }

    Outcome Unweighted(std::size_t blockRows, std::int32_t threads) const {
        TableColumns columns;
        for (std::size_t at = 0; at < fColumns.size(); ++at) {
            if (at != 1) columns.push_back(Take(fColumns[at], fvTimes));
        }
        FSSettings settings = fSettings;
        FSAlgorithm engine(settings);
        testsupport::OneByOne records(columns, fvTimes.size());
        testsupport::InBlocks blocks(columns, fvTimes.size(), blockRows, threads);
        const FSStatus status = blockRows == 0 ? engine.RunAll(records, -1, false, 0)
                                               : engine.RunAll(blocks, -1, false, 0);
        EXPECT_TRUE(status.IsOk());
        return Outcome(engine);
    }

    FSSettings fSettings;
    TableColumns fColumns;
    Rows fvTimes;  // the rows, each as often as it counts, in any order
};

TEST(FSOrderFreedomOfWeights, AWeightIsSoManyRecords) {
    const std::uint64_t seed = std::uint64_t{testsupport::RandomSeed()} << 20;
    for (std::uint64_t at = 0; at < 200; ++at) {
        Random random(seed + at);
        const Repeated rows(6 + at / 2, 5, at % 2 == 0, random);
        const Outcome expected = rows.Weighted();
        for (const std::size_t blockRows : {0, 64, 70000}) {
            const Outcome found = rows.Unweighted(blockRows, 0);
            ASSERT_TRUE(found == expected)
                << "seed " << seed + at << ": " << found.Difference(expected);
        }
    }
}

TEST(FSOrderFreedomOfWeights, SumsOfManyLargeValuesOverflowNowhere) {
    Random random(testsupport::RandomSeed());
    for (const bool targetCategorical : {false, true}) {
        const Repeated rows(10, 30000, targetCategorical, random);
        const Outcome expected = rows.Weighted();
        for (const std::size_t blockRows : {0, 70000, 400000}) {
            const Outcome found = rows.Unweighted(blockRows, blockRows == 0 ? 0 : 2);
            ASSERT_TRUE(found == expected) << found.Difference(expected);
        }
    }
}

// --- Without a target ---

/// All that a screening pass tells but for the first values and the time.
std::string ScreenedText(const Table& table, const Rows& rows, Random& random) {
    FSSettings settings = table.fSettings;
    FSAlgorithm engine(settings);
    const TableColumns columns = table.Taken(rows);
    testsupport::OneByOne records(columns, rows.size());
    testsupport::InBlocks blocks(columns, rows.size(), 64, Between(random, 0, 2));
    std::vector<std::int32_t> indices;
    std::vector<std::vector<std::int32_t>> reasons;
    const FSStatus status = Chance(random, 0.5) ? engine.ScreenOnly(records, indices, reasons, -1)
                                                : engine.ScreenOnly(blocks, indices, reasons, -1);
    std::ostringstream shown;
    shown.precision(17);
    engine.Display(shown);
    std::ostringstream text;
    text << status.fCode << '\n';
    for (std::size_t at = 0; at < indices.size(); ++at) {
        text << indices[at] << ':';
        for (const std::int32_t reason : reasons[at]) text << ' ' << reason;
        text << '\n';
    }
    std::istringstream lines(shown.str());
    for (std::string line; std::getline(lines, line);) {
        const bool tellsOrder = line.starts_with("The first non-missing");
        if (!tellsOrder && !line.starts_with("Total elapsed time")) text << line << '\n';
    }
    return text.str();
}

TEST(FSOrderFreedomOfScreening, AnyOrderGivesTheSameBits) {
    const std::uint64_t seed = std::uint64_t{testsupport::RandomSeed()} << 20;
    for (std::uint64_t at = 0; at < 100; ++at) {
        Random random(seed + at);
        Table table({"", true, true, false}, 2 + 2 * at, random);
        table.fSettings.SetTargetPosition(-1);
        Rows rows(table.fRows);
        std::iota(rows.begin(), rows.end(), 0);
        const std::string expected = ScreenedText(table, rows, random);
        for (int way = 0; way < 12; ++way) {
            ASSERT_EQ(ScreenedText(table, Reordered(table.fRows, random), random), expected)
                << "seed " << seed + at;
        }
    }
}

// --- Parts that were saved before they were merged ---

TEST(FSOrderFreedomOfSavedParts, MergeToTheBitsOfOnePass) {
    const std::uint64_t seed = std::uint64_t{testsupport::RandomSeed()} << 20;
    for (std::uint64_t at = 0; at < 100; ++at) {
        Random random(seed + at);
        const Shape shape{"", Chance(random, 0.5), true, Chance(random, 0.5)};
        const Table table(shape, 4 + at, random);
        FSSettings settings = table.fSettings;
        FSAlgorithm whole(settings);
        testsupport::OneByOne records(table.fvColumns, table.fRows);
        const FSStatus read = whole.AccumulateData(records, -1);
        Engines parts = ReadInParts(table, settings, Reordered(table.fRows, random), random);
        if (parts.empty()) continue;
        for (auto& part : parts) {
            std::stringstream stream;
            ASSERT_TRUE(part->SaveBinary(stream).IsOk());
            part = FSFactory().CreateFromBinary(stream);
            ASSERT_NE(part, nullptr);
        }
        const auto merged = Merged(std::move(parts), random);
        const Outcome found(*merged, FinishRun(*merged, FSStatus::Success()), true);
        const Outcome expected(whole, FinishRun(whole, read), false);
        ASSERT_TRUE(found == expected) << "seed " << seed + at << ", " << table.fRows
                                       << " rows: " << found.Difference(expected);
    }
}

}  // namespace

// The whole run against a slow plain one that keeps all records, counts in maps and takes two
// passes for every mean and moment.
#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include "featureselect/FSAlgorithm.h"
#include "featureselect/FSDistributions.h"
#include "featureselect/tests/PredictorSetFixture.h"
#include "tests/support/RandomSeed.h"

namespace {

using testsupport::RecordList;

struct Case {
    double fX, fY, fWeight;
};

// Value, first and second tie-breaker of one criterion of one predictor.
struct Expected {
    double fValue = kMissing, fTie1 = kMissing, fTie2 = kMissing;
    std::int32_t fPredictor = -1;
};

double Upper(double cdf) { return cdf == kMissing ? kMissing : 1 - cdf; }

struct Oracle {
    bool fbPredCategorical, fbTargetCategorical;
    std::vector<Case> fvCases;

    double Weight() const {
        double sum = 0;
        for (const Case& one : fvCases) sum += one.fWeight;
        return sum;
    }

    Expected ChiSquareFamily(std::int32_t criterion) const {
        std::map<int, double> rows, columns;
        std::map<std::pair<int, int>, double> cells;
        for (const Case& one : fvCases) {
            const int x = static_cast<int>(one.fX), y = static_cast<int>(one.fY);
            rows[x] += one.fWeight;
            columns[y] += one.fWeight;
            cells[{x, y}] += one.fWeight;
        }
        const double n = Weight();
        double pearson = 0, likelihood = 0, modes = 0, largest = 0;
        for (const auto& [x, r] : rows) {
            double mode = 0;
            for (const auto& [y, c] : columns) {
                const double count = cells[{x, y}], e = r * c / n;
                pearson += (count - e) * (count - e) / e;
                if (count > 0) likelihood += 2 * count * std::log(count / e);
                mode = std::max(mode, count);
            }
            modes += mode;
        }
        for (const auto& [y, c] : columns) largest = std::max(largest, c);
        const double r = static_cast<double>(rows.size()), c = static_cast<double>(columns.size());
        if (criterion == 3) {
            return {n > largest ? (modes - largest) / (n - largest) : kMissing, r};
        }
        if (r < 2 || c < 2) return criterion == 2 ? Expected{} : Expected{1.0, 0, 0};
        if (criterion == 2) return {std::sqrt(pearson / (n * (std::min(r, c) - 1))), pearson};
        const double df = (r - 1) * (c - 1), x2 = criterion == 0 ? pearson : likelihood;
        return {Upper(ChiSquareCdf(x2, df)), x2, df};
    }

    Expected FTest(std::int32_t criterion) const {
        std::map<int, std::vector<std::pair<double, double>>> groups;
        double sum = 0;
        for (const Case& one : fvCases) {
            const double key = fbPredCategorical ? one.fX : one.fY;
            const double value = fbPredCategorical ? one.fY : one.fX;
            groups[static_cast<int>(key)].push_back({value, one.fWeight});
            sum += value * one.fWeight;
        }
        const double n = Weight(), grand = sum / n;
        double between = 0, within = 0;
        for (const auto& [key, values] : groups) {
            double weight = 0, mean = 0;
            for (const auto& [value, w] : values) weight += w, mean += w * value;
            mean /= weight;
            between += weight * (mean - grand) * (mean - grand);
            for (const auto& [value, w] : values) {
                if (weight > 1) within += w * (value - mean) * (value - mean);
            }
        }
        const double k = static_cast<double>(groups.size()), df1 = k - 1, df2 = n - k;
        Expected result;
        result.fTie2 = !fbPredCategorical && criterion != 4 ? -n : n;
        if (df1 > 0 && df2 > 0 && within > 0) {
            result.fTie1 = between / df1 / (within / df2);
            result.fValue = Upper(FCdf(result.fTie1, df1, df2));
        } else if (!(within > 0)) {
            result.fValue = 0;
        }
        return result;
    }

    Expected TTest() const {
        const double n = Weight();
        double x = 0, y = 0, xx = 0, yy = 0, xy = 0;
        for (const Case& one : fvCases) {
            x += one.fWeight * one.fX / n;
            y += one.fWeight * one.fY / n;
        }
        for (const Case& one : fvCases) {
            xx += one.fWeight * (one.fX - x) * (one.fX - x);
            yy += one.fWeight * (one.fY - y) * (one.fY - y);
            xy += one.fWeight * (one.fX - x) * (one.fY - y);
        }
        const double r = xy / std::sqrt(xx * yy), df = n - 2;
        const double t = r * std::sqrt(df / (1 - r * r));
        const double cdf = TCdf(-std::abs(t), df);
        return {cdf == kMissing ? kMissing : 2 * cdf, r * r, n};
    }

    Expected Compute(std::int32_t criterion) const {
        if (fbPredCategorical && fbTargetCategorical) return ChiSquareFamily(criterion);
        return fbPredCategorical || fbTargetCategorical ? FTest(criterion) : TTest();
    }
};

bool Before(const Expected& a, const Expected& b, std::int32_t criterion) {
    if (a.fValue == kMissing || b.fValue == kMissing) return a.fValue > b.fValue;
    const double sign = criterion == 2 || criterion == 3 ? -1 : 1;
    const double tie2 = criterion < 2 ? a.fTie2 - b.fTie2 : b.fTie2 - a.fTie2;
    if (a.fValue != b.fValue) return sign * a.fValue < sign * b.fValue;
    if (a.fTie1 != b.fTie1) return a.fTie1 > b.fTie1;
    return criterion != 2 && criterion != 3 && tie2 < 0;
}

// Which predictors a criterion orders, told apart from how the engine goes about it.
bool HasCriterion(const FSSettings& settings, std::int32_t criterion, std::int32_t predictor) {
    const bool categorical = settings.IsPredictorCategorical(predictor);
    if (criterion < 4) return true;
    return criterion == 4 ? !settings.IsTargetCategorical() || !categorical
                          : settings.GetPredSetType() == FSSettings::kAllContinuous;
}

struct OracleCase {
    const char* fName;
    std::vector<bool> fvKinds;
    bool fbTargetCategorical;
};

void PrintTo(const OracleCase& oracle, std::ostream* out) { *out << oracle.fName; }

class AgainstThePlainRun : public testing::TestWithParam<OracleCase> {
 protected:
    // Columns: predictors, with target, case identifier and weight at 1, 2 and 4. The last
    // predictor is the first one again, of the same kind.
    void Draw(std::mt19937_64& random) {
        const auto predictors = GetParam().fvKinds.size();
        const auto chance = [&random](int outOf) {
            return std::uniform_int_distribution<int>(1, outOf)(random) == 1;
        };
        const auto value = [&](bool categorical) {
            if (chance(12)) return kMissing;
            if (categorical) {
                return static_cast<double>(std::uniform_int_distribution<int>(-1, 4)(random));
            }
            return std::normal_distribution<double>(5, 2)(random);
        };
        fvRows.clear();
        for (int row = 0; row < 200; ++row) {
            std::vector<double> values;
            for (std::size_t predictor = 0; predictor + 1 < predictors; ++predictor) {
                values.push_back(value(GetParam().fvKinds[predictor]));
            }
            values.push_back(values[0]);
            std::vector<double> record{
                values[0], value(GetParam().fbTargetCategorical), static_cast<double>(row),
                values[1],
                chance(15) ? kMissing : std::uniform_real_distribution<double>(0.0, 3.4)(random)};
            record.insert(record.end(), values.begin() + 2, values.end());
            fvRows.push_back(record);
        }
    }

    static std::size_t ColumnOf(std::size_t predictor) {
        return predictor == 0 ? 0 : predictor == 1 ? 3 : predictor + 3;
    }

    Rows fvRows;
};

TEST_P(AgainstThePlainRun, ValuesOrderAndCountsAgree) {
    const auto& [name, kinds, targetCategorical] = GetParam();
    std::mt19937_64 random(testsupport::RandomSeed());
    for (int round = 0; round < 20; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Draw(random);
        FSSettings settings(kinds, targetCategorical);
        settings.SetTargetPosition(1);
        settings.SetCaseIdPosition(2);
        settings.SetWeightPosition(4);
        FSAlgorithm engine(settings);
        RecordList records(fvRows);
        ASSERT_TRUE(engine.RunAll(records, -1, false, 0).IsOk());

        const auto isMissing = [](double value, bool categorical) {
            return value == kMissing || (categorical && value == -1);
        };
        RecordCounts counts{0, 0, 0, 0};
        std::vector<Oracle> oracles;
        for (const bool kind : kinds) oracles.push_back({kind, targetCategorical, {}});
        for (const auto& row : fvRows) {
            const double weight = row[4] == kMissing ? 0 : std::round(row[4]);
            if (weight == 0) continue;
            bool valid = false;
            if (!isMissing(row[1], targetCategorical)) {
                for (std::size_t at = 0; at < kinds.size(); ++at) {
                    if (isMissing(row[ColumnOf(at)], kinds[at])) continue;
                    valid = true;
                    oracles[at].fvCases.push_back({row[ColumnOf(at)], row[1], weight});
                }
            }
            (valid ? counts.fWeightedValid : counts.fWeightedExcluded) += weight;
            ++(valid ? counts.fValid : counts.fExcluded);
        }
        EXPECT_EQ(CountsOf(engine), counts);

        for (std::int32_t criterion = 0; criterion < 6; ++criterion) {
            SCOPED_TRACE("criterion " + std::to_string(criterion));
            if (!settings.IsCriterionOn(criterion)) continue;
            if (criterion == 5 && settings.GetPredSetType() == FSSettings::kMixed) continue;
            std::vector<Expected> order;
            for (std::size_t at = 0; at < kinds.size(); ++at) {
                const auto predictor = static_cast<std::int32_t>(at);
                const double found = engine.GetCriterionValues(criterion)[at];
                if (!HasCriterion(settings, criterion, predictor)) {
                    EXPECT_EQ(found, kMissing);
                    continue;
                }
                Expected expected = oracles[at].Compute(criterion);
                EXPECT_NEAR(found, expected.fValue, 1e-9);
                expected.fPredictor = predictor;
                // Behind all that are not after it, so that ties keep their order.
                auto place = order.begin();
                while (place != order.end() && !Before(expected, *place, criterion)) ++place;
                order.insert(place, expected);
            }
            Indices indices, wanted;
            std::vector<double> values;
            EXPECT_TRUE(engine.GetBestPredictors(criterion, indices, values, 0).IsOk());
            for (const Expected& one : order) wanted.push_back(one.fPredictor);
            EXPECT_EQ(indices, wanted);
            const Indices ranks = engine.GetRanks(criterion);
            for (std::size_t rank = 0; rank < wanted.size(); ++rank) {
                EXPECT_EQ(ranks[static_cast<std::size_t>(wanted[rank])],
                          static_cast<std::int32_t>(rank));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sets, AgainstThePlainRun,
    testing::Values(OracleCase{"CategoricalByCategorical", {true, true, true, true, true}, true},
                    OracleCase{"ContinuousByCategorical", {false, false, false, false}, true},
                    OracleCase{"MixedByCategorical", {true, false, true, false, true}, true},
                    OracleCase{"CategoricalByContinuous", {true, true, true, true}, false},
                    OracleCase{"ContinuousByContinuous", {false, false, false, false}, false},
                    OracleCase{"MixedByContinuous", {false, true, true, false, false}, false}),
    [](const auto& test) { return std::string(test.param.fName); });

}  // namespace

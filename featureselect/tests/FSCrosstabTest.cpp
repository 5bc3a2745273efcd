#include "featureselect/FSCrosstab.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/RandomSeed.h"

namespace {

using Rows = std::vector<std::vector<double>>;

FSCrosstab Table(const Rows& rows) {
    std::vector<FSCrosstab::Cell> cells;
    for (std::uint32_t i = 0; i < rows.size(); ++i) {
        for (std::uint32_t j = 0; j < rows[i].size(); ++j) {
            if (rows[i][j] > 0.0) cells.push_back({i, j, rows[i][j]});
        }
    }
    return FSCrosstab(cells, rows.size(), rows.front().size());
}

struct Measures {
    double fChiSquare = 0;
    double fLikelihoodRatio = 0;
    double fCramersV = 0;
    std::optional<double> fLambda;

    bool operator==(const Measures&) const = default;
};

Measures MeasuresOf(const Rows& rows) {
    const FSCrosstab table = Table(rows);
    const FSCrosstab::Pearson pearson = table.ChiSquare();
    const auto smaller = static_cast<std::int32_t>(std::min(rows.size(), rows.front().size()) - 1);
    return {pearson.fChiSquare, table.LikelihoodRatio(), pearson.CramersV(smaller), table.Lambda()};
}

std::ostream& operator<<(std::ostream& out, const Measures& measures) {
    out.precision(17);
    return out << measures.fChiSquare << ", " << measures.fLikelihoodRatio << ", "
               << measures.fCramersV << ", " << measures.fLambda.value_or(NAN);
}

double ParseNumber(const std::string& text) {
    double value = NAN;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(result.ptr, text.data() + text.size()) << text;
    return value;
}

struct Reference {
    std::string fKind;
    Rows fRows;
    Measures fMeasures;
};

// See tests/oracles/make_crosstab_table.py.
std::vector<Reference> References() {
    std::ifstream file(FEATURESELECT_TEST_DATA "/crosstabs.csv");
    std::string line;
    std::getline(file, line);  // tools and versions
    std::getline(file, line);  // column names
    std::vector<Reference> references;
    while (std::getline(file, line)) {
        std::vector<std::string> items;
        std::istringstream parts(line);
        for (std::string item; std::getline(parts, item, ',');) items.push_back(item);
        if (items.size() != 7) {
            ADD_FAILURE() << "not seven items: " << line;
            continue;
        }
        Reference reference{items[0], {}, {}};
        const auto columns = static_cast<std::size_t>(ParseNumber(items[1]));
        std::istringstream cells(items[2]);
        for (std::string cell; cells >> cell;) {
            if (reference.fRows.empty() || reference.fRows.back().size() == columns) {
                reference.fRows.emplace_back();
            }
            reference.fRows.back().push_back(ParseNumber(cell));
        }
        reference.fMeasures = {ParseNumber(items[3]), ParseNumber(items[4]), ParseNumber(items[5]),
                               ParseNumber(items[6])};
        references.push_back(reference);
    }
    return references;
}

TEST(FSCrosstab, EveryMeasureIsTheDoubleNearestToTheTruth) {
    const std::vector<Reference> references = References();
    EXPECT_GE(references.size(), 130U);
    std::map<std::string, int> kinds;
    for (const Reference& reference : references) {
        EXPECT_EQ(MeasuresOf(reference.fRows), reference.fMeasures) << reference.fKind;
        ++kinds[reference.fKind];
    }
    EXPECT_GE(kinds["near independence"], 20);
    EXPECT_GE(kinds["fractional"], 7);
    EXPECT_GE(kinds["perfect fractional"], 5);
}

TEST(FSCrosstab, IndependenceIsZeroExactly) {
    for (const Rows& rows : {Rows{{4, 6, 10}, {6, 9, 15}}, Rows{{0.5, 1.25}, {2, 5}}}) {
        EXPECT_EQ(MeasuresOf(rows), (Measures{0.0, 0.0, 0.0, 0.0}));
    }
}

TEST(FSCrosstab, NamesAndOrderOfCategoriesChangeNoBit) {
    std::mt19937 generator(testsupport::RandomSeed());
    std::uniform_int_distribution<int> draw(0, 9);
    for (const double unit : {1.0, 0.1, 1e-3, 123.456}) {
        Rows rows(7, std::vector<double>(5));
        for (auto& row : rows) {
            for (double& cell : row) cell = draw(generator) * unit;
            row[0] += unit;
        }
        rows[0] = std::vector<double>(5, unit);
        const Measures measures = MeasuresOf(rows);
        for (int order = 0; order < 20; ++order) {
            std::shuffle(rows.begin(), rows.end(), generator);
            std::vector<std::size_t> columns{0, 1, 2, 3, 4};
            std::shuffle(columns.begin(), columns.end(), generator);
            Rows other(7, std::vector<double>(5));
            for (std::size_t i = 0; i < 7; ++i) {
                for (std::size_t j = 0; j < 5; ++j) other[i][j] = rows[i][columns[j]];
            }
            EXPECT_EQ(MeasuresOf(other), measures) << unit;
        }
    }
}

TEST(FSCrosstab, RowsAndColumnsMayChangePlaces) {
    const Rows rows{{3, 0, 5, 1}, {2, 7, 1, 1}, {4, 4, 0.5, 2}};
    Rows turned(4, std::vector<double>(3));
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 4; ++j) turned[j][i] = rows[i][j];
    }
    EXPECT_EQ(MeasuresOf(turned).fChiSquare, MeasuresOf(rows).fChiSquare);
    EXPECT_EQ(MeasuresOf(turned).fLikelihoodRatio, MeasuresOf(rows).fLikelihoodRatio);
    EXPECT_EQ(MeasuresOf(turned).fCramersV, MeasuresOf(rows).fCramersV);
}

TEST(FSCrosstab, ACategorySplitInProportionChangesNoBit) {
    const Rows whole{{30, 12, 9}, {7, 28, 21}, {11, 5, 8}};
    const Rows split{{10, 4, 3}, {20, 8, 6}, {7, 28, 21}, {11, 5, 8}};
    EXPECT_EQ(MeasuresOf(split), MeasuresOf(whole));
}

TEST(FSCrosstab, PerfectAssociationIsOneExactly) {
    std::mt19937 generator(testsupport::RandomSeed());
    std::uniform_int_distribution<int> draw(1, 100000);
    for (const double unit : {1.0, 0.1, 1.0 / 3.0}) {
        for (std::size_t size = 2; size < 9; ++size) {
            Rows rows(size, std::vector<double>(size));
            for (std::size_t i = 0; i < size; ++i) rows[i][i] = draw(generator) * unit;
            EXPECT_EQ(MeasuresOf(rows).fCramersV, 1.0);
            EXPECT_EQ(MeasuresOf(rows).fLambda, 1.0);
        }
    }
}

TEST(FSCrosstab, RowsThatAllHaveTheirMostInOneColumnTellNothingExactly) {
    std::mt19937 generator(testsupport::RandomSeed());
    std::uniform_real_distribution<double> draw(0.0, 1.0);
    Rows rows(40, std::vector<double>(3));
    for (auto& row : rows) row = {draw(generator), 1.0 + draw(generator), draw(generator)};
    EXPECT_EQ(MeasuresOf(rows).fLambda, 0.0);
}

TEST(FSCrosstab, NoProductLeavesTheRangeOfDoubles) {
    // Chi-squares grow with the weights, the others don't.
    const Measures small = MeasuresOf({{10, 20}, {30, 40}});
    for (const int power : {-1040, -900, 300, 900}) {
        const double unit = std::ldexp(1.0, power);
        const Measures measures = MeasuresOf({{10 * unit, 20 * unit}, {30 * unit, 40 * unit}});
        EXPECT_EQ(measures.fCramersV, small.fCramersV) << power;
        EXPECT_EQ(measures.fLambda, small.fLambda) << power;
        if (power < -1000) continue;  // the statistic is subnormal there
        EXPECT_EQ(measures.fChiSquare, small.fChiSquare * unit) << power;
        EXPECT_EQ(measures.fLikelihoodRatio, small.fLikelihoodRatio * unit) << power;
    }
}

TEST(FSCrosstab, CellsTooSmallToShowCountAsNothing) {
    const Measures without = MeasuresOf({{1, 2, 0}, {4, 3, 0}});
    const Measures with = MeasuresOf({{1, 2, 1e-290}, {4, 3, 1e-300}});
    EXPECT_EQ(with, without);
}

TEST(FSCrosstab, InfiniteWeightsGiveNoNumber) {
    const double infinity = std::numeric_limits<double>::infinity();
    const Measures measures = MeasuresOf({{1, infinity}, {4, 3}});
    EXPECT_TRUE(std::isnan(measures.fChiSquare));
    EXPECT_TRUE(std::isnan(measures.fLikelihoodRatio));
    EXPECT_FALSE(measures.fLambda);
}

TEST(FSCrosstab, NothingSeenHasNoLambda) {
    EXPECT_FALSE(FSCrosstab({}, 0, 0).Lambda());
    EXPECT_FALSE(Table({{30}, {10}}).Lambda());
}

}  // namespace

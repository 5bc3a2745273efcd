// Every distribution function against reference values of ball arithmetic. With the environment
// variable PREDSEL_PRINT_ACCURACY set, prints the worst relative errors as in docs/accuracy.md.

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "featureselect/FSBeta.h"
#include "featureselect/FSDistributions.h"
#include "featureselect/FSGamma.h"
#include "featureselect/FSNormal.h"
#include "featureselect/FSQuantiles.h"

namespace {

struct Reference {
    std::string fFunction;
    std::string fRegion;
    double fX = 0.0;
    double fFirst = 0.0;
    double fSecond = 0.0;
    double fValue = 0.0;
};

double ParseNumber(const std::string& text) {
    double value = NAN;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(result.ptr, text.data() + text.size()) << text;
    return value;
}

std::vector<Reference> ReadReferences() {
    std::ifstream file(FEATURESELECT_TEST_DATA "/distributions.csv");
    std::vector<Reference> references;
    std::string line;
    std::getline(file, line);  // tool and version
    std::getline(file, line);  // column names
    while (std::getline(file, line)) {
        std::vector<std::string> cells;
        for (std::size_t start = 0; start <= line.size();) {
            const std::size_t end = std::min(line.find(',', start), line.size());
            cells.push_back(line.substr(start, end - start));
            start = end + 1;
        }
        if (cells.size() != 6) {
            ADD_FAILURE() << "not six cells: " << line;
            continue;
        }
        references.push_back({cells[0], cells[1], ParseNumber(cells[2]), ParseNumber(cells[3]),
                              ParseNumber(cells[4]), ParseNumber(cells[5])});
    }
    return references;
}

const std::vector<Reference>& References() {
    static const std::vector<Reference> references = ReadReferences();
    return references;
}

struct Worst {
    int fCount = 0;
    double fError = 0.0;
    Reference fWhere;
};

struct Subject {
    const char* fName;
    double (*fpEvaluate)(const Reference&);
    double fTolerance;     // relative, of every row but those of fLooseRegion
    std::size_t fMinimum;  // rows that the table has at least
    const char* fLooseRegion = "";
    double fLooseTolerance = 0.0;
};

std::map<std::string, Worst> Measure(const Subject& subject) {
    std::map<std::string, Worst> regions;
    for (const Reference& row : References()) {
        if (row.fFunction != subject.fName) continue;
        Worst& worst = regions[row.fRegion];
        ++worst.fCount;
        double error = std::abs(subject.fpEvaluate(row) / row.fValue - 1.0);
        if (std::isnan(error)) error = HUGE_VAL;
        if (error > worst.fError) {
            worst.fError = error;
            worst.fWhere = row;
        }
    }
    return regions;
}

void Print(const Subject& subject, const std::map<std::string, Worst>& regions) {
    for (const auto& [region, worst] : regions) {
        std::printf("| %s | %s | %d | %.1e | %g, %g, %g |\n", subject.fName, region.c_str(),
                    worst.fCount, worst.fError, worst.fWhere.fX, worst.fWhere.fFirst,
                    worst.fWhere.fSecond);
    }
}

class FSDistributionAccuracy : public testing::TestWithParam<Subject> {};

TEST_P(FSDistributionAccuracy, AgreesWithBallArithmetic) {
    const Subject& subject = GetParam();
    const auto regions = Measure(subject);
    if (std::getenv("PREDSEL_PRINT_ACCURACY") != nullptr) Print(subject, regions);
    std::size_t rows = 0;
    for (const auto& [region, worst] : regions) {
        rows += static_cast<std::size_t>(worst.fCount);
        const bool loose = region == subject.fLooseRegion;
        EXPECT_LE(worst.fError, loose ? subject.fLooseTolerance : subject.fTolerance)
            << region << ": x = " << worst.fWhere.fX << ", parameters " << worst.fWhere.fFirst
            << ", " << worst.fWhere.fSecond << ", expected " << worst.fWhere.fValue;
    }
    EXPECT_GE(rows, subject.fMinimum);
}

int gError = 0;

// 1e-12 is what p-values are held to: the exponent of a far tail is near 700, and half a unit in
// its last place, several times over, is a few 1e-13. The logarithms of tails reach 2e-13 next to
// p = 1, where they are the lower tail. Wider ones:
// - a and b below 1: the result is the complement of a series that ends with terms of 1e-15.
// - quantiles: AS 91 stops at steps of 5e-7 of the value, below 5e-7 with its first value. AS 109
//   stops at steps of 1e-10 whatever the size of x, and F and t quantiles divide by x or 1 - x.
const Subject kSubjects[] = {
    {"ChiSquareCdf", [](const Reference& r) { return ChiSquareCdf(r.fX, r.fFirst); }, 1e-12, 1000},
    {"UpperGamma",
     [](const Reference& r) { return IncompleteGamma(r.fX, r.fFirst, false, gError); }, 1e-12,
     1000},
    {"FCdf", [](const Reference& r) { return FCdf(r.fX, r.fFirst, r.fSecond); }, 1e-12, 3000},
    {"TCdf", [](const Reference& r) { return TCdf(r.fX, r.fFirst); }, 1e-12, 500},
    {"ChiSquareTail", [](const Reference& r) { return ChiSquareTail(r.fX, r.fFirst).fP; }, 1e-12,
     300},
    {"log ChiSquareTail", [](const Reference& r) { return ChiSquareTail(r.fX, r.fFirst).fLogP; },
     1e-12, 400},
    {"FTail", [](const Reference& r) { return FTail(r.fX, r.fFirst, r.fSecond).fP; }, 1e-12, 1000},
    {"log FTail", [](const Reference& r) { return FTail(r.fX, r.fFirst, r.fSecond).fLogP; }, 1e-12,
     1500},
    {"TTail", [](const Reference& r) { return TTail(r.fX, r.fFirst).fP; }, 1e-12, 200},
    {"log TTail", [](const Reference& r) { return TTail(r.fX, r.fFirst).fLogP; }, 1e-12, 300},
    {"IncompleteBeta",
     [](const Reference& r) { return IncompleteBeta(r.fX, r.fFirst, r.fSecond, gError); }, 1e-12,
     1000, "a and b below 1", 5e-11},
    {"NormalCdf", [](const Reference& r) { return NormalCdf(r.fX); }, 1e-12, 30},
    {"Erf", [](const Reference& r) { return Erf(r.fX); }, 1e-15, 100},
    {"Erfc", [](const Reference& r) { return Erfc(r.fX); }, 1e-12, 200},
    {"LogGamma", [](const Reference& r) { return LogGamma(r.fX); }, 1e-15, 300},
    {"NormalQuantile", [](const Reference& r) { return NormalQuantile(r.fX); }, 1e-15, 15},
    {"ChiSquareQuantile", [](const Reference& r) { return ChiSquareQuantile(r.fX, r.fFirst); },
     1e-11, 100, "quantile below 1e-3", 5e-7},
    {"BetaQuantile", [](const Reference& r) { return BetaQuantile(r.fX, r.fFirst, r.fSecond); },
     1e-11, 300, "beta quantile near an end", 1e-9},
    {"FQuantile", [](const Reference& r) { return FQuantile(r.fX, r.fFirst, r.fSecond); }, 1e-11,
     150, "beta quantile near an end", 1e-7},
    {"TQuantile", [](const Reference& r) { return TQuantile(r.fX, r.fFirst); }, 1e-11, 90,
     "beta quantile near an end", 1e-10},
};

INSTANTIATE_TEST_SUITE_P(Functions, FSDistributionAccuracy, testing::ValuesIn(kSubjects),
                         [](const auto& subject) {
                             std::string name = subject.param.fName;
                             std::replace(name.begin(), name.end(), ' ', '_');
                             return name;
                         });

}  // namespace

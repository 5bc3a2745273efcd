// Statistics of data sets against exact arithmetic on the same doubles: sets with certified values,
// and sets of numbers that are hard to add. With the environment variable PREDSEL_PRINT_ACCURACY
// set, prints the certified sets' digits as in docs/accuracy.md.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "featureselect/FSAlgorithm.h"
#include "featureselect/FSSettings.h"
#include "featureselect/tests/TableRecords.h"
#include "tests/support/RandomSeed.h"

namespace {

using Column = std::vector<double>;

/// A statistic of one predictor: its value is fNearest + fRest, to more than 30 digits.
struct Exact {
    std::string fPredictor;  // a column, or empty where there is one variable beside groups
    std::string fStatistic;
    double fNearest = 0.0;
    double fRest = 0.0;
    std::string fCertified;  // empty, or 17 digits
    std::string fAllowed;    // digits in which fNearest + fRest and fCertified agree

    /// In steps of the doubles around it.
    double UnitsAway(double found) const {
        const double size = std::fabs(fNearest);
        const double unit = std::nextafter(size, HUGE_VAL) - size;
        return std::fabs((found - fNearest) - fRest) / unit;
    }
    double DigitsOf(double found) const {
        return -std::log10(std::fabs((found - fNearest) - fRest) / std::fabs(fNearest));
    }
};

struct DataSet {
    const char* fFolder;
    std::string fName;
    std::vector<Exact> fvExact;
    std::vector<std::string> fvNames;  // of the columns
    std::vector<Column> fvColumns;     // distinct rows
    Column fvTimes;                    // how many there are of each

    /// What the columns are, by the name of the first.
    bool IsOneVariable() const { return fvNames.size() == 1; }
    bool IsGrouped() const { return fvNames[0] == "group"; }
};

void PrintTo(const DataSet& set, std::ostream* out) { *out << set.fName; }

std::vector<std::string> Cells(const std::string& line) {
    std::vector<std::string> cells;
    for (std::size_t start = 0; start <= line.size();) {
        const std::size_t end = std::min(line.find(',', start), line.size());
        cells.push_back(line.substr(start, end - start));
        start = end + 1;
    }
    return cells;
}

void ReadRows(DataSet& set) {
    std::ifstream file(FEATURESELECT_TEST_DATA "/" + std::string(set.fFolder) + "/" + set.fName +
                       ".csv");
    std::string line;
    while (std::getline(file, line)) {
        if (line.starts_with('#')) continue;
        std::vector<std::string> cells = Cells(line);
        if (set.fvNames.empty()) {
            cells.pop_back();  // times
            set.fvNames = cells;
            set.fvColumns.resize(cells.size());
            continue;
        }
        // std::stod and not std::from_chars, which takes no plus sign and no lone point.
        for (std::size_t at = 0; at < set.fvColumns.size(); ++at) {
            set.fvColumns[at].push_back(std::stod(cells.at(at)));
        }
        set.fvTimes.push_back(std::stod(cells.back()));
    }
}

std::vector<DataSet> ReadSets(const char* folder) {
    std::ifstream file(FEATURESELECT_TEST_DATA "/" + std::string(folder) + ".csv");
    std::vector<DataSet> sets;
    std::string line;
    std::getline(file, line);  // column names
    while (std::getline(file, line)) {
        const std::vector<std::string> cells = Cells(line);
        if (sets.empty() || sets.back().fName != cells.at(0)) {
            sets.push_back({folder, cells.at(0), {}, {}, {}, {}});
            ReadRows(sets.back());
        }
        sets.back().fvExact.push_back({cells.at(1), cells.at(2), std::stod(cells.at(3)),
                                       std::stod(cells.at(5)), cells.at(6), cells.at(7)});
        sets.back().fvExact.back().fNearest = std::strtod(cells[4].c_str(), nullptr);
    }
    return sets;
}

/// How a set is given to the engine.
struct Way {
    const char* fName;
    bool fbInBlocks;
    bool fbWeighted;  // a row that recurs is one record of that weight
    bool fbShuffled;
    std::int32_t fThreads;
};

constexpr Way kWays[] = {
    {"records", false, false, false, 0},
    {"weighted records", false, true, false, 0},
    {"shuffled records", false, false, true, 0},
    {"a block", true, false, false, 0},
    {"a weighted block", true, true, false, 0},
    {"a shuffled block on two threads", true, false, true, 2},
};

using Found = std::map<std::pair<std::string, std::string>, double>;

/// The statistics that the engine gives of a set read in one way.
class Reading {
 public:
    Reading(const DataSet& set, const Way& way, std::mt19937_64& random) : fSet(set), fWay(way) {
        for (std::size_t row = 0; row < set.fvTimes.size(); ++row) {
            const auto times = way.fbWeighted ? 1 : static_cast<std::size_t>(set.fvTimes[row]);
            fvRows.insert(fvRows.end(), times, row);
        }
        if (way.fbShuffled) std::shuffle(fvRows.begin(), fvRows.end(), random);
    }

    /// Mean and variance of the first column.
    Found OneVariable() const {
        FSSettings settings(1, false, false);
        settings.SetTargetPosition(-1);
        if (fWay.fbWeighted) settings.SetWeightPosition(1);
        FSAlgorithm engine(settings);
        testsupport::TableColumns columns{ColumnOf(fSet.fvColumns[0])};
        if (fWay.fbWeighted) columns.push_back(ColumnOf(fSet.fvTimes));
        std::vector<std::int32_t> indices;
        std::vector<std::vector<std::int32_t>> reasons;
        EXPECT_TRUE(engine.ScreenOnly(*Records(columns), indices, reasons, -1).IsOk());
        std::ostringstream text;
        text.precision(17);
        engine.Display(text);
        return {{{"", "mean"}, Shown(text.str(), "\nMean = ")},
                {{"", "variance"}, Shown(text.str(), "\nVariance = ")}};
    }

    /// F of one column against the groups of the other: predictor first, then target.
    Found Groups(std::size_t predictor, std::size_t target) const {
        FSSettings settings(1, predictor == 0, target == 0);
        Found found;
        const auto engine = Run(settings, {predictor}, target);
        double p = 0.0;
        EXPECT_TRUE(engine->GetPredictorCriterion(4, 0, p, found[{"", "F"}], found[{"", "df1"}],
                                                  found[{"", "df2"}]));
        return found;
    }

    /// r and t of every column against the first.
    Found Pairs() const {
        const auto count = static_cast<std::int32_t>(fSet.fvColumns.size() - 1);
        FSSettings settings(count, false, false);
        std::vector<std::size_t> predictors(fSet.fvColumns.size() - 1);
        std::iota(predictors.begin(), predictors.end(), 1);
        const auto engine = Run(settings, predictors, 0);
        Found found;
        for (std::int32_t at = 0; at < count; ++at) {
            const std::string& name = fSet.fvNames[predictors[static_cast<std::size_t>(at)]];
            double p = 0.0;
            EXPECT_TRUE(engine->GetPredictorCriterion(5, at, p, found[{name, "r"}],
                                                      found[{name, "t"}], found[{name, "df"}]));
        }
        return found;
    }

 private:
    testsupport::TableColumn ColumnOf(const Column& values) const {
        Column column;
        for (const std::size_t row : fvRows) column.push_back(values[row]);
        return {column, 1};
    }

    std::unique_ptr<MCCommon::RecordIterator> Records(
        const testsupport::TableColumns& columns) const {
        if (!fWay.fbInBlocks) {
            return std::make_unique<testsupport::OneByOne>(columns, fvRows.size());
        }
        return std::make_unique<testsupport::InBlocks>(columns, fvRows.size(), 70000,
                                                       fWay.fThreads);
    }

    std::unique_ptr<FSAlgorithm> Run(FSSettings& settings,
                                     const std::vector<std::size_t>& predictors,
                                     std::size_t target) const {
        testsupport::TableColumns columns{ColumnOf(fSet.fvColumns[target])};
        if (fWay.fbWeighted) {
            settings.SetWeightPosition(1);
            columns.push_back(ColumnOf(fSet.fvTimes));
        }
        for (const std::size_t at : predictors) columns.push_back(ColumnOf(fSet.fvColumns[at]));
        auto engine = std::make_unique<FSAlgorithm>(settings);
        EXPECT_TRUE(engine->RunAll(*Records(columns), -1, false, 0).IsOk());
        return engine;
    }

    static double Shown(const std::string& text, const std::string& label) {
        const std::size_t at = text.find(label);
        if (at == std::string::npos) {
            ADD_FAILURE() << "no line" << label;
            return NAN;
        }
        return std::strtod(text.c_str() + at + label.size(), nullptr);
    }

    const DataSet& fSet;
    const Way& fWay;
    std::vector<std::size_t> fvRows;
};

/// In each way of reading, with the way's name.
std::vector<std::pair<std::string, Found>> FoundInAllWays(const DataSet& set) {
    std::mt19937_64 random(testsupport::RandomSeed());
    std::vector<std::pair<std::string, Found>> all;
    for (const Way& way : kWays) {
        const Reading reading(set, way, random);
        if (set.IsOneVariable()) {
            all.emplace_back(way.fName, reading.OneVariable());
        } else if (set.IsGrouped()) {
            all.emplace_back(std::string(way.fName) + ", factor", reading.Groups(0, 1));
            all.emplace_back(std::string(way.fName) + ", classes", reading.Groups(1, 0));
        } else {
            all.emplace_back(way.fName, reading.Pairs());
        }
    }
    return all;
}

class FSExactSets : public testing::TestWithParam<DataSet> {};

TEST_P(FSExactSets, StatisticsAreWithinTwoUnitsOfTheLastPlace) {
    int compared = 0;
    for (const auto& [way, found] : FoundInAllWays(GetParam())) {
        for (const Exact& exact : GetParam().fvExact) {
            const auto at = found.find({exact.fPredictor, exact.fStatistic});
            if (at == found.end()) continue;  // not shown by the engine
            EXPECT_LE(exact.UnitsAway(at->second), 2.0)
                << exact.fStatistic << ' ' << exact.fPredictor << " by " << way << ": "
                << at->second << " for " << exact.fNearest;
            ++compared;
        }
    }
    EXPECT_GT(compared, 0);
}

constexpr auto kSetName = [](const auto& test) {
    std::string name = test.param.fName;
    std::replace(name.begin(), name.end(), '-', 'm');
    return name;
};

INSTANTIATE_TEST_SUITE_P(Certified, FSExactSets, testing::ValuesIn(ReadSets("certified")),
                         kSetName);
INSTANTIATE_TEST_SUITE_P(HardToAdd, FSExactSets, testing::ValuesIn(ReadSets("magnitudes")),
                         kSetName);

// --- The table of docs/accuracy.md ---

/// The worst over the ways of reading and over the predictors of a set.
struct Worst {
    double fDigits = HUGE_VAL;
    double fCertified = HUGE_VAL;
    bool fbNearest = true;  // always the nearest double
    int fPredictors = 0;
    std::string fAllowed;
};

std::string DigitsText(double digits) {
    if (digits >= 17.0) return "all";
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", digits);
    return text;
}

void PrintRow(const DataSet& set, const std::string& statistic, const Worst& worst) {
    std::string what = statistic;
    if (worst.fPredictors > 1) what += " of " + std::to_string(worst.fPredictors) + " columns";
    const bool isCertified = !worst.fAllowed.empty();
    std::printf("| %s | %s | %s | %s | %s |\n", set.fName.c_str(), what.c_str(),
                worst.fbNearest ? "nearest" : DigitsText(worst.fDigits).c_str(),
                isCertified ? DigitsText(worst.fCertified).c_str() : "",
                isCertified ? DigitsText(std::stod(worst.fAllowed)).c_str() : "");
}

std::map<std::string, Worst> WorstByStatistic(const DataSet& set) {
    std::map<std::string, Worst> all;
    const auto ways = FoundInAllWays(set);
    for (const Exact& exact : set.fvExact) {
        if (exact.fStatistic.starts_with("df") ||
            !ways[0].second.contains({exact.fPredictor, exact.fStatistic})) {
            continue;
        }
        Worst& worst = all[exact.fStatistic];
        ++worst.fPredictors;
        worst.fAllowed = exact.fAllowed;
        for (const auto& [way, found] : ways) {
            const double value = found.at({exact.fPredictor, exact.fStatistic});
            worst.fbNearest = worst.fbNearest && value == exact.fNearest;
            worst.fDigits = std::min(worst.fDigits, exact.DigitsOf(value));
            if (exact.fCertified.empty()) continue;
            const double certified = std::stod(exact.fCertified);
            const double error = std::fabs(value - certified) / certified;
            worst.fCertified = std::min(worst.fCertified, -std::log10(error));
        }
    }
    return all;
}

TEST(FSCertifiedSets, HaveFourteenDigits) {
    const bool prints = std::getenv("PREDSEL_PRINT_ACCURACY") != nullptr;
    if (prints) {
        std::printf("| Set | Statistic | Digits, exact | Digits, certified | Digits, allowed |\n");
        std::printf("|---|---|---|---|---|\n");
    }
    for (const DataSet& set : ReadSets("certified")) {
        for (const auto& [statistic, worst] : WorstByStatistic(set)) {
            EXPECT_GE(worst.fDigits, 14.0) << set.fName << ' ' << statistic;
            if (!worst.fAllowed.empty()) {
                // As far as the rounding of the data allows, but for a tenth of a digit.
                const double allowed = std::min(std::stod(worst.fAllowed), 14.0);
                EXPECT_GE(worst.fCertified, allowed - 0.1) << set.fName << ' ' << statistic;
            }
            if (prints) PrintRow(set, statistic, worst);
        }
    }
}

}  // namespace

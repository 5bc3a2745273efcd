#include "host/EngineState.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "embedded/CommandRunner.h"
#include "embedded/cases/LayoutRecords.h"
#include "embedded/data/DataSetBuilder.h"
#include "host/CaseDelivery.h"
#include "host/Random.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using embedded::RecordLayout;

struct Specs final : UAVarValidSpecs {
    using UAVarValidSpecs::UAVarValidSpecs;
};
struct Adapter final : UAInputAdapter {
    using UAInputAdapter::UAInputAdapter;
};
struct Iterator final : UAProcDataSourceIter {
    using UAProcDataSourceIter::UAProcDataSourceIter;
};

class Engine final : public SavableEngine {
 public:
    std::string GetCommandName() const override { return "NAIVEBAYES"; }
    bool SaveBinary(std::ostream& stream) const override { return !!(stream << "state"); }
    bool SaveXML(std::ostream& stream) const override { return !!(stream << "<state/>"); }
};

bool gWanted = false;
std::vector<std::vector<double>> gRecords;

// Reads all cases, numbers the categories from the last and offers an engine.
void RunAndOffer() {
    gWanted = WantsEngineState();
    ProcedureDataSource source;
    Specs specs(true, true, true);
    specs.AddVariable(0, true);
    specs.SetWeightVar(2);
    specs.AddVariable(1, false);
    Adapter adapter(&specs, source);
    Iterator iterator(adapter, true);
    while (iterator.Next() != nullptr) continue;
    adapter.ReorderCategories(0, false);
    iterator.NewPass();
    gRecords.clear();
    while (const MCCommon::Record* record = iterator.Next()) {
        gRecords.push_back({(*record)[0], (*record)[1], (*record)[2]});
    }
    OfferEngineState(Engine());
}

DataSet Data() {
    return DataSetBuilder()
        .Strings("y", {"b", "a", "?", "never"})
        .Missing({false, 0, 0, {KoltObs(std::string("?"))}})
        .Numbers("x", {1.5, 2, 3, 4})
        .Numbers("w", {1, 2, 1, 0})
        .Weight()
        .Build();
}

std::vector<embedded::CommandTokens> Command() {
    return embedded::ParseCommandText("NAIVEBAYES y;", "test").fvCommands;
}

TEST(EngineState, NobodyWantsItUnlessTheRunHasATaker) {
    DataSet data = Data();
    embedded::RunCommands(data, Command(), &RunAndOffer);
    EXPECT_FALSE(gWanted);
}

TEST(EngineState, TheTakerGetsTheEngineAndHowItsRecordsWereMade) {
    DataSet data = Data();
    std::string name;
    RecordLayout layout;
    embedded::RunOptions options;
    options.fTakeEngine = [&](const SavableEngine& engine, const RecordLayout& given) {
        name = engine.GetCommandName();
        layout = given;
    };
    embedded::RunCommands(data, Command(), &RunAndOffer, options);
    EXPECT_TRUE(gWanted);
    EXPECT_EQ(name, "NAIVEBAYES");
    ASSERT_EQ(layout.fvColumns.size(), 3U);
    EXPECT_EQ(layout.fWeightColumn, 1);
    EXPECT_TRUE(layout.fbUserMissExclude);
    EXPECT_EQ(layout.fvColumns[0].fName, "y");
    EXPECT_TRUE(layout.fvColumns[0].fbCategorical);
    EXPECT_EQ(layout.fvColumns[0].fType, 5);
    EXPECT_EQ(layout.fvColumns[0].fvValues,
              (std::vector<KoltObs>{std::string("b"), std::string("a")}));
    EXPECT_EQ(layout.fvColumns[1].fName, "w");
    EXPECT_FALSE(layout.fvColumns[2].fbCategorical);
}

TEST(EngineState, TheLayoutMakesTheSameRecordsOfTheSameData) {
    DataSet data = Data();
    std::optional<RecordLayout> layout;
    embedded::RunOptions options;
    options.fTakeEngine = [&](const SavableEngine&, const RecordLayout& given) { layout = given; };
    embedded::RunCommands(data, Command(), &RunAndOffer, options);
    ASSERT_TRUE(layout);
    embedded::LayoutRecords records(data, *layout);
    std::vector<std::vector<double>> again;
    while (const MCCommon::Record* record = records.Next()) {
        again.push_back({(*record)[0], (*record)[1], (*record)[2]});
    }
    EXPECT_EQ(again, gRecords);
    EXPECT_EQ(again.size(), 3U);
}

std::vector<double> gNumbers;
void DrawThree() {
    UAUniformRandom random;
    for (int i = 0; i < 3; ++i) gNumbers.push_back(random.GetRandom());
}

TEST(UniformRandom, EveryCommandBeginsWithTheSeedOfTheRun) {
    DataSet data = Data();
    gNumbers.clear();
    embedded::RunCommands(
        data, embedded::ParseCommandText("NAIVEBAYES y; NAIVEBAYES y;", "test").fvCommands,
        &DrawThree, {.fSeed = 7});
    ASSERT_EQ(gNumbers.size(), 6U);
    const std::vector<double> first(gNumbers.begin(), gNumbers.begin() + 3);
    EXPECT_EQ(std::vector<double>(gNumbers.begin() + 3, gNumbers.end()), first);
    gNumbers.clear();
    embedded::RunCommands(data, Command(), &DrawThree);
    EXPECT_NE(gNumbers, first) << "another seed";
}

// The authors' mt19937ar gives 1791095845 as its first 32 bits after init_genrand(1).
TEST(UniformRandom, TheFirstNumberIsThatOfTheGenerator) {
    DataSet data = Data();
    gNumbers.clear();
    embedded::RunCommands(data, Command(), &DrawThree, {.fSeed = 1});
    EXPECT_EQ(gNumbers.front(), (1791095845.0 + 0.5) / 4294967296.0);
}

}  // namespace

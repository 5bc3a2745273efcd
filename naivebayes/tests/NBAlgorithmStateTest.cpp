#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>

#include "naivebayes/data/INBVariable.h"
#include "naivebayes/tests/EngineFixture.h"
#include "naivebayes/tests/SavedModels.h"
#include "tests/support/CaseName.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/RestoreAbuse.h"
// After all other includes.
#include "tests/support/AllocationCounter.inc"

using namespace enginetest;

namespace {

std::string FileBytes(const std::string& name) {
    std::ifstream file(std::string(NAIVEBAYES_TEST_DATA) + "/" + name, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << name;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::int32_t IntAt(const std::string& bytes, std::size_t at) {
    std::int32_t value = 0;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

double DoubleAt(const std::string& bytes, std::size_t at) {
    double value = 0.0;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

void PutInt(std::string& bytes, std::size_t at, std::int32_t value) {
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

NBStatus RestoreStatus(const std::string& bytes) {
    std::istringstream stream(bytes);
    NBStatus status;
    const testsupport::SilentStream errors(std::cerr);
    const auto engine = RestoreNBAlgorithm(status, stream);
    EXPECT_EQ(engine == nullptr, status.IsError());
    return status;
}

/// Target of two categories and predictors of two and three.
std::string PlainState() {
    return SavedBinary(*Built(CategoricalList(2, {2, 3}),
                              {{0, 0, 0}, {0, 1, 1}, {1, 1, 2}, {1, 0, 1}, {1, 1, 0}}));
}

// The layout of PlainState: the head of 44 bytes, the target's table of 17 + 2 * 20, then the
// predictors' of 28 + 2 * (4 + 2 * 16) and 28 + 3 * (4 + 2 * 16).
constexpr std::size_t kTargetTable = 44;
constexpr std::size_t kFirstTable = kTargetTable + 17 + 40;
constexpr std::size_t kSecondTable = kFirstTable + 100;
constexpr std::size_t kSettings = kSecondTable + 136;
constexpr std::size_t kList = kSettings + 23;

/// A change of one 32-bit number of PlainState.
struct Contradiction {
    const char* fName;
    std::size_t fAt;
    std::int32_t fGood;
    std::int32_t fBad;
};

class NBAlgorithmContradiction : public testing::TestWithParam<Contradiction> {};

/// The role of a variable of PlainState: behind tag, name and empty label of its block.
std::size_t RoleOf(const std::string& bytes, const std::string& name) {
    std::string block("CAVR");
    block.append(1, static_cast<char>(name.size())).append(3, '\0').append(name).append(4, '\0');
    const std::size_t at = bytes.find(block);
    EXPECT_NE(at, std::string::npos);
    return at + block.size();
}

}  // namespace

TEST(NBAlgorithmState, TheBinaryFormIsThatOfTheGoldenFile) {
    EXPECT_EQ(savedmodels::SmallModelBinary(), FileBytes("model.bin"));
}

TEST(NBAlgorithmState, TheXMLFormIsThatOfTheGoldenFile) {
    EXPECT_EQ(savedmodels::SmallModelXML(), FileBytes("model.xml"));
}

TEST(NBAlgorithmState, TheGoldenFilesAreReadAndWrittenBackByteForByte) {
    const std::string binary = FileBytes("model.bin");
    const std::string xml = FileBytes("model.xml");
    const auto fromBinary = RestoredBinary(binary);
    const auto fromXML = RestoredXML(xml);
    EXPECT_EQ(SavedBinary(*fromBinary), binary);
    EXPECT_EQ(SavedXML(*fromXML), xml);
}

TEST(NBAlgorithmState, TheHeadStandsAtItsOffsets) {
    Rows rows{{0, 0, 0}, {0, 1, 1}, {1, 1, 2}, {1, 0, 1}, {-1, 1, 0}};
    const std::string bytes = SavedBinary(*Built(CategoricalList(2, {2, 3}), rows));
    EXPECT_EQ(bytes.substr(0, 16), "NBAlgorithm 1.00");
    EXPECT_EQ(IntAt(bytes, 16), 2) << "predictors";
    EXPECT_EQ(IntAt(bytes, 20), 4) << "records";
    EXPECT_EQ(DoubleAt(bytes, 24), 4.0) << "weight";
    EXPECT_EQ(IntAt(bytes, 32), 1) << "excluded records";
    EXPECT_EQ(DoubleAt(bytes, 36), 1.0) << "excluded weight";
    EXPECT_EQ(bytes.substr(kTargetTable, 5), "NBOUT");
    EXPECT_EQ(bytes.substr(kFirstTable, 4), "NBIN");
    EXPECT_EQ(bytes.substr(kSecondTable, 4), "NBIN");
    EXPECT_EQ(bytes.substr(kSettings, 3), "NBS");
    EXPECT_EQ(bytes.substr(kList, 4), "NBVL");
}

TEST(NBAlgorithmState, TheXMLFormNamesRootAndObjects) {
    const std::string text = savedmodels::SmallModelXML();
    EXPECT_NE(text.find("<!DOCTYPE MCXMLRoot SYSTEM \"savexml.dtd\">"), std::string::npos);
    EXPECT_NE(text.find("Copyright (c) 2026 The predselect authors"), std::string::npos);
    EXPECT_NE(text.find("<Obj name=\"NBAlgorithm 1.00\">"), std::string::npos);
}

TEST(NBAlgorithmState, ARestoredModelScoresUpdatesAndWritesAsTheFirst) {
    const auto original = savedmodels::SmallModel();
    const auto restored = RestoredBinary(SavedBinary(*original));
    EXPECT_TRUE(restored->IsModelBuilt());
    EXPECT_EQ(restored->GetStatus(), NBStatus());
    EXPECT_EQ(restored->GetNumInputVars(), 3);
    EXPECT_EQ(RecordCounts(*restored), RecordCounts(*original));
    for (const double x : {0.5, 1.2, 2.1, 2.9, 3.9, 98.0, kMissing}) {
        for (const double a : {0.0, 1.0, 2.0, -1.0}) {
            const MCCommon::Record record(std::vector<double>{a, 0, x, 0, 1, 0});
            NBOutput fromOriginal;
            NBOutput fromRestored;
            EXPECT_EQ(original->ScoreRecord(record, fromOriginal),
                      restored->ScoreRecord(record, fromRestored));
            EXPECT_EQ(fromOriginal.GetValues(), fromRestored.GetValues());
            EXPECT_EQ(fromOriginal.GetWinner(), fromRestored.GetWinner());
        }
    }
    const Rows more{{1, 1, 2.5, 0, 0, 0}, {2, 0, 0.5, 0, 1, 1}};
    Source first(more);
    Source second(more);
    // The first still holds the warning that a predictor left; updating replaces it.
    EXPECT_EQ(original->UpdateModel(first, -1), NBStatus());
    EXPECT_EQ(restored->UpdateModel(second, -1), NBStatus());
    EXPECT_EQ(SavedBinary(*original), SavedBinary(*restored));
}

TEST(NBAlgorithmState, ARestoredModelMaySearchItsCandidates) {
    const auto restored = RestoredBinary(savedmodels::SmallModelBinary());
    Selection selection;
    EXPECT_EQ(selection.Run(*restored, {{0, 0, 0.5, 1, 0, 0},
                                        {0, 0, 1.5, 1, 1, 1},
                                        {2, 1, 3.5, 1, 1, 0},
                                        {1, 1, 2.5, 1, 1, 1}}),
              NBStatus());
    EXPECT_EQ(selection.fvSelected.size(), 4U);
}

TEST(NBAlgorithmState, ARestoredModelSearchesWithWhateverSettingsItHolds) {
    NBVarList list = CategoricalList(2, {2});
    AddCategorical(list, "c", 3, kCandidate);
    const Rows rows{{0, 0, 0}, {0, 1, 1}, {1, 1, 2}, {1, 0, 1}, {1, 1, 0}};
    const std::string good = SavedBinary(*Built(list, rows));
    const std::size_t settings = good.find("NBS") + 3;
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    for (const std::int32_t kind : {0, 1, 2, 3, 4, -1, kLowest}) {
        for (const std::int32_t number : {10, 0, -1, kLowest}) {
            std::string bytes = good;
            PutInt(bytes, settings, kLowest);                        // reports to skip
            PutInt(bytes, settings + 8, number == 10 ? 0 : number);  // records in memory: none
            PutInt(bytes, settings + 12, number);                    // simulated ones
            PutInt(bytes, settings + 16, kind);
            const auto engine = RestoredBinary(bytes);
            Selection selection;
            EXPECT_EQ(selection.Run(*engine, rows), NBStatus()) << kind << ' ' << number;
            EXPECT_EQ(selection.fvSelected, (std::vector<std::int32_t>{1, 2}));
        }
    }
}

TEST(NBAlgorithmState, ALaterPredictorTakesThePlaceOfOneThatLeft) {
    // Table indices of a state name the places after predictors have left.
    const std::string bytes = savedmodels::SmallModelBinary();
    std::vector<std::int32_t> places;
    for (std::size_t at = bytes.find("NBIN"); at != std::string::npos;
         at = bytes.find("NBIN", at + 4)) {
        places.push_back(IntAt(bytes, at + 8));
    }
    EXPECT_EQ(places, (std::vector<std::int32_t>{1, 2, 3}));
    EXPECT_EQ(IntAt(bytes, 16), 3) << "the number of tables is that of the predictors left";
}

TEST(NBAlgorithmState, AModelWithAWeightCanBeSavedButNotRestored) {
    NBVarList list = CategoricalList(2, {2});
    list.AddWeightVar("w", "", 1);
    const auto engine = Built(list, {{0, 0, 2}, {1, 1, 1}});
    EXPECT_EQ(RestoreStatus(SavedBinary(*engine)), Error(NBCode::kBinaryRestore));
    std::istringstream xml(SavedXML(*engine));
    NBStatus status;
    const testsupport::SilentStream errors(std::cerr);
    EXPECT_EQ(RestoreNBAlgorithmXML(status, xml), nullptr);
    EXPECT_EQ(status, Error(NBCode::kXMLRestore));
}

TEST(NBAlgorithmState, TheLastLetterOfTheTargetsTagIsNotCompared) {
    std::string bytes = PlainState();
    bytes[kTargetTable + 4] = '?';
    EXPECT_EQ(RestoreStatus(bytes), NBStatus());
    bytes[kTargetTable + 3] = '?';
    EXPECT_EQ(RestoreStatus(bytes), Error(NBCode::kBinaryRestore));
}

TEST(NBAlgorithmState, BytesBehindTheStateAreLeftInTheStream) {
    std::istringstream stream(PlainState() + "next");
    NBStatus status;
    EXPECT_NE(RestoreNBAlgorithm(status, stream), nullptr);
    std::string rest;
    stream >> rest;
    EXPECT_EQ(rest, "next");
}

TEST(NBAlgorithmState, WithoutAModelThereIsNothingToSave) {
    const auto engine = Create(CategoricalList(2, {2}));
    std::ostringstream stream;
    EXPECT_EQ(engine->SaveBinary(stream), Error(NBCode::kNothingToSave));
    EXPECT_EQ(engine->SaveXML(stream), Error(NBCode::kNothingToSave));
    EXPECT_EQ(engine->WritePMML(stream, nullptr), NBStatus(NBCode::kNotBuilt, true));
    EXPECT_TRUE(stream.str().empty());
}

TEST(NBAlgorithmState, AnInterruptedEngineSavesNothing) {
    const auto engine = savedmodels::SmallModel();
    engine->Interrupt();
    std::ostringstream stream;
    EXPECT_EQ(engine->SaveBinary(stream), Error(NBCode::kInterrupted));
    EXPECT_EQ(engine->SaveXML(stream), Error(NBCode::kInterrupted));
    EXPECT_EQ(engine->WritePMML(stream, nullptr), Error(NBCode::kInterrupted));
    EXPECT_TRUE(stream.str().empty());
}

TEST(NBAlgorithmState, AFailedStreamIsNoPlaceToSave) {
    const auto engine = savedmodels::SmallModel();
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_EQ(engine->SaveBinary(stream), Error(NBCode::kStreamFailed));
    EXPECT_EQ(engine->SaveXML(stream), Error(NBCode::kStreamFailed));
    std::ofstream full("/dev/full");
    full << std::unitbuf;
    EXPECT_EQ(engine->SaveBinary(full), Error(NBCode::kStreamFailed));
}

TEST(NBAlgorithmState, AStreamThatThrowsIsAFailedRestore) {
    const testsupport::SilentStream errors(std::cerr);
    for (const std::size_t size : {std::size_t{3}, std::size_t{30}, kSettings}) {
        NBStatus status;
        std::istringstream binary(PlainState().substr(0, size));
        binary.exceptions(std::ios::eofbit | std::ios::failbit);
        EXPECT_EQ(RestoreNBAlgorithm(status, binary), nullptr);
        EXPECT_EQ(status, Error(NBCode::kBinaryRestore)) << size;
        std::istringstream xml(savedmodels::SmallModelXML().substr(0, size));
        xml.exceptions(std::ios::eofbit | std::ios::failbit);
        EXPECT_EQ(RestoreNBAlgorithmXML(status, xml), nullptr);
        EXPECT_EQ(status, Error(NBCode::kXMLRestore)) << size;
    }
}

TEST(NBAlgorithmState, AStreamThatIsReadToItsEndHasNotFailedButHoldsNoState) {
    const testsupport::SilentStream errors(std::cerr);
    std::istringstream stream;
    ASSERT_EQ(stream.peek(), std::istringstream::traits_type::eof());
    ASSERT_FALSE(stream.fail());
    NBStatus status;
    EXPECT_EQ(RestoreNBAlgorithm(status, stream), nullptr);
    EXPECT_EQ(status, Error(NBCode::kBinaryRestore));
}

TEST(NBAlgorithmState, APMMLDocumentNamesTheModelsVariables) {
    std::ostringstream stream;
    EXPECT_EQ(savedmodels::SmallModel()->WritePMML(stream, nullptr), NBStatus());
    const std::string text = stream.str();
    EXPECT_NE(text.find("<PMML version=\"4.3\""), std::string::npos);
    EXPECT_NE(text.find("<MiningField name=\"a\"/>"), std::string::npos);
    EXPECT_EQ(text.find("<MiningField name=\"u\""), std::string::npos);
    EXPECT_EQ(text.find("<DataField name=\"c\""), std::string::npos);
    std::ostringstream fromRestored;
    EXPECT_EQ(RestoredBinary(savedmodels::SmallModelBinary())->WritePMML(fromRestored, nullptr),
              NBStatus());
    const auto body = [](const std::string& document) {
        return document.substr(document.find("<DataDictionary"));
    };
    EXPECT_EQ(body(fromRestored.str()), body(text));
}

TEST_P(NBAlgorithmContradiction, IsRefusedWithALine) {
    std::string bytes = PlainState();
    ASSERT_EQ(IntAt(bytes, GetParam().fAt), GetParam().fGood);
    PutInt(bytes, GetParam().fAt, GetParam().fBad);
    std::istringstream stream(bytes);
    NBStatus status;
    testing::internal::CaptureStderr();
    EXPECT_EQ(RestoreNBAlgorithm(status, stream), nullptr);
    EXPECT_EQ(status, Error(NBCode::kBinaryRestore));
    EXPECT_EQ(testing::internal::GetCapturedStderr().find("Error reading N"), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Of, NBAlgorithmContradiction,
    testing::Values(Contradiction{"NoTables", 16, 2, 0}, Contradiction{"NegativeTables", 16, 2, -1},
                    Contradiction{"ATableLess", 16, 2, 1}, Contradiction{"ATableMore", 16, 2, 3},
                    Contradiction{"NegativeRecords", 20, 5, -5},
                    Contradiction{"NegativeExcluded", 32, 0, -1},
                    Contradiction{"AnotherTarget", kTargetTable + 5, 0, 1},
                    Contradiction{"ATargetBeyondTheList", kTargetTable + 5, 0, 3},
                    Contradiction{"ATargetCategoryMore", kTargetTable + 9, 2, 3},
                    Contradiction{"AnotherVariable", kFirstTable + 4, 1, 2},
                    Contradiction{"AVariableBeyondTheList", kSecondTable + 4, 2, 3},
                    Contradiction{"AnotherPlaceInTheRecord", kFirstTable + 8, 1, 2},
                    Contradiction{"APlaceBeforeTheRecord", kFirstTable + 8, 1, -1},
                    Contradiction{"APlaceBehindTheRecord", kSecondTable + 8, 2, 3},
                    Contradiction{"ACategoryMore", kFirstTable + 12, 2, 3},
                    Contradiction{"ATargetCategoryMoreInATable", kFirstTable + 20, 2, 3}),
    testsupport::CaseName());

TEST(NBAlgorithmState, RolesThatDoNotFitTheTablesAreRefused) {
    const std::string good = PlainState();
    for (const auto& [name, role] : {std::pair<std::string, std::int32_t>{"p0", kCandidate},
                                     {"p0", kUnused},
                                     {"p0", kTarget},
                                     {"p0", 4},
                                     {"t", kInput},
                                     {"t", kUnused},
                                     {"t", 4}}) {
        std::string bytes = good;
        PutInt(bytes, RoleOf(bytes, name), role);
        EXPECT_EQ(RestoreStatus(bytes), Error(NBCode::kBinaryRestore)) << name << role;
    }
}

TEST(NBAlgorithmState, EveryTruncationIsRefused) {
    const std::string binary = savedmodels::SmallModelBinary();
    for (std::size_t size = 0; size < binary.size(); ++size) {
        EXPECT_EQ(RestoreStatus(binary.substr(0, size)), Error(NBCode::kBinaryRestore)) << size;
    }
}

// Of all changes of one byte a part that differs from run to run.

TEST(NBAlgorithmState, DamagedBinaryStatesAreRefusedOrUsable) {
    const testsupport::RestoreSubject subject{
        "NBAlgorithm, binary", savedmodels::SmallModelBinary(), savedmodels::UseBinary};
    ASSERT_TRUE(testsupport::MemoryIsChecked());
    const std::uint32_t seed = testsupport::RandomSeed();
    constexpr std::size_t kParts = 64;
    testsupport::RestoreAbuse abuse;
    EXPECT_NO_THROW(abuse.ChangeEveryByte(subject, seed % kParts, kParts));
    EXPECT_NO_THROW(abuse.Fuzz(subject, 1000, seed));
}

TEST(NBAlgorithmState, DamagedXMLStatesAreRefusedOrUsable) {
    const testsupport::RestoreSubject subject{"NBAlgorithm, XML", savedmodels::SmallModelXML(),
                                              savedmodels::UseXML, true};
    const std::uint32_t seed = testsupport::RandomSeed();
    constexpr std::size_t kParts = 256;
    testsupport::RestoreAbuse abuse;
    EXPECT_NO_THROW(abuse.ChangeEveryByte(subject, seed % kParts, kParts));
    EXPECT_NO_THROW(abuse.Fuzz(subject, 1000, seed));
}

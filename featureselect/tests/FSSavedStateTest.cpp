// The saved forms of every class: golden files, published offsets, refusals, damage.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "featureselect/FSFactory.h"
#include "featureselect/IOException.h"
#include "featureselect/tests/SavedStates.h"
#include "host/Xml.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/RecordList.h"
#include "tests/support/RestoreAbuse.h"

#include "tests/support/AllocationCounter.inc"  // after all others

namespace {

using savedstates::State;

std::string Golden(const std::string& fileName) {
    std::ifstream file(std::string(FEATURESELECT_TEST_DATA) + "/" + fileName, std::ios::binary);
    EXPECT_TRUE(file.good()) << fileName;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

const State& StateOf(const std::string& fileName) {
    static const std::vector<State> kStates = savedstates::AllStates();
    for (const State& state : kStates) {
        if (state.FileName() == fileName) return state;
    }
    throw std::logic_error("no state " + fileName);
}

std::vector<std::string> AllFileNames() {
    std::vector<std::string> names;
    for (const State& state : savedstates::AllStates()) names.push_back(state.FileName());
    return names;
}

class FSSavedState : public testing::TestWithParam<std::string> {
 protected:
    const State& fState = StateOf(GetParam());
    const testsupport::RestoreSubject fSubject{
        fState.FileName(), fState.fSaved, [this](const std::string& bytes) { fState.fUse(bytes); },
        fState.fbXML};
    testsupport::RestoreAbuse fAbuse;
};

TEST_P(FSSavedState, TheGoldenFileReadsAndWritesBackByteForByte) {
    const std::string golden = Golden(GetParam());
    EXPECT_EQ(fState.fSaveAgain(golden), golden);
}

TEST_P(FSSavedState, TheSameObjectIsSavedAsTheGoldenFile) {
    if (fState.fClass == "FSPredictorSet" || fState.fClass == "FSAlgorithm") {
        // Their p-values may differ in the last bit where the mathematical library does; all the
        // rest is the same.
        EXPECT_EQ(fState.fSaved.size(), fState.fSaveAgain(fState.fSaved).size());
        if (!fState.fbXML) {
            EXPECT_EQ(fState.fSaved.size(), Golden(GetParam()).size());
        }
        return;
    }
    EXPECT_EQ(fState.fSaved, Golden(GetParam()));
}

TEST_P(FSSavedState, IsSavedAgainAsItWas) { EXPECT_EQ(fState.fUse(fState.fSaved), fState.fSaved); }

TEST_P(FSSavedState, EveryTruncationIsRefused) {
    ASSERT_TRUE(testsupport::MemoryIsChecked());
    fAbuse.Truncate(fSubject);
    const testsupport::SilentStream errors(std::cerr);
    // The line end behind an XML document is no part of it.
    const std::size_t whole = fState.fSaved.size() - (fState.fbXML ? 1 : 0);
    for (std::size_t size = 0; size < whole; ++size) {
        ASSERT_EQ(fState.fSaveAgain(fState.fSaved.substr(0, size)), "") << size << " bytes";
    }
}

TEST_P(FSSavedState, EveryValueOfEveryByteIsRefusedOrUsable) {
    // All of what is short; of the rest a share that differs from run to run. fuzz_restore can do
    // all.
    constexpr std::size_t kBytes = 20;
    const std::size_t parts = fState.fSaved.size() <= 100 ? 1 : fState.fSaved.size() / kBytes;
    const std::size_t part = parts == 1 ? 0 : testsupport::RandomSeed() % parts;
    EXPECT_NO_THROW(fAbuse.ChangeEveryByte(fSubject, part, parts));
}

TEST_P(FSSavedState, RandomDamageIsRefusedOrUsable) {
    EXPECT_NO_THROW(fAbuse.Fuzz(fSubject, 2000, testsupport::RandomSeed()));
}

TEST_P(FSSavedState, AWrongStartIsRefusedWithTheLineOfTheClass) {
    std::string bytes = fState.fSaved;
    if (fState.fbXML) {
        const std::size_t name = bytes.find("name=\"") + 6;
        bytes[name] = 'X';
    } else {
        bytes[0] = 'X';
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(fState.fSaveAgain(bytes), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error reading " + fState.fClass + "!\n");
}

INSTANTIATE_TEST_SUITE_P(Classes, FSSavedState, testing::ValuesIn(AllFileNames()),
                         [](const testing::TestParamInfo<std::string>& one) {
                             std::string name = one.param;
                             name.replace(name.find('.'), 1, "_");
                             return name;
                         });

// --- Published offsets ---

// The golden file of a class from an offset on: an integer, a double or characters.
struct Place {
    const char* fClass;
    std::size_t fOffset;
    std::int32_t fInteger = 0;
    double fDouble = 0;
    const char* fCharacters = nullptr;
    bool fbDouble = false;
};

Place Int(const char* name, std::size_t offset, std::int32_t value) {
    return {name, offset, value};
}
Place Double(const char* name, std::size_t offset, double value) {
    return {name, offset, 0, value, nullptr, true};
}
Place Text(const char* name, std::size_t offset, const char* value) {
    return {name, offset, 0, 0, value};
}

TEST(FSSavedStateOffsets, StandAsPublished) {
    const double missing = MCMV::gMissingValue;
    for (const Place& place : {
             Text("FSMapICnt", 0, "FSMII"),
             Int("FSMapICnt", 5, 2),
             Int("FSMapICnt", 9, -2),
             Double("FSMapICnt", 13, 0.5),
             Int("FSMapICnt", 21, 3),
             Double("FSMapICnt", 25, 2.0),
             Text("FSMapIPCnt", 0, "FSMII"),
             Int("FSMapIPCnt", 9, -2),
             Int("FSMapIPCnt", 13, 1),
             Int("FSMapIPCnt", 17, 0),
             Double("FSMapIPCnt", 21, 0.5),
             Int("FSMapIPCnt", 29, 3),
             Int("FSMapIPCnt", 33, 2),
             Double("FSMapIPCnt", 41, 3.0),
             Text("FSMapIStat", 0, "FSMIS"),
             Int("FSMapIStat", 45, 3),
             Double("FSMapIStat", 49, 2.0),
             Double("FSMapIStat", 57, 1.5),
             Double("FSMapIStat", 65, 0.5),
             Double("FSMapIStat", 73, 0.5),
             Text("FSMapPiCnt", 0, "FSMPI"),
             Int("FSMapPiCnt", 9, 3),
             Int("FSMapPiCnt", 13, -2),
             Double("FSMapPiCnt", 17, 0.5),
             Int("FSMapPiCnt", 29, 1),
             Text("FSPredSort", 0, "FSPRS"),
             Double("FSPredSort", 5, 0.25),
             Double("FSPredSort", 13, 3.0),
             Double("FSPredSort", 21, missing),
             Int("FSPredSort", 29, 7),
             Text("FSCatAccum", 0, "CAPRE"),
             Double("FSCatAccum", 5, 8),
             Double("FSCatAccum", 13, 1),
             Int("FSCatAccum", 21, 0),
             Int("FSCatAccum", 25, 0),
             Text("FSCatAccum", 29, "FSMII"),
             Int("FSCatAccum", 34, 3),
             Double("FSCatAccum", 42, 3),
             Text("FSCatPCatTAccum", 0, "CAPRA"),
             Text("FSCatPCatTAccum", 74, "FSMII"),
             Int("FSCatPCatTAccum", 79, 2),
             Double("FSCatPCatTAccum", 99, 4),
             Text("FSCatPCatTAccum", 107, "FSMPI"),
             Int("FSCatPCatTAccum", 112, 5),
             Text("FSCatPContTAccum", 0, "CAPCO"),
             Double("FSCatPContTAccum", 29, 4.0 / 7),
             Text("FSCatPContTAccum", 37, "FSMII"),
             Text("FSCatPContTAccum", 82, "FSMIS"),
             Text("FSContAccum", 0, "COPRE"),
             Double("FSContAccum", 5, 8),
             Double("FSContAccum", 13, 1),
             Double("FSContAccum", 21, 20),
             Int("FSContAccum", 29, 0),
             Double("FSContAccum", 33, 144.0 / 7),
             Text("FSContPCatTAccum", 0, "COPRA"),
             Double("FSContPCatTAccum", 33, 144.0 / 7),
             Text("FSContPCatTAccum", 41, "FSMIS"),
             Int("FSContPCatTAccum", 46, 2),
             Text("FSContPContTAccum", 0, "COPCO"),
             Double("FSContPContTAccum", 33, 144.0 / 7),
             Double("FSContPContTAccum", 49, 3.0 / 7),
             Text("FSSettings", 0, "FSSet"),
             Int("FSSettings", 5, 4),
             Int("FSSettings", 9, 1),
             Int("FSSettings", 13, 0),
             Int("FSSettings", 25, 2),
             Int("FSSettings", 29, 2),
             Int("FSSettings", 33, 1),
             Int("FSSettings", 37, 1),
             Int("FSSettings", 53, 1),
             Int("FSSettings", 61, 99),
             Int("FSSettings", 85, 1),
             Double("FSSettings", 89, 0.7),
             Int("FSSettings", 97, 1),
             Double("FSSettings", 137, 0.001),
             Text("FSPredictorSet", 0, "PRSET"),
             Int("FSPredictorSet", 5, 4),
             Int("FSPredictorSet", 9, 0),
             Double("FSPredictorSet", 13, 0),
             Int("FSPredictorSet", 21, 2),
             Int("FSPredictorSet", 25, 7),
             Int("FSPredictorSet", 29, 1),
             Double("FSPredictorSet", 45, 8),
             Int("FSPredictorSet", 61, 8),
             Int("FSPredictorSet", 69, 1),
             Int("FSPredictorSet", 73, 2),
             Int("FSPredictorSet", 77, 2),
             Int("FSPredictorSet", 81, 4),
             Int("FSPredictorSet", 85, 2),
             Text("FSPredictorSet", 89, "CAPRA"),
             Text("FSAlgorithm", 0, "FSAlgorithm 1.00"),
             Text("FSAlgorithm", 16, "FSSet"),
             Text("FSAlgorithm", 177, "PRSET"),
             Int("FSAlgorithm", 1251, 1),
             Int("FSAlgorithm", 1255, 1),
         }) {
        SCOPED_TRACE(std::string(place.fClass) + " at " + std::to_string(place.fOffset));
        const std::string golden = Golden(std::string(place.fClass) + ".bin");
        if (place.fCharacters != nullptr) {
            const std::string expected = place.fCharacters;
            EXPECT_EQ(golden.substr(place.fOffset, expected.size()), expected);
        } else if (place.fbDouble) {
            double value = 0;
            ASSERT_LE(place.fOffset + sizeof value, golden.size());
            std::memcpy(&value, golden.data() + place.fOffset, sizeof value);
            EXPECT_DOUBLE_EQ(value, place.fDouble);
        } else {
            std::int32_t value = 0;
            ASSERT_LE(place.fOffset + sizeof value, golden.size());
            std::memcpy(&value, golden.data() + place.fOffset, sizeof value);
            EXPECT_EQ(value, place.fInteger);
        }
    }
}

TEST(FSSavedStateOffsets, LengthsAreAsPublished) {
    EXPECT_EQ(Golden("FSPredSort.bin").size(), 33U);
    EXPECT_EQ(Golden("FSContAccum.bin").size(), 57U);
    EXPECT_EQ(Golden("FSContPContTAccum.bin").size(), 73U);
    EXPECT_EQ(Golden("FSSettings.bin").size(), 145U + 4 * 4);
    std::ostringstream empty;
    EXPECT_EQ(FSMapICnt().SaveBinary(empty), 9);
    EXPECT_EQ(empty.str(), std::string("FSMII\0\0\0\0", 9));
}

// --- Results of the operations ---

std::int64_t CountElements(const std::string& xml) {
    std::int64_t count = 0;
    for (std::size_t at = 0; at + 1 < xml.size(); ++at) {
        if (xml[at] == '<' && xml[at + 1] != '/') ++count;
    }
    return count;
}

template <class T>
void ExpectCounts(const T& object) {
    SCOPED_TRACE(T::kSaved.fName);
    std::stringstream bytes;
    const std::int64_t written = object.SaveBinary(bytes);
    EXPECT_EQ(written, static_cast<std::int64_t>(bytes.str().size()));
    T fromBytes;
    EXPECT_EQ(fromBytes.RestoreBinary(bytes), written);

    std::stringstream text;
    const std::int64_t elements = object.SaveXML(text, 0);
    EXPECT_EQ(elements, CountElements(text.str()));
    MCCommonXML::XMLReader document(text);
    T fromText;
    EXPECT_EQ(fromText.RestoreXML(document), elements);
}

TEST(FSSavedStateCounts, AreBytesAndElements) {
    ExpectCounts(savedstates::MapICnt());
    ExpectCounts(savedstates::MapIPCnt());
    ExpectCounts(savedstates::MapIStat());
    ExpectCounts(savedstates::MapPiCnt());
    ExpectCounts(savedstates::PredSort());
    ExpectCounts(savedstates::CatAccum());
    ExpectCounts(savedstates::CatPCatTAccum());
    ExpectCounts(savedstates::CatPContTAccum());
    ExpectCounts(savedstates::ContAccum());
    ExpectCounts(savedstates::ContPCatTAccum());
    ExpectCounts(savedstates::ContPContTAccum());
    ExpectCounts(savedstates::MixedSettings());
}

TEST(FSSavedStateXML, ObjectsLieAtTheirLevels) {
    const std::string text = Golden("FSAlgorithm.xml");
    EXPECT_NE(text.find("<!DOCTYPE MCXMLRoot SYSTEM \"savexml.dtd\">\n<MCXMLRoot copyright="),
              std::string::npos);
    EXPECT_NE(text.find("\n<Obj name=\"FSAlgorithm 1.00\">\n <Obj name=\"FSSettings\">\n"),
              std::string::npos);
    EXPECT_NE(text.find("\n <Obj name=\"FSPredictorSet\">\n"), std::string::npos);
    EXPECT_NE(text.find("\n  <Obj name=\"FSCatPCatTAccum\">\n"), std::string::npos);
    EXPECT_NE(text.find("\n  <Obj name=\"FSPredSort\">\n"), std::string::npos);
    EXPECT_NE(text.find("\n   <Obj name=\"FSMapICnt\">\n"), std::string::npos);
    // The table of target categories too, though it is no accumulator's.
    EXPECT_NE(text.find("\n   <Obj name=\"FSMapIPCnt\">\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("\n</Obj>\n</MCXMLRoot>\n"));
}

TEST(FSSavedStateXML, ADocumentThatDeclaresEntitiesIsRefused) {
    std::string text = Golden("FSAlgorithm.xml");
    const std::string docType = "\"savexml.dtd\"";
    text.insert(text.find(docType) + docType.size(), " [<!ENTITY a \"1\">]");
    testing::internal::CaptureStderr();
    EXPECT_EQ(StateOf("FSAlgorithm.xml").fSaveAgain(text), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error reading FSAlgorithm!\n");
}

TEST(FSSavedStateXML, ADocumentWithMoreBehindTheEngineIsRefused) {
    std::string text = Golden("FSAlgorithm.xml");
    text.insert(text.find("</MCXMLRoot>"), "<Int value=\"1\"/>");
    testing::internal::CaptureStderr();
    EXPECT_EQ(StateOf("FSAlgorithm.xml").fSaveAgain(text), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error reading FSAlgorithm!\n");
}

// --- Refusals inside an object ---

void Put(std::string& bytes, std::size_t offset, std::int32_t value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}

struct Refusal {
    const char* fName;
    std::size_t fOffset;  // in the predictor set
    std::int32_t fValue;
};

void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.fName; }

class FSPredictorSetRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(FSPredictorSetRefusal, OfWhatTheRestContradicts) {
    std::string bytes = Golden("FSPredictorSet.bin");
    Put(bytes, GetParam().fOffset, GetParam().fValue);
    testing::internal::CaptureStderr();
    EXPECT_EQ(StateOf("FSPredictorSet.bin").fSaveAgain(bytes), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error reading FSPredictorSet!\n");
}

// The sort records of the first criterion begin behind accumulators and target table.
std::size_t FirstSortRecord() { return Golden("FSPredictorSet.bin").find("FSPRS"); }

INSTANTIATE_TEST_SUITE_P(Values, FSPredictorSetRefusal,
                         testing::Values(Refusal{"OtherNumberOfPredictorsThanTheSettings", 5, 5},
                                         Refusal{"NegativeNumberOfBest", 9, -1},
                                         Refusal{"AccumulatorsThatWereNotAllocated", 29, 0},
                                         Refusal{"NegativeNumberOfRecords", 61, -1},
                                         Refusal{"NegativeNumberOfDeleted", 69, -1},
                                         Refusal{"NoPredictorDeleted", 73, 1},
                                         Refusal{"DeletedOutOfRange", 73, 4},
                                         Refusal{"UnknownClassOfAccumulator", 85, 7}),
                         [](const auto& one) { return std::string(one.param.fName); });

TEST(FSPredictorSetRestore, RefusesASortRecordOfNoPredictor) {
    for (const std::int32_t predictor : {-1, 4}) {
        std::string bytes = Golden("FSPredictorSet.bin");
        Put(bytes, FirstSortRecord() + 29, predictor);
        testing::internal::CaptureStderr();
        EXPECT_EQ(StateOf("FSPredictorSet.bin").fSaveAgain(bytes), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error reading FSPredictorSet!\n");
    }
}

TEST(FSSavedStateTags, AMapIsRefusedWhereAnotherKindIsDue) {
    std::stringstream bytes;
    savedstates::MapIStat().SaveBinary(bytes);
    FSMapICnt map;
    testing::internal::CaptureStderr();
    try {
        map.RestoreBinary(bytes);
        ADD_FAILURE() << "not refused";
    } catch (const MCFeature::IOException* failure) {
        delete failure;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error reading FSMapICnt!\n");
}

TEST(FSSavedStateTags, TheTwoCountMapsTakeEachOthersTagAndMisreadTheEntries) {
    // Five entries of 12 bytes are three of 20.
    FSMapICnt five;
    for (std::int32_t key = 1; key <= 5; ++key) five.Add(key, key);
    std::stringstream bytes;
    five.SaveBinary(bytes);
    std::string text = bytes.str();
    Put(text, 5, 3);
    std::istringstream misread(text);
    FSMapIPCnt map;
    EXPECT_EQ(map.RestoreBinary(misread), 5 + 4 + 60);
    ASSERT_EQ(map.Size(), 3);
    EXPECT_EQ(map.GetAt(0).fKey, 1);
    EXPECT_NE(map.GetAt(1).fKey, 2);
}

TEST(FSSavedStateTags, TheOrderOfEntriesIsTrusted) {
    std::stringstream bytes;
    savedstates::MapICnt().SaveBinary(bytes);
    std::string text = bytes.str();
    Put(text, 9, 99);  // ahead of 3
    std::istringstream disordered(text);
    FSMapICnt map;
    map.RestoreBinary(disordered);
    EXPECT_EQ(map.GetAt(0).fKey, 99);
    EXPECT_EQ(map.GetAt(1).fKey, 3);
}

// --- The engine ---

std::unique_ptr<IFSAlgorithm> Restored(FSFactory& factory, const std::string& bytes,
                                       bool xml = false) {
    std::istringstream stream(bytes);
    return xml ? factory.CreateFromXML(stream) : factory.CreateFromBinary(stream);
}

TEST(FSFactoryRestore, AStreamThatHasFailedBeforeIsUnusable) {
    for (const bool xml : {false, true}) {
        FSFactory factory;
        std::istringstream stream(Golden("FSAlgorithm.bin"));
        stream.setstate(std::ios::failbit);
        EXPECT_EQ(xml ? factory.CreateFromXML(stream) : factory.CreateFromBinary(stream), nullptr);
        EXPECT_EQ(factory.GetStatus().fCode, 80003U);
        EXPECT_TRUE(factory.GetStatus().IsError());
    }
}

TEST(FSFactoryRestore, AWrongStartGivesTheStatusOfTheForm) {
    const testsupport::SilentStream errors(std::cerr);
    FSFactory factory;
    EXPECT_EQ(Restored(factory, "FSAlgorithm 2.00"), nullptr);
    EXPECT_EQ(factory.GetStatus(), FSStatus::BinaryRestoreFailed());
    EXPECT_EQ(Restored(factory, "FSAlgorithm 1.00", true), nullptr);
    EXPECT_EQ(factory.GetStatus(), FSStatus::XmlRestoreFailed());
}

TEST(FSFactoryRestore, ABrokenBinaryStateEndsWithTwoLines) {
    FSFactory factory;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Restored(factory, Golden("FSAlgorithm.bin").substr(0, 30)), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error reading FSSettings!\nError restoring from binary.\n");
    EXPECT_EQ(factory.GetStatus().fCode, 80004U);
}

TEST(FSFactoryRestore, AStateWithoutItsLastBooleanNamesTheEngine) {
    FSFactory factory;
    const std::string golden = Golden("FSAlgorithm.bin");
    testing::internal::CaptureStderr();
    EXPECT_EQ(Restored(factory, golden.substr(0, golden.size() - 1)), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error reading FSAlgorithm!\nError restoring from binary.\n");
}

TEST(FSFactoryRestore, ABrokenXMLStateNamesTheBinaryForm) {
    FSFactory factory;
    std::string text = Golden("FSAlgorithm.xml");
    text.replace(text.find("<Int"), 4, "<Fnt");
    testing::internal::CaptureStderr();
    EXPECT_EQ(Restored(factory, text, true), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error reading FSSettings!\nError restoring from binary.\n");
    EXPECT_EQ(factory.GetStatus().fCode, 80005U);
}

TEST(FSFactoryRestore, AStreamThatThrowsIsAFailedRestore) {
    const testsupport::SilentStream errors(std::cerr);
    for (const std::size_t size : {3U, 30U, 300U}) {
        FSFactory factory;
        std::istringstream bytes(Golden("FSAlgorithm.bin").substr(0, size));
        bytes.exceptions(std::ios::eofbit | std::ios::failbit);
        EXPECT_EQ(factory.CreateFromBinary(bytes), nullptr);
        EXPECT_EQ(factory.GetStatus(), FSStatus::BinaryRestoreFailed()) << size;
        std::istringstream text(Golden("FSAlgorithm.xml").substr(0, size));
        text.exceptions(std::ios::eofbit | std::ios::failbit);
        EXPECT_EQ(factory.CreateFromXML(text), nullptr);
        EXPECT_EQ(factory.GetStatus(), FSStatus::XmlRestoreFailed()) << size;
    }
}

TEST(FSFactoryRestore, CountsAtTheLargestNumberStayThereInAFurtherPass) {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::size_t kUnweighted = 177 + 61;  // valid, then excluded, of the predictor set
    std::string bytes = Golden("FSAlgorithm.bin");
    const std::size_t categories = bytes.rfind("FSMII");  // the target's
    std::int32_t category = 0;
    std::memcpy(&category, bytes.data() + categories + 9, sizeof category);
    for (const std::size_t at : {kUnweighted, kUnweighted + 4, categories + 13}) {
        std::memcpy(bytes.data() + at, &kMost, sizeof kMost);
    }
    FSFactory factory;
    std::istringstream stream(bytes);
    const auto engine = factory.CreateFromBinary(stream);
    ASSERT_NE(engine, nullptr);
    testsupport::RecordList records({std::vector<double>(6, category), std::vector<double>()});
    EXPECT_EQ(engine->AccumulateData(records, 2), FSStatus::Success());
    double weight = 0.0;
    std::int32_t valid = 0;
    std::int32_t excluded = 0;
    engine->GetRecordCounts(weight, weight, valid, excluded);
    EXPECT_EQ(valid, kMost);
    EXPECT_EQ(excluded, kMost);
    EXPECT_EQ(engine->GetTargetCategoryByValue(category).first, kMost);
}

TEST(FSFactoryRestore, MoreMayFollowABinaryState) {
    FSFactory factory;
    std::istringstream stream(Golden("FSAlgorithm.bin") + Golden("FSAlgorithm.bin"));
    EXPECT_NE(factory.CreateFromBinary(stream), nullptr);
    EXPECT_NE(factory.CreateFromBinary(stream), nullptr);
    EXPECT_EQ(stream.peek(), std::istringstream::traits_type::eof());
}

TEST(FSFactoryRestore, AfterShutdownThereIsNoEngine) {
    FSFactory factory;
    factory.Shutdown();
    EXPECT_EQ(Restored(factory, Golden("FSAlgorithm.bin")), nullptr);
    EXPECT_EQ(factory.GetStatus().fCode, 1U);
}

TEST(FSFactoryRestore, BothFormsGiveTheSameEngine) {
    FSFactory factory;
    const auto fromBytes = Restored(factory, Golden("FSAlgorithm.bin"));
    const auto fromText = Restored(factory, Golden("FSAlgorithm.xml"), true);
    ASSERT_NE(fromBytes, nullptr);
    ASSERT_NE(fromText, nullptr);
    std::ostringstream one;
    std::ostringstream other;
    EXPECT_TRUE(fromBytes->SaveBinary(one).IsOk());
    EXPECT_TRUE(fromText->SaveBinary(other).IsOk());
    EXPECT_EQ(one.str(), other.str());
    EXPECT_TRUE(fromText->IsRanked());
    EXPECT_EQ(fromText->GetDeletedIndices(), std::vector<std::int32_t>{2});
    EXPECT_EQ(fromText->GetSettings().GetNumPredictors(), 4);
}

TEST(FSSavedStateOfAnAccumulator, ReadsWhatIsNotSavedAsInAnEmptyOne) {
    // The number of valid values decides on two rules; ten categories of ten values break them.
    FSCatAccum accum;
    for (std::int32_t category = 0; category < 10; ++category) accum.AddValue(category, 1.0, true);
    std::stringstream bytes;
    accum.SaveBinary(bytes);
    FSCatAccum restored;
    restored.RestoreBinary(bytes);
    const FSSettings settings(1, true, true);
    std::vector<std::int32_t> reasons;
    EXPECT_EQ(accum.CheckAllDeletions(settings, reasons), 2);
    EXPECT_EQ(restored.CheckAllDeletions(settings, reasons), 0);

    std::stringstream pair;
    savedstates::ContPContTAccum().SaveBinary(pair);
    FSContPContTAccum restoredPair;
    restoredPair.RestoreBinary(pair);
    double p = 0, correlation = 0, t = 0, df = 0;
    restoredPair.GetCriterionForDisplay(5, p, correlation, t, df);
    EXPECT_EQ(correlation, MCMV::gMissingValue);
    restoredPair.FinishData();
    restoredPair.GetCriterionForDisplay(5, p, correlation, t, df);
    EXPECT_NE(correlation, MCMV::gMissingValue);
}

}  // namespace

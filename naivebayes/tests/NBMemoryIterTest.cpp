#include "naivebayes/NBMemoryIter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <sstream>
#include <string>

#include "naivebayes/IOException.h"
#include "naivebayes/tests/AllocationMeter.h"
#include "naivebayes/tests/RecordSource.h"
#include "tests/support/CaseName.h"

namespace {

using MCCommon::Record;
using MCNaive::NBMemoryIter;
using Rows = std::vector<std::vector<double>>;

constexpr double kMissing = MCMV::gMissingValue;
constexpr std::int32_t kHuge = std::numeric_limits<std::int32_t>::max();

NBMemoryIter Filled(const Rows& rows, std::int32_t capacity) {
    NBMemoryIter store(static_cast<std::int32_t>(rows.front().size()), capacity);
    for (const auto& row : rows) EXPECT_TRUE(store.Add(Record(row)));
    return store;
}

const Rows kThreeRows = {{0.0, 1.5}, {1.0, -1.0}, {2.0, kMissing}};

std::string Binary(const NBMemoryIter& store) {
    std::ostringstream out;
    const std::int64_t written = store.SaveBinary(out);
    EXPECT_EQ(written, static_cast<std::int64_t>(out.str().size()));
    return out.str();
}

/// Only the head: tag and five integers.
std::string Head(std::int32_t recordSize, std::int32_t capacity, std::int32_t count,
                 std::int32_t position, std::int32_t status) {
    std::string bytes = "RBI";
    for (const std::int32_t number : {recordSize, capacity, count, position, status}) {
        char text[sizeof number];
        std::memcpy(text, &number, sizeof number);
        bytes.append(text, sizeof number);
    }
    return bytes;
}

struct RestoreResult {
    bool fbThrown = false;
    std::int64_t fCount = 0;
    std::string fError;
    std::string fOutput;
};

template <class Restore>
RestoreResult Watch(Restore restore) {
    RestoreResult result;
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    try {
        result.fCount = restore();
    } catch (const MCNaive::IOException* thrown) {
        delete thrown;
        result.fbThrown = true;
    }
    result.fOutput = testing::internal::GetCapturedStdout();
    result.fError = testing::internal::GetCapturedStderr();
    return result;
}

RestoreResult RestoreBinary(NBMemoryIter& store, const std::string& bytes) {
    std::istringstream in(bytes);
    return Watch([&] { return store.RestoreBinary(in); });
}

RestoreResult RestoreXML(NBMemoryIter& store, const std::string& text) {
    std::istringstream in(text);
    MCCommonXML::XMLReader document(in);
    return Watch([&] { return store.RestoreXML(document); });
}

void ExpectEmpty(NBMemoryIter& store) {
    EXPECT_EQ(store.GetCount(), 0);
    EXPECT_EQ(store.GetCapacity(), 0);
    EXPECT_EQ(store.Next(), nullptr);
    EXPECT_EQ(store.NewPass(), store.GetFailReason());
    EXPECT_FALSE(store.Add(Record(2)));
    std::ostringstream out;
    store.Display(out);
    EXPECT_EQ(Binary(store).size(), 23U);
}

TEST(NBMemoryIter, WithCapacityZeroStaysAtTheEnd) {
    NBMemoryIter store(3, 0);
    EXPECT_EQ(store.GetFailReason(), 1);
    EXPECT_FALSE(store.Add(Record(3)));
    EXPECT_EQ(store.NewPass(), 1);
    EXPECT_FALSE(store.HasMore());
    EXPECT_EQ(store.Next(), nullptr);
}

TEST(NBMemoryIter, HasNothingToReadBeforeTheFirstRecord) {
    NBMemoryIter store(1, 2);
    EXPECT_EQ(store.GetFailReason(), 1);
    EXPECT_EQ(store.NewPass(), 1);
    EXPECT_TRUE(store.Add(Record(1)));
    EXPECT_EQ(store.GetFailReason(), 0);
}

TEST(NBMemoryIter, RewindsAnyNumberOfTimesAndGivesNullAfterTheLast) {
    NBMemoryIter store = Filled(kThreeRows, 3);
    for (int pass = 0; pass < 4; ++pass) {
        EXPECT_EQ(Drain(store), kThreeRows);
        EXPECT_EQ(store.Next(), nullptr);
        EXPECT_EQ(store.Next(), nullptr);
        EXPECT_EQ(store.NewPass(), 0);
    }
}

TEST(NBMemoryIter, EndsAtOnceWhenItDeliversTheLastRecord) {
    NBMemoryIter store = Filled({{7.0}}, 5);
    EXPECT_TRUE(store.HasMore());
    ASSERT_NE(store.Next(), nullptr);
    EXPECT_FALSE(store.HasMore());
    EXPECT_EQ(store.GetFailReason(), 1);
}

TEST(NBMemoryIter, RefusesARecordBeyondItsCapacity) {
    NBMemoryIter store = Filled(kThreeRows, 3);
    EXPECT_FALSE(store.Add(Record(2)));
    EXPECT_EQ(store.GetCount(), 3);
    EXPECT_EQ(Drain(store), kThreeRows);
}

TEST(NBMemoryIter, KeepsACopyOfTheRecord) {
    NBMemoryIter store(1, 2);
    Record record(1);
    record[0] = 4.0;
    store.Add(record);
    record[0] = 5.0;
    store.Add(record);
    EXPECT_EQ(Drain(store), (Rows{{4.0}, {5.0}}));
}

TEST(NBMemoryIter, GoesOnWhenARecordIsAddedAfterTheEnd) {
    NBMemoryIter store = Filled({{1.0}}, 2);
    Drain(store);
    EXPECT_TRUE(store.Add(Record(std::vector<double>{2.0})));
    EXPECT_EQ(store.GetFailReason(), 0);
    EXPECT_EQ(Drain(store), (Rows{{2.0}}));
}

TEST(NBMemoryIter, SkipsForward) {
    NBMemoryIter store = Filled(kThreeRows, 3);
    store.Skip(2);
    EXPECT_EQ(Drain(store), (Rows{kThreeRows[2]}));
}

TEST(NBMemoryIter, SkippingToTheEndOrPastItEndsThePass) {
    for (const std::int32_t n : {3, 4, kHuge}) {
        NBMemoryIter store = Filled(kThreeRows, 5);
        store.Skip(n);
        EXPECT_EQ(store.GetFailReason(), 1) << n;
        EXPECT_EQ(store.Next(), nullptr) << n;
        EXPECT_EQ(store.NewPass(), 0) << n;
        EXPECT_EQ(Drain(store), kThreeRows) << n;
    }
}

TEST(NBMemoryIter, SkippingNothingOrBackwardsMovesNothing) {
    NBMemoryIter store = Filled(kThreeRows, 3);
    store.Next();
    for (const std::int32_t n : {0, -1, std::numeric_limits<std::int32_t>::min()}) store.Skip(n);
    EXPECT_EQ(Drain(store), (Rows{kThreeRows[1], kThreeRows[2]}));
}

TEST(NBMemoryIter, TakesItsMemoryForTheWholeCapacityAtOnce) {
    NBMemoryIter store(4, 100);
    const Record record(4);
    const AllocationMeter meter;
    for (int i = 0; i < 100; ++i) store.Add(record);
    store.NewPass();
    while (store.HasMore()) store.Next();
    EXPECT_EQ(meter.Calls(), 0U);
}

TEST(NBMemoryIter, HasStatusThreeWhenThereIsNoMemory) {
    const AllocationMeter meter(1000);
    NBMemoryIter store(1, 1000);
    EXPECT_EQ(store.GetFailReason(), 3);
    EXPECT_FALSE(store.Add(Record(1)));
    EXPECT_EQ(store.NewPass(), 3);
    EXPECT_EQ(store.Next(), nullptr);
    EXPECT_EQ(store.GetFailReason(), 3);
}

TEST(NBMemoryIter, HasStatusThreeForSizesThatCannotBe) {
    EXPECT_EQ(NBMemoryIter(-1, 5).GetFailReason(), 3);
    EXPECT_EQ(NBMemoryIter(5, -1).GetFailReason(), 3);
    EXPECT_FALSE(NBMemoryIter(5, -1).Add(Record(5)));
}

TEST(NBMemoryIter, SavesTwentyThreeBytesAndTheData) {
    EXPECT_EQ(Binary(Filled(kThreeRows, 9)).size(), 23U + 3 * 2 * 8);
}

TEST(NBMemoryIter, SavesItsFieldsInOrder) {
    NBMemoryIter store = Filled(kThreeRows, 9);
    store.Next();
    EXPECT_EQ(Binary(store).substr(0, 23), Head(2, 9, 3, 1, 0));
    EXPECT_EQ(Binary(NBMemoryIter(2, 4)), Head(2, 4, 0, 0, 1));
}

TEST(NBMemoryIter, SavesRecordSizeZeroWithoutCapacity) {
    EXPECT_EQ(Binary(NBMemoryIter(7, 0)), Head(0, 0, 0, 0, 1));
}

TEST(NBMemoryIter, ComesBackInBinaryWhereItStood) {
    NBMemoryIter store = Filled(kThreeRows, 9);
    store.Next();
    const std::string bytes = Binary(store);
    NBMemoryIter restored;
    const RestoreResult result = RestoreBinary(restored, bytes);
    EXPECT_FALSE(result.fbThrown);
    EXPECT_EQ(result.fCount, static_cast<std::int64_t>(bytes.size()));
    EXPECT_EQ(Binary(restored), bytes);
    EXPECT_EQ(Drain(restored), (Rows{kThreeRows[1], kThreeRows[2]}));
    restored.NewPass();
    EXPECT_EQ(Drain(restored), kThreeRows);
}

TEST(NBMemoryIter, ComesBackInXMLWhereItStood) {
    NBMemoryIter store = Filled(kThreeRows, 9);
    store.Next();
    std::ostringstream out;
    // The object, five integers and a value each.
    EXPECT_EQ(store.SaveXML(out, 1), 1 + 5 + 6);
    EXPECT_NE(out.str().find("\"NBMemoryIter\""), std::string::npos);
    NBMemoryIter restored;
    const RestoreResult result = RestoreXML(restored, out.str());
    EXPECT_FALSE(result.fbThrown);
    EXPECT_EQ(result.fCount, 12);
    EXPECT_EQ(Binary(restored), Binary(store));
}

TEST(NBMemoryIter, RestoredTakesFurtherRecordsUpToItsCapacity) {
    NBMemoryIter restored;
    RestoreBinary(restored, Binary(Filled(kThreeRows, 5)));
    const Record more(std::vector<double>{3.0, 3.0});
    EXPECT_TRUE(restored.Add(more));
    EXPECT_TRUE(restored.Add(more));
    EXPECT_FALSE(restored.Add(more));
    Rows expected = kThreeRows;
    expected.push_back({3.0, 3.0});
    expected.push_back({3.0, 3.0});
    restored.NewPass();
    EXPECT_EQ(Drain(restored), expected);
}

TEST(NBMemoryIter, RestoreReplacesWhatWasThere) {
    NBMemoryIter restored = Filled({{1.0}, {2.0}}, 2);
    RestoreBinary(restored, Binary(Filled(kThreeRows, 3)));
    EXPECT_EQ(Drain(restored), kThreeRows);
}

TEST(NBMemoryIter, RestoreKeepsAFailureStatus) {
    NBMemoryIter restored;
    EXPECT_FALSE(RestoreBinary(restored, Head(0, 0, 0, 0, 3)).fbThrown);
    EXPECT_EQ(restored.GetFailReason(), 3);
    EXPECT_EQ(restored.NewPass(), 3);
}

TEST(NBMemoryIter, AWrongTagSaysSoOnTheErrorStream) {
    std::string bytes = Binary(Filled(kThreeRows, 3));
    bytes[2] = 'J';
    NBMemoryIter restored = Filled({{1.0}}, 1);
    const RestoreResult result = RestoreBinary(restored, bytes);
    EXPECT_TRUE(result.fbThrown);
    EXPECT_EQ(result.fError, "Error reading NBMemoryIter!\n");
    EXPECT_EQ(result.fOutput, "");
    ExpectEmpty(restored);
}

TEST(NBMemoryIter, AFailureInXMLSaysSoOnStandardOutput) {
    NBMemoryIter restored = Filled({{1.0}}, 1);
    const RestoreResult result = RestoreXML(restored, "<Obj name=\"NBMemoryOther\"></Obj>");
    EXPECT_TRUE(result.fbThrown);
    EXPECT_EQ(result.fOutput, "Error restoring MCNaive::NBMemoryIter from XML.\n");
    EXPECT_EQ(result.fError, "");
    ExpectEmpty(restored);
}

TEST(NBMemoryIter, AnXMLObjectWithTooFewValuesFails) {
    std::ostringstream out;
    Filled(kThreeRows, 3).SaveXML(out, 1);
    std::string text = out.str();
    const std::size_t last = text.rfind("<Double");
    text.erase(last, text.find('>', last) + 1 - last);
    NBMemoryIter restored;
    EXPECT_TRUE(RestoreXML(restored, text).fbThrown);
    ExpectEmpty(restored);
}

TEST(NBMemoryIter, EveryShorterStreamFailsAndLeavesAnEmptyStore) {
    const std::string bytes = Binary(Filled(kThreeRows, 3));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        NBMemoryIter restored = Filled({{1.0}}, 1);
        const RestoreResult result = RestoreBinary(restored, bytes.substr(0, length));
        EXPECT_TRUE(result.fbThrown) << length;
        EXPECT_EQ(result.fError, "Error reading NBMemoryIter!\n") << length;
        ExpectEmpty(restored);
    }
}

TEST(NBMemoryIter, EveryFlippedBitGivesAStoreThatCanBeUsedOrAFailure) {
    const std::string bytes = Binary(Filled(kThreeRows, 3));
    for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
        std::string flipped = bytes;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
        NBMemoryIter restored;
        if (RestoreBinary(restored, flipped).fbThrown) {
            ExpectEmpty(restored);
            continue;
        }
        const std::string again = Binary(restored);
        EXPECT_EQ(again, flipped.substr(0, again.size())) << bit;
        Drain(restored);
        restored.NewPass();
        Drain(restored);
        restored.Add(Record(2));
        restored.Skip(1);
        std::ostringstream out;
        restored.Display(out);
    }
}

struct ContradictionCase {
    const char* fName;
    std::string fHead;
};

void PrintTo(const ContradictionCase& contradiction, std::ostream* out) {
    *out << contradiction.fName;
}

class NBMemoryIterContradiction : public testing::TestWithParam<ContradictionCase> {};

TEST_P(NBMemoryIterContradiction, FailsWithoutMuchMemory) {
    const std::string bytes = GetParam().fHead + std::string(64, '\0');
    NBMemoryIter restored;
    RestoreResult result;
    std::size_t largest = 0;
    {
        std::istringstream in(bytes);
        result = Watch([&] {
            const AllocationMeter meter;
            struct Report {
                const AllocationMeter& fMeter;
                std::size_t& fLargest;
                ~Report() { fLargest = fMeter.Largest(); }
            } const report{meter, largest};
            return restored.RestoreBinary(in);
        });
    }
    EXPECT_TRUE(result.fbThrown);
    EXPECT_EQ(result.fError, "Error reading NBMemoryIter!\n");
    EXPECT_LE(largest, 1024U);
    ExpectEmpty(restored);
}

INSTANTIATE_TEST_SUITE_P(
    Heads, NBMemoryIterContradiction,
    testing::Values(ContradictionCase{"MoreRecordsThanArrived", Head(2, kHuge, kHuge, 0, 0)},
                    ContradictionCase{"LongerRecordsThanArrived", Head(kHuge, 1, 1, 0, 0)},
                    ContradictionCase{"RecordsWithoutValues", Head(0, kHuge, kHuge, 0, 0)},
                    ContradictionCase{"NegativeRecordSize", Head(-1, 1, 0, 0, 1)},
                    ContradictionCase{"NegativeCapacity", Head(1, -1, -1, 0, 1)},
                    ContradictionCase{"NegativeCount", Head(1, 1, -1, -1, 1)},
                    ContradictionCase{"CountAboveCapacity", Head(1, 1, 2, 0, 0)},
                    ContradictionCase{"NegativePosition", Head(1, 2, 2, -1, 0)},
                    ContradictionCase{"PositionBeyondTheCount", Head(1, 4, 2, 3, 1)},
                    ContradictionCase{"MoreToReadAtTheEnd", Head(1, 2, 2, 2, 0)}),
    testsupport::CaseName());

TEST(NBMemoryIter, RestoreDoesNotTakeMemoryForTheCapacity) {
    const std::string bytes = Head(1, kHuge, 1, 0, 0) + std::string(8, '\0');
    NBMemoryIter restored;
    std::istringstream in(bytes);
    const AllocationMeter meter;
    restored.RestoreBinary(in);
    EXPECT_LE(meter.Largest(), 1024U);
    EXPECT_EQ(restored.GetCapacity(), kHuge);
    EXPECT_EQ(restored.GetCount(), 1);
}

TEST(NBMemoryIter, RestoreWithoutMemoryForTheRecordsGivesStatusThree) {
    const std::string bytes = Binary(Filled({std::vector<double>(1000, 1.0)}, 1));
    NBMemoryIter restored = Filled(kThreeRows, 3);
    std::istringstream in(bytes);
    {
        const AllocationMeter meter(4000);
        restored.RestoreBinary(in);
    }
    EXPECT_EQ(restored.GetFailReason(), 3);
    ExpectEmpty(restored);
}

TEST(NBMemoryIter, DisplaysItsFieldsAndRecords) {
    NBMemoryIter store = Filled(kThreeRows, 4);
    store.Next();
    std::ostringstream out;
    store.Display(out);
    const std::string text = out.str();
    std::size_t from = 0;
    for (const char* piece :
         {"Start of NBMemoryIter display\n", "fpBuffer = ", "fCapacity = 4\n", "fCount = 3\n",
          "fpCurRecord = ", "fIndCurRecord = 1\n", "fStatus = 0\n", "Rec.0: 0 1.5\n",
          "Rec.1: 1 -1\n", "Rec.2: 2 <missing>\n", "End of NBMemoryIter display\n"}) {
        const std::size_t at = text.find(piece, from);
        ASSERT_NE(at, std::string::npos) << piece;
        from = at + std::strlen(piece);
    }
    EXPECT_EQ(from, text.size());
}

}  // namespace

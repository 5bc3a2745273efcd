#include "persistence/BinaryArchive.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <stdexcept>

#include "persistence/tests/Sample.h"
#include "tests/support/AllocationCounter.inc"

namespace {

using namespace std::string_literals;
using sample::Outer;

// The sample's items behind its tag.
const std::string kBytes =
    "OUTER"s                             //
    "\xfd\xff\xff\xff"s                  // 5: -3
    "\xfe\xff\xff\xff"s                  // 9
    "\x01\x00\x00\x00"s                  // 13: true
    "\x9a\x99\x99\x99\x99\x99\xb9\x3f"s  // 17: 0.1
    "\x03\x00\x00\x00"s
    "a<b"s  // 25
    "INNER"s
    "\x05\x00\x00\x00"s  // 32
    "\x02\x00\x00\x00"s  // 41: two parts
    "\x01\x00\x00\x00"s
    "\0\0\0\0"s
    "\x00\x00\x00\x00\x00\x00\xe0\x3f"s  //
    "\x02\x00\x00\x00"s
    "\0\0\0\0"s
    "\x00\x00\x00\x00\x00\x00\xf8\x3f"s  //
    "\x01\x00\x00\x00"s
    "INNER"s
    "\x06\x00\x00\x00"s  // 77
    "\x02\x00\x00\x00"s
    "\x01\x00\x00\x00"s
    "\x00\x00\x00\x00"s  // 90: two bits
    "\x02\x00\x00\x00"s
    "\x07\x00\x00\x00"s
    "\x08\x00\x00\x00"s;  // 102

std::string Saved(const Outer& outer) {
    std::ostringstream stream;
    const std::int64_t written = Persistence::SaveBinary(outer, stream);
    EXPECT_EQ(written, static_cast<std::int64_t>(stream.str().size()));
    return stream.str();
}

// False, with the error line, when the bytes are refused.
bool Restore(Outer& outer, const std::string& bytes, std::string& line) {
    std::istringstream stream(bytes);
    testing::internal::CaptureStderr();
    bool restored = true;
    try {
        EXPECT_EQ(Persistence::RestoreBinary<sample::Failure>(outer, stream),
                  static_cast<std::int64_t>(bytes.size()));
    } catch (const sample::Failure* failure) {
        delete failure;
        restored = false;
    }
    line = testing::internal::GetCapturedStderr();
    return restored;
}

std::string LineFor(const std::string& bytes) {
    Outer outer = Outer::Empty();
    std::string line;
    EXPECT_FALSE(Restore(outer, bytes, line));
    return line;
}

std::string With(std::size_t offset, std::int32_t value) {
    std::string bytes = kBytes;
    std::memcpy(bytes.data() + offset, &value, sizeof value);
    return bytes;
}

TEST(BinaryArchive, WritesItemsAsTheyStandInMemory) { EXPECT_EQ(Saved(sample::Full()), kBytes); }

TEST(BinaryArchive, ReadsWhatItWrote) {
    Outer outer = Outer::Empty();
    std::string line;
    EXPECT_TRUE(Restore(outer, kBytes, line));
    EXPECT_TRUE(sample::Same(outer, sample::Full()));
    EXPECT_EQ(line, "");
    EXPECT_EQ(Saved(outer), kBytes);
}

TEST(BinaryArchive, EveryTruncationNamesTheInnermostObject) {
    for (std::size_t size = 0; size < kBytes.size(); ++size) {
        // Within the tag of an inner object it is that object's.
        const bool inner = (size >= 32 && size < 41) || (size >= 81 && size < 90);
        EXPECT_EQ(LineFor(kBytes.substr(0, size)), inner ? "Error reading Inner!\n" : "No Outer!\n")
            << size;
    }
}

TEST(BinaryArchive, OnlyOneReadsAsTrue) {
    Outer outer = Outer::Empty();
    std::string line;
    EXPECT_TRUE(Restore(outer, With(13, 2), line));
    EXPECT_FALSE(outer.fbFlag);
}

TEST(BinaryArchive, ATagIsComparedAsFarAsItsClassAsks) {
    std::string bytes = kBytes;
    bytes[4] = 'X';
    Outer outer = Outer::Empty();
    std::string line;
    EXPECT_TRUE(Restore(outer, bytes, line));
    bytes[3] = 'X';
    EXPECT_EQ(LineFor(bytes), "No Outer!\n");
}

TEST(BinaryArchive, PaddingMayHoldAnything) {
    Outer outer = Outer::Empty();
    std::string line;
    EXPECT_TRUE(Restore(outer, With(49, -1), line));
    EXPECT_EQ(Saved(outer), kBytes);
}

TEST(BinaryArchive, NegativeCountsAndLengthsAreRefused) {
    EXPECT_EQ(LineFor(With(25, -1)), "No Outer!\n");
    EXPECT_EQ(LineFor(With(41, -1)), "No Outer!\n");
    EXPECT_EQ(LineFor(With(102, -1)), "No Outer!\n");
}

TEST(BinaryArchive, AFailedCheckIsARefusal) { EXPECT_EQ(LineFor(With(5, 99)), "No Outer!\n"); }

TEST(BinaryArchive, ACountThatPromisesMuchTakesNoMemory) {
    for (const std::size_t offset : {25U, 41U, 77U, 90U, 102U}) {
        SCOPED_TRACE(offset);
        const std::string bytes = With(offset, 2147483647);
        const std::size_t before = testsupport::gHeapUse.fNow;
        testsupport::gHeapUse.fMost = before;
        LineFor(bytes);
        ASSERT_TRUE(testsupport::MemoryIsChecked());
        EXPECT_LT(testsupport::gHeapUse.fMost - before, 1U << 20);
    }
}

TEST(BinaryArchive, AnOutermostObjectCanBeTriedWithoutAnException) {
    std::istringstream wrong("OUTLIER");
    Persistence::BinaryReader<sample::Failure> refusing(wrong);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(refusing.TryBegin(Outer::kSaved));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "No Outer!\n");
    std::istringstream right(kBytes);
    Persistence::BinaryReader<sample::Failure> reading(right);
    EXPECT_TRUE(reading.TryBegin(Outer::kSaved));
    std::int32_t number = 0;
    reading.Items(number);
    EXPECT_EQ(number, -3);
    EXPECT_EQ(reading.Count(), 9);
}

TEST(BinaryArchive, AnItemOutsideAnyObjectFailsWithoutALine) {
    std::istringstream empty;
    Persistence::BinaryReader<sample::Failure> reader(empty);
    std::int32_t number = 0;
    testing::internal::CaptureStderr();
    try {
        reader.Items(number);
        ADD_FAILURE() << "not refused";
    } catch (const sample::Failure* failure) {
        delete failure;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(BinaryArchive, ACountThatDiffersFromItsVectorIsAFaultOfTheProgram) {
    Outer outer = sample::Full();
    outer.fCount = 3;
    std::ostringstream stream;
    EXPECT_THROW(Persistence::SaveBinary(outer, stream), std::logic_error);
}

TEST(BinaryArchive, AFailedStreamShowsItInItsState) {
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    Persistence::SaveBinary(sample::Full(), stream);
    EXPECT_TRUE(stream.bad());
    EXPECT_EQ(stream.str(), "");
}

}  // namespace

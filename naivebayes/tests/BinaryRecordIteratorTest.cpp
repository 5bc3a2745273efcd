#include "naivebayes/BinaryRecordIterator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <string>

#include "naivebayes/data/NBDataPreparator.h"
#include "naivebayes/tests/AllocationMeter.h"
#include "naivebayes/tests/RecordSource.h"

namespace {

using MCNaive::BinaryRecordIterator;
using Rows = std::vector<std::vector<double>>;

/// A file that stands on its first byte.
struct OpenFile {
    std::string fPath = MakeTempFileName("", "records");
    std::FILE* fpFile = std::fopen(fPath.c_str(), "w+b");

    explicit OpenFile(const std::vector<double>& values, std::size_t furtherBytes = 0) {
        for (const double value : values) {
            EXPECT_EQ(std::fwrite(&value, sizeof value, 1, fpFile), 1U);
        }
        for (std::size_t i = 0; i < furtherBytes; ++i) std::fputc(0, fpFile);
        std::fseek(fpFile, 0, SEEK_SET);
    }
};

TEST(BinaryRecordIterator, DeliversTheRecordsOfTheFileInEveryPass) {
    const OpenFile file({1.0, -1.0, MCMV::gMissingValue, 4.0, 5.0, 6.5});
    BinaryRecordIterator records(file.fpFile, file.fPath, 2);
    const Rows expected = {{1.0, -1.0}, {MCMV::gMissingValue, 4.0}, {5.0, 6.5}};
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_EQ(Drain(records), expected);
        EXPECT_EQ(records.GetFailReason(), 1);
        EXPECT_EQ(records.Next(), nullptr);
        EXPECT_EQ(records.NewPass(), 0);
    }
}

TEST(BinaryRecordIterator, StartsAgainInTheMiddleOfAPass) {
    const OpenFile file({1.0, 2.0, 3.0});
    BinaryRecordIterator records(file.fpFile, file.fPath, 1);
    records.Next();
    EXPECT_EQ(records.NewPass(), 0);
    EXPECT_EQ(Drain(records), (Rows{{1.0}, {2.0}, {3.0}}));
}

TEST(BinaryRecordIterator, ANullFileIsReportedAndStaysFailed) {
    testing::internal::CaptureStdout();
    BinaryRecordIterator records(nullptr, "", 2);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Error: file handle is NULL in BinaryRecordIterator constructor\n");
    EXPECT_EQ(records.GetFailReason(), 3);
    EXPECT_FALSE(records.HasMore());
    EXPECT_EQ(records.Next(), nullptr);
    EXPECT_EQ(records.NewPass(), 3);
}

TEST(BinaryRecordIterator, AnEmptyFileIsAtItsEnd) {
    const OpenFile file({});
    BinaryRecordIterator records(file.fpFile, file.fPath, 2);
    EXPECT_EQ(records.GetFailReason(), 1);
    EXPECT_EQ(records.Next(), nullptr);
    EXPECT_EQ(records.NewPass(), 1);
}

TEST(BinaryRecordIterator, AShortLastRecordEndsWithStatusThreeAfterTheRecordBeforeIt) {
    const OpenFile file({1.0, 2.0, 3.0, 4.0, 5.0});
    BinaryRecordIterator records(file.fpFile, file.fPath, 2);
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(Drain(records), (Rows{{1.0, 2.0}, {3.0, 4.0}}));
        EXPECT_EQ(records.GetFailReason(), 3);
        EXPECT_EQ(records.Next(), nullptr);
        EXPECT_EQ(records.NewPass(), 0);
    }
}

TEST(BinaryRecordIterator, ARecordThatIsCutWithinItsFirstValueIsShortToo) {
    const OpenFile file({1.0, 2.0}, 5);
    BinaryRecordIterator records(file.fpFile, file.fPath, 2);
    EXPECT_EQ(Drain(records), (Rows{{1.0, 2.0}}));
    EXPECT_EQ(records.GetFailReason(), 3);
}

TEST(BinaryRecordIterator, ReadsFilesOfSeveralPiecesToTheirEndOrTear) {
    // Pieces of about a megabyte: whole ones, a part of one, and a torn record behind a whole one.
    for (const std::size_t size : {2U, 3U, 1000U, 200000U}) {
        const std::size_t perPiece = std::max<std::size_t>((std::size_t{1} << 17) / size, 1);
        for (const std::size_t count : {perPiece - 1, perPiece, perPiece + 1, 2 * perPiece}) {
            for (const std::size_t torn : {0U, 1U, 9U}) {
                std::vector<double> values(count * size);
                std::iota(values.begin(), values.end(), 0.0);
                const OpenFile file(values, torn);
                BinaryRecordIterator records(file.fpFile, file.fPath,
                                             static_cast<std::int32_t>(size));
                for (int pass = 0; pass < 2; ++pass) {
                    std::size_t delivered = 0;
                    for (; records.HasMore(); ++delivered) {
                        const MCCommon::Record& record = *records.Next();
                        ASSERT_EQ(record[0], static_cast<double>(delivered * size));
                        ASSERT_EQ(record[record.Size() - 1], record[0] + record.Size() - 1);
                    }
                    EXPECT_EQ(delivered, count);
                    EXPECT_EQ(records.GetFailReason(), torn == 0 ? 1 : 3);
                    records.NewPass();
                }
            }
        }
    }
}

TEST(BinaryRecordIterator, ARecordSizeBelowOneFails) {
    const OpenFile file({1.0});
    BinaryRecordIterator records(file.fpFile, file.fPath, 0);
    EXPECT_EQ(records.GetFailReason(), 3);
    EXPECT_EQ(records.Next(), nullptr);
}

TEST(BinaryRecordIterator, RemovesTheFileWhenItGoes) {
    const OpenFile file({1.0, 2.0});
    {
        const BinaryRecordIterator records(file.fpFile, file.fPath, 1);
        EXPECT_TRUE(std::filesystem::exists(file.fPath));
    }
    EXPECT_FALSE(std::filesystem::exists(file.fPath));
}

TEST(BinaryRecordIterator, AllocatesNothingForARecord) {
    const OpenFile file(std::vector<double>(3000, 1.0));
    BinaryRecordIterator records(file.fpFile, file.fPath, 3);
    const AllocationMeter meter;
    int count = 0;
    for (; records.HasMore(); ++count) records.Next();
    EXPECT_EQ(count, 1000);
    EXPECT_EQ(meter.Calls(), 0U);
}

}  // namespace

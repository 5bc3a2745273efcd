#include "featureselect/FSStatus.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/support/CaseName.h"

namespace {

struct MakerCase {
    std::string fName;
    FSStatus fStatus;
    std::uint32_t fCode;
    std::int16_t fSeverity;
    std::array<std::int32_t, 3> fIntArgs;
};

void PrintTo(const MakerCase& one, std::ostream* out) { *out << one.fName; }

class FSStatusMakers : public testing::TestWithParam<MakerCase> {};

TEST_P(FSStatusMakers, GiveCodeSeverityAndIntegers) {
    const MakerCase& expected = GetParam();
    EXPECT_EQ(expected.fStatus.fCode, expected.fCode);
    EXPECT_EQ(expected.fStatus.fSeverity, expected.fSeverity);
    EXPECT_EQ(expected.fStatus.fIntArgs, expected.fIntArgs);
    EXPECT_EQ(expected.fStatus.fDoubleArgs, (std::array<double, 3>{}));
    EXPECT_EQ(expected.fStatus.IsError(), expected.fSeverity == -1);
    EXPECT_EQ(expected.fStatus.IsOk(), expected.fSeverity == 0);
    EXPECT_EQ(expected.fStatus.IsWarning(), expected.fSeverity == 1);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, FSStatusMakers,
    testing::Values(
        MakerCase{"Success", FSStatus::Success(), 0, 0, {}},
        MakerCase{"Cancelled", FSStatus::Cancelled(), 1, -1, {}},
        MakerCase{"NotRanked", FSStatus::NotRanked(), 6, -1, {}},
        MakerCase{"StreamUnusable", FSStatus::StreamUnusable(), 80003, -1, {}},
        MakerCase{"BinaryRestoreFailed", FSStatus::BinaryRestoreFailed(), 80004, -1, {}},
        MakerCase{"XmlRestoreFailed", FSStatus::XmlRestoreFailed(), 80005, -1, {}},
        MakerCase{"CriterionNotRequested", FSStatus::CriterionNotRequested(), 80006, -1, {}},
        MakerCase{
            "PredictorsOutOfOrder", FSStatus::PredictorsOutOfOrder(4, 2, 9), 80007, -1, {4, 2, 9}},
        MakerCase{
            "PredictorOutOfRange", FSStatus::PredictorOutOfRange(7, 5, 9), 80008, -1, {7, 5, 9}},
        MakerCase{"NoValidData", FSStatus::NoValidData(), 80009, -1, {}},
        MakerCase{
            "NoValidDataInScreening", FSStatus::NoValidData(FSStatus::kWarning), 80009, 1, {}},
        MakerCase{"AllMissingOrConstant", FSStatus::AllMissingOrConstant(), 80010, 1, {}},
        MakerCase{"AllDeleted", FSStatus::AllDeleted(), 80011, 1, {}},
        MakerCase{"FewerRemain", FSStatus::FewerRemain(FSStatus::kError, 3), 80012, -1, {3, 0, 0}},
        MakerCase{"FewerRemainForResults",
                  FSStatus::FewerRemain(FSStatus::kWarning, 3),
                  80012,
                  1,
                  {3, 0, 0}},
        MakerCase{"NoValidWeight", FSStatus::NoValidWeight(), 80013, -1, {}},
        MakerCase{
            "NoValidWeightInScreening", FSStatus::NoValidWeight(FSStatus::kWarning), 80013, 1, {}}),
    testsupport::CaseName());

TEST(FSStatus, SeverityDecidesNotTheCode) {
    FSStatus status;
    status.fCode = 80009;
    EXPECT_TRUE(status.IsOk());
}

TEST(FSStatus, EqualOnlyInEveryField) {
    const FSStatus status = FSStatus::PredictorOutOfRange(7, 5, 9);
    FSStatus other = status;
    EXPECT_EQ(status, other);
    other.fIntArgs[2] = 8;
    EXPECT_FALSE(status == other);
    other = status;
    other.fSeverity = 1;
    EXPECT_FALSE(status == other);
    other = status;
    other.fCode = 80007;
    EXPECT_FALSE(status == other);
    other = status;
    other.fDoubleArgs[1] = 0.5;
    EXPECT_FALSE(status == other);
}

TEST(FSStatus, NotANumberDiffersFromItself) {
    FSStatus status;
    status.fDoubleArgs[0] = std::numeric_limits<double>::quiet_NaN();
    const FSStatus copy = status;
    EXPECT_FALSE(status == copy);
}

}  // namespace

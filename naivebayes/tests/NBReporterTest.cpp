#include "naivebayes/NBReporter.h"

#include <gtest/gtest.h>

#include <vector>

#include "naivebayes/NBAttribSelectReporter.h"
#include "naivebayes/NBProgressPacing.h"

namespace {

class CountingListener : public ProgressListener {
 public:
    void OnProgress(const ProgressReport& report) override {
        fvRecords.push_back(report.GetInteger("trainRecords"));
    }
    std::vector<std::int32_t> fvRecords;
};

std::vector<std::int32_t> ReportedOf(std::int32_t units, std::int32_t skip) {
    CountingListener listener;
    NBProgressPacing pacing(&listener, skip);
    for (std::int32_t i = 1; i <= units; ++i) {
        if (pacing.IsDue()) pacing.Send(NBReporter(i, pacing.ElapsedSeconds()));
    }
    return listener.fvRecords;
}

TEST(NBReporterTest, NothingIsKnownAtFirst) {
    const NBReporter report;
    EXPECT_EQ(report.GetInteger("trainRecords"), -1);
    EXPECT_EQ(report.GetDouble("elapsedTime"), MCMV::gMissingValue);
}

TEST(NBReporterTest, AnswersItsTwoNamesAndNoOther) {
    const NBReporter report(17, 2.5);
    EXPECT_EQ(report.GetInteger("trainRecords"), 17);
    EXPECT_EQ(report.GetDouble("elapsedTime"), 2.5);
    EXPECT_EQ(report.GetInteger("elapsedTime"), -1);
    EXPECT_EQ(report.GetInteger("selectedPredictors"), -1);
    EXPECT_EQ(report.GetDouble("trainRecords"), MCMV::gMissingValue);
}

TEST(NBAttribSelectReporterTest, NothingIsKnownAtFirst) {
    const NBAttribSelectReporter report;
    for (const char* name :
         {"selectedPredictors", "candidatePredictors", "maxPredictors", "trainRecords"}) {
        EXPECT_EQ(report.GetInteger(name), -1) << name;
    }
    EXPECT_EQ(report.GetDouble("elapsedTime"), MCMV::gMissingValue);
}

TEST(NBAttribSelectReporterTest, AnswersItsFiveNamesAndNoOther) {
    const NBAttribSelectReporter report({3, 9, 12, 400, 0.25});
    EXPECT_EQ(report.GetInteger("selectedPredictors"), 3);
    EXPECT_EQ(report.GetInteger("candidatePredictors"), 9);
    EXPECT_EQ(report.GetInteger("maxPredictors"), 12);
    EXPECT_EQ(report.GetInteger("trainRecords"), 400);
    EXPECT_EQ(report.GetDouble("elapsedTime"), 0.25);
    EXPECT_EQ(report.GetInteger("predictors"), -1);
    EXPECT_EQ(report.GetDouble("seconds"), MCMV::gMissingValue);
}

TEST(NBProgressPacingTest, WithoutASkipEachUnitIsReported) {
    EXPECT_EQ(ReportedOf(4, 0), (std::vector<std::int32_t>{1, 2, 3, 4}));
}

TEST(NBProgressPacingTest, ASkipOfTwoReportsEachThirdUnit) {
    EXPECT_EQ(ReportedOf(8, 2), (std::vector<std::int32_t>{3, 6}));
}

TEST(NBProgressPacingTest, ANegativeSkipIsNone) {
    EXPECT_EQ(ReportedOf(3, -5), (std::vector<std::int32_t>{1, 2, 3}));
}

TEST(NBProgressPacingTest, WithoutAListenerNothingIsDue) {
    NBProgressPacing pacing(nullptr, 0);
    EXPECT_FALSE(pacing.IsDue());
    EXPECT_GE(pacing.ElapsedSeconds(), 0.0);
}

}  // namespace

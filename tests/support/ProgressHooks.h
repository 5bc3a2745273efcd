#ifndef PREDSEL_TESTS_SUPPORT_PROGRESSHOOKS_H
#define PREDSEL_TESTS_SUPPORT_PROGRESSHOOKS_H

#include <cstdint>
#include <functional>
#include <vector>

#include "host/Progress.h"

namespace testsupport {

/// Keeps what it is told, and calls fOnReport, if there is one, at each report.
class ProgressRecorder : public ProgressListener {
 public:
    struct Report {
        std::int32_t fRecords;
        std::int32_t fPredictors;
        double fElapsed;
    };

    void OnProgress(const ProgressReport& report) override {
        fvReports.push_back({report.GetInteger("records"), report.GetInteger("predictors"),
                             report.GetDouble("elapsedTime")});
        if (fOnReport) fOnReport();
    }

    std::vector<std::int32_t> Records() const {
        std::vector<std::int32_t> records;
        for (const Report& report : fvReports) records.push_back(report.fRecords);
        return records;
    }
    std::vector<std::int32_t> Predictors() const {
        std::vector<std::int32_t> predictors;
        for (const Report& report : fvReports) predictors.push_back(report.fPredictors);
        return predictors;
    }

    std::vector<Report> fvReports;
    std::function<void()> fOnReport;
};

/// Answers no so many times, then yes once, then no again: an answer that sticks is the asker's.
class CancelAtPoll : public CancelCheck {
 public:
    explicit CancelAtPoll(std::int64_t refusals) : fRefusals(refusals) {}
    bool IsCancelled() override { return fPolls++ == fRefusals; }
    std::int64_t Polls() const { return fPolls; }

 private:
    std::int64_t fRefusals;
    std::int64_t fPolls = 0;
};

}  // namespace testsupport

#endif  // PREDSEL_TESTS_SUPPORT_PROGRESSHOOKS_H

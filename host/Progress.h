#ifndef PREDSEL_HOST_PROGRESS_H
#define PREDSEL_HOST_PROGRESS_H

#include <cstdint>
#include <string>

/// How far a step of an engine has come, by name: "records" and "predictors" (-1 where the step
/// does not count them), "elapsedTime" in seconds.
class ProgressReport {
 public:
    virtual ~ProgressReport() = default;
    virtual std::int32_t GetInteger(const std::string& name) const = 0;
    virtual double GetDouble(const std::string& name) const = 0;
};

/// Told now and then how far a pass has come. It may call the engine's Cancel, nothing else.
class ProgressListener {
 public:
    virtual ~ProgressListener() = default;
    virtual void OnProgress(const ProgressReport& report) = 0;
};

/// Polled between records. One positive answer ends the run.
class CancelCheck {
 public:
    virtual ~CancelCheck() = default;
    virtual bool IsCancelled() = 0;
};

/// The host's time limit, polled by the engines: signals when the time is up and when the user has
/// interrupted the run.
class MCStopProcessor : public CancelCheck {
 public:
    /// limitSeconds counts from construction; 0 sets no limit.
    explicit MCStopProcessor(double limitSeconds);
    ~MCStopProcessor() override;
    bool IsCancelled() override;

 private:
    double fLimitSeconds;
    std::int64_t fStartNanoseconds;
};

#endif  // PREDSEL_HOST_PROGRESS_H

#ifndef PREDSEL_APPS_PROGRESSLINE_H
#define PREDSEL_APPS_PROGRESSLINE_H

#include <chrono>
#include <string>

#include "host/Progress.h"

namespace app {

/// One line on standard error that tells phase, rows, rate and time left, rewritten in place a few
/// times a second and wiped in the end.
class ProgressLine final : public ProgressListener {
 public:
    ProgressLine() = default;
    ~ProgressLine() override;
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    /// Shows a phase that has no count.
    void Show(const std::string& phase);
    void OnProgress(const ProgressReport& report) override;

 private:
    void Write(const std::string& text);

    bool fbShown = false;
    std::chrono::steady_clock::time_point fLast{};
};

}  // namespace app

#endif  // PREDSEL_APPS_PROGRESSLINE_H

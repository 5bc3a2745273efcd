#ifndef PREDSEL_FEATURESELECT_FSSTATUS_H
#define PREDSEL_FEATURESELECT_FSSTATUS_H

#include <array>
#include <cstdint>

/// How an operation of the screening engine ended, by value. The severity decides, not the code.
/// Codes are permanent: hosts and saved logs know them by number.
struct [[nodiscard]] FSStatus {
    static constexpr std::int16_t kSuccess = 0;
    static constexpr std::int16_t kError = -1;
    static constexpr std::int16_t kWarning = 1;

    std::uint32_t fCode = 0;
    std::int16_t fSeverity = kSuccess;
    std::array<std::int32_t, 3> fIntArgs{};  // arguments of the message, 0 unless the maker says so
    std::array<double, 3> fDoubleArgs{};

    bool IsError() const { return fSeverity < 0; }
    bool IsOk() const { return fSeverity == 0; }
    bool IsWarning() const { return fSeverity > 0; }
    bool operator==(const FSStatus&) const = default;  // a NaN argument differs from itself

    static FSStatus Success() { return {}; }
    /// 1, error. The run was cancelled.
    static FSStatus Cancelled() { return Make(1, kError); }
    /// 6, error. Results were asked for before the predictors were ranked.
    static FSStatus NotRanked() { return Make(6, kError); }
    /// 80003, error. The stream to restore from had failed already.
    static FSStatus StreamUnusable() { return Make(80003, kError); }
    /// 80004, error. What the stream held is no binary state.
    static FSStatus BinaryRestoreFailed() { return Make(80004, kError); }
    /// 80005, error. What the stream held is no XML state.
    static FSStatus XmlRestoreFailed() { return Make(80005, kError); }
    /// 80006, error. The criterion is not among those that the settings ask for.
    static FSStatus CriterionNotRequested() { return Make(80006, kError); }
    /// 80007, error. Items of a transaction out of order. Integers: last index, this index,
    /// transaction.
    static FSStatus PredictorsOutOfOrder(std::int32_t last, std::int32_t index,
                                         std::int32_t transaction) {
        return Make(80007, kError, {last, index, transaction});
    }
    /// 80008, error. Integers: index, number of predictors, transaction.
    static FSStatus PredictorOutOfRange(std::int32_t index, std::int32_t count,
                                        std::int32_t transaction) {
        return Make(80008, kError, {index, count, transaction});
    }
    /// 80009. No valid value of any predictor; a warning in a pass without target.
    static FSStatus NoValidData(std::int16_t severity = kError) { return Make(80009, severity); }
    /// 80010, warning. Every predictor is missing or constant throughout.
    static FSStatus AllMissingOrConstant() { return Make(80010, kWarning); }
    /// 80011, warning. No predictor passed the screening.
    static FSStatus AllDeleted() { return Make(80011, kWarning); }
    /// 80012. Fewer predictors remain than were asked for; an error when ranking and reporting, a
    /// warning when results are read. Integer 0: the number remaining.
    static FSStatus FewerRemain(std::int16_t severity, std::int32_t remaining) {
        return Make(80012, severity, {remaining, 0, 0});
    }
    /// 80013. No record with a weight above 0; a warning in a pass without target.
    static FSStatus NoValidWeight(std::int16_t severity = kError) { return Make(80013, severity); }

    /// 80014, error. The other engine has not read a partition of the same data under the same
    /// settings, or either is past its data pass.
    static FSStatus NotMergeable() { return Make(80014, kError); }

 private:
    static FSStatus Make(std::uint32_t code, std::int16_t severity,
                         std::array<std::int32_t, 3> integers = {}) {
        FSStatus status;
        status.fCode = code;
        status.fSeverity = severity;
        status.fIntArgs = integers;
        return status;
    }
};

#endif  // PREDSEL_FEATURESELECT_FSSTATUS_H

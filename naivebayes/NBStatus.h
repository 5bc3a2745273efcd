#ifndef PREDSEL_NAIVEBAYES_NBSTATUS_H
#define PREDSEL_NAIVEBAYES_NBSTATUS_H

#include <array>
#include <cstddef>
#include <cstdint>

/// What every operation of the engine reports with. A value; the default is success.
/// Which codes there are, and what their arguments mean, is told where they are set.
struct NBStatus {
    std::uint32_t fCode = 0;
    std::int16_t fSeverity = 0;  // 0 success, -1 error, +1 warning
    std::array<std::int32_t, 3> fIntArgs{};
    std::array<double, 3> fDoubleArgs{};

    NBStatus() = default;
    /// A warning, or else an error.
    NBStatus(std::uint32_t code, bool isWarning)
        : fCode(code), fSeverity(isWarning ? std::int16_t{1} : std::int16_t{-1}) {}

    bool IsError() const { return fSeverity < 0; }
    bool IsOK() const { return fSeverity == 0; }
    std::uint32_t GetCode() const { return fCode; }
    /// i from 0 to 2.
    void SetIntArg(std::int32_t i, std::int32_t value) {
        fIntArgs[static_cast<std::size_t>(i)] = value;
    }
    void SetDoubleArg(std::int32_t i, double value) {
        fDoubleArgs[static_cast<std::size_t>(i)] = value;
    }

    bool operator==(const NBStatus&) const = default;
};

/// The codes of NBStatus.
namespace NBCode {

inline constexpr std::uint32_t kInterrupted = 1;
inline constexpr std::uint32_t kNoOutput = 2;  // the controller: no saved variables or model file
inline constexpr std::uint32_t kNoMemory = 3;
inline constexpr std::uint32_t kNothingToSave = 4;
inline constexpr std::uint32_t kNotBuilt = 6;
inline constexpr std::uint32_t kNoValidCases = 70000;  // the controller
inline constexpr std::uint32_t kNoTempFile = 70001;    // not opened, or the disk was full
inline constexpr std::uint32_t kTrainingEmpty = 70002;
inline constexpr std::uint32_t kTestEmpty = 70003;
inline constexpr std::uint32_t kStreamFailed = 70004;
inline constexpr std::uint32_t kBinaryRestore = 70005;
inline constexpr std::uint32_t kXMLRestore = 70006;
inline constexpr std::uint32_t kNoRecordCount = 70007;
inline constexpr std::uint32_t kNoTestCount = 70008;
inline constexpr std::uint32_t kBadVarList = 70009;
inline constexpr std::uint32_t kCodeOutOfRange = 70010;
inline constexpr std::uint32_t kNoUsableRecords = 70011;
inline constexpr std::uint32_t kRecordLength = 70012;
inline constexpr std::uint32_t kMaxSizeTooSmall = 70013;
inline constexpr std::uint32_t kMaxSizeTooLarge = 70014;
inline constexpr std::uint32_t kForcedUninformative = 70015;
inline constexpr std::uint32_t kNoValidPredictor = 70016;
inline constexpr std::uint32_t kTargetMissing = 70017;
inline constexpr std::uint32_t kWeightMissing = 70018;
inline constexpr std::uint32_t kCannotMerge = 70019;
inline constexpr std::uint32_t kTooLittleData = 70020;

}  // namespace NBCode

#endif  // PREDSEL_NAIVEBAYES_NBSTATUS_H

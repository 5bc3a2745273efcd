#ifndef PREDSEL_NAIVEBAYES_DATA_INBENCODER_H
#define PREDSEL_NAIVEBAYES_DATA_INBENCODER_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "host/Xml.h"
#include "naivebayes/data/INBUserMissing.h"

/// Values of INBEncoder::GetEncoderType.
namespace NBEncoderType {

inline constexpr std::int32_t kNone = 0;  // in saved variables only
inline constexpr std::int32_t kBinning = 1;
inline constexpr std::int32_t kCatNum = 2;
inline constexpr std::int32_t kString = 3;
inline constexpr std::int32_t kRound = 4;

}  // namespace NBEncoderType

/// Turns raw values of one variable into the numbers that the tables work with: codes 0, 1, 2 and
/// so on for bins and categories, cleaned counts for a weight. The Encode operations are plain
/// members of the classes, since their arguments differ in type; so is SetUserMissing, since
/// category encoders own their definition and the others borrow that of their variable.
class INBEncoder {
 public:
    /// The code of a missing value in the bin and category encoders.
    static constexpr double kMissingCode = -1.0;

    virtual ~INBEncoder() = default;

    virtual std::int32_t GetEncoderType() const = 0;
    virtual std::int32_t GetNumCodes() const = 0;
    /// Both do nothing in encoders without categories.
    virtual void SetCategoryLabels(const std::vector<std::string>& labels) = 0;
    /// Does nothing for a code out of range.
    virtual void SetCategoryLabel(std::int32_t code, const std::string& label) = 0;
    /// By code; may be shorter than there are codes. Null in encoders without categories.
    virtual const std::vector<std::string>* GetCategoryLabels() const = 0;
    /// May be null.
    virtual const INBUserMissing* GetUserMissing() const = 0;
    /// A copy shares a borrowed definition and has its own of an owned one.
    virtual std::unique_ptr<INBEncoder> Clone() const = 0;

    /// As those of INBUserMissing.
    virtual std::int64_t SaveBinary(std::ostream& stream) const = 0;
    virtual std::int64_t RestoreBinary(std::istream& stream) = 0;
    virtual std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const = 0;
    virtual std::int64_t RestoreXML(MCCommonXML::XMLReader& document) = 0;
    virtual void Display(std::ostream& out) const = 0;

 protected:
    INBEncoder() = default;
    INBEncoder(const INBEncoder&) = default;
    INBEncoder(INBEncoder&&) = default;
    INBEncoder& operator=(const INBEncoder&) = default;
    INBEncoder& operator=(INBEncoder&&) = default;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_INBENCODER_H

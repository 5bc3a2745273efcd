#ifndef PREDSEL_NAIVEBAYES_DATA_INBVARIABLE_H
#define PREDSEL_NAIVEBAYES_DATA_INBVARIABLE_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>

#include "host/Xml.h"
#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/INBUserMissing.h"

/// What a variable is there for.
namespace NBRole {

inline constexpr std::int32_t kNone = 0;
inline constexpr std::int32_t kInput = 1;          // predictor that is in the model
inline constexpr std::int32_t kPossibleInput = 2;  // candidate of the subset search
inline constexpr std::int32_t kTarget = 3;
inline constexpr std::int32_t kWeight = 4;  // frequency weight
inline constexpr std::int32_t kUnused = 5;

/// For displays. Other numbers than those above have a text too.
std::string Text(std::int32_t role);

}  // namespace NBRole

namespace NBMeasureLevel {

inline constexpr std::int32_t kUnknown = 0;
inline constexpr std::int32_t kContinuous = 1;  // NBContVar
inline constexpr std::int32_t kNumericCat = 2;  // NBCatVar with an NBCatNumEncoder
inline constexpr std::int32_t kStringCat = 3;   // NBCatVar with an NBStringEncoder
inline constexpr std::int32_t kWeight = 4;      // NBWeightVar

/// For displays. Other numbers than those above have a text too.
std::string Text(std::int32_t level);

}  // namespace NBMeasureLevel

/// Values of INBVariable::GetRangeState.
namespace NBRangeState {

inline constexpr std::int32_t kUsable = 0;
inline constexpr std::int32_t kConstant = 1;
inline constexpr std::int32_t kEmpty = 2;

}  // namespace NBRangeState

/// One variable as the classifier sees it. Belongs to an NBVarList, where its position is its
/// identity.
class INBVariable {
 public:
    virtual ~INBVariable() = default;

    virtual std::int32_t GetMeasureLevel() const = 0;
    virtual const std::string& GetName() const = 0;
    virtual const std::string& GetLabel() const = 0;
    virtual void SetLabel(const std::string& label) = 0;
    /// Categories or bins, as far as known: see RefreshNumCategories. 0 for a weight.
    virtual std::int32_t GetNumCategories() const = 0;
    virtual std::int32_t GetRole() const = 0;
    /// Does nothing for a weight.
    virtual void SetRole(std::int32_t role) = 0;
    /// Brings the number of categories up to what the encoder has seen by now, and returns it.
    virtual std::int32_t RefreshNumCategories() = 0;
    /// Null clears the definition. False for one that doesn't fit the variable's values: the
    /// earlier one stays.
    virtual bool SetUserMissing(std::unique_ptr<INBUserMissing> definition) = 0;
    /// May be null.
    virtual const INBUserMissing* GetUserMissing() const = 0;
    virtual std::unique_ptr<INBVariable> Clone() const = 0;
    /// Null for a continuous variable without bins.
    virtual INBEncoder* GetEncoder() = 0;
    virtual const INBEncoder* GetEncoderConst() const = 0;
    /// Whether there is anything to learn from the variable. A categorical one is refreshed first.
    virtual std::int32_t GetRangeState() = 0;

    /// As those of INBUserMissing.
    virtual std::int64_t SaveBinary(std::ostream& stream) const = 0;
    virtual std::int64_t RestoreBinary(std::istream& stream) = 0;
    virtual std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const = 0;
    virtual std::int64_t RestoreXML(MCCommonXML::XMLReader& document) = 0;
    virtual void Display(std::ostream& out) const = 0;

 protected:
    INBVariable() = default;
    INBVariable(const INBVariable&) = default;
    INBVariable& operator=(const INBVariable&) = default;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_INBVARIABLE_H

#ifndef PREDSEL_NAIVEBAYES_DATA_INBUSERMISSING_H
#define PREDSEL_NAIVEBAYES_DATA_INBUSERMISSING_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <vector>

#include "host/Xml.h"

/// Which values of one variable the user has declared to be missing. The test itself, IsMissing, is
/// a plain member of the two classes, since their values differ in type.
class INBUserMissing {
 public:
    /// Values of GetMissingType.
    static constexpr std::int32_t kNumeric = 0;
    static constexpr std::int32_t kString = 1;

    virtual ~INBUserMissing() = default;

    virtual std::int32_t GetMissingType() const = 0;
    virtual std::int32_t GetNumDiscrete() const = 0;
    virtual bool HasInterval() const = 0;
    virtual std::unique_ptr<INBUserMissing> Clone() const = 0;
    /// Whether both declare the same values in the same order; labels don't count. other may be
    /// null, which is never equal.
    virtual bool Equals(const INBUserMissing* other) const = 0;
    /// What a PMML DataField says of the missing values, in order; empty when nothing is to be
    /// said.
    virtual std::vector<std::unique_ptr<MCCommonXML::XMLElement>> MakePMMLElements() const = 0;

    /// Bytes written or read. A restore that fails writes a line to the error stream and throws a
    /// pointer to an MCNaive::IOException.
    virtual std::int64_t SaveBinary(std::ostream& stream) const = 0;
    virtual std::int64_t RestoreBinary(std::istream& stream) = 0;
    /// Elements written or read; level indents. Fails as the binary form does.
    virtual std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const = 0;
    virtual std::int64_t RestoreXML(MCCommonXML::XMLReader& document) = 0;
    virtual void Display(std::ostream& out) const = 0;

 protected:
    INBUserMissing() = default;
    INBUserMissing(const INBUserMissing&) = default;
    INBUserMissing& operator=(const INBUserMissing&) = default;
};

/// Moves a definition to an owner that knows its class; null clears it. False for a definition of
/// another class, which is then destroyed: the owner keeps what it had.
template <class Definition>
bool TakeUserMissing(std::unique_ptr<INBUserMissing> definition,
                     std::unique_ptr<Definition>& ownerOut) {
    auto* const known = dynamic_cast<Definition*>(definition.get());
    if (definition && known == nullptr) return false;
    static_cast<void>(definition.release());
    ownerOut.reset(known);
    return true;
}

#endif  // PREDSEL_NAIVEBAYES_DATA_INBUSERMISSING_H

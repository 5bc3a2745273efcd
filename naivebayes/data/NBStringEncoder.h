#ifndef PREDSEL_NAIVEBAYES_DATA_NBSTRINGENCODER_H
#define PREDSEL_NAIVEBAYES_DATA_NBSTRINGENCODER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "naivebayes/data/NBCategoryEncoder.h"
#include "naivebayes/data/NBStringUserMissing.h"
#include "naivebayes/data/NBUserMissingFields.h"
#include "persistence/Fields.h"

/// String categories, told apart byte by byte; the empty string is one like any other.
class NBStringEncoder final : public NBCategoryEncoder {
 public:
    /// Empty. reserve: categories to make room for.
    explicit NBStringEncoder(std::int32_t reserve);
    /// Encodes the values in order.
    explicit NBStringEncoder(const std::vector<std::string>& values);
    NBStringEncoder(const NBStringEncoder& other);
    NBStringEncoder& operator=(const NBStringEncoder& other);

    /// kMissingCode for a missing value, else the category's code; a new category gets the next.
    /// Copies the text for a new category only.
    double Encode(std::string_view text);
    /// The same, but kMissingCode for a new category.
    double Lookup(std::string_view text) const;
    /// "" for a code out of range.
    const std::string& Decode(std::int32_t code) const;

    bool SetUserMissing(std::unique_ptr<INBUserMissing> definition) override;

    std::int32_t GetEncoderType() const override { return NBEncoderType::kString; }
    std::int32_t GetNumCodes() const override {
        return static_cast<std::int32_t>(fvpCodeValues.size());
    }
    const INBUserMissing* GetUserMissing() const override { return fpUserMissing.get(); }
    std::unique_ptr<INBEncoder> Clone() const override {
        return std::make_unique<NBStringEncoder>(*this);
    }

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;
    void Display(std::ostream& out) const override;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        using Encoder = std::remove_reference_t<Self>;
        archive(kSaved, Values<Encoder>{self}, self.fvCategoryLabels,
                NBUserMissingFields::Optional<NBStringUserMissing, Encoder>{self});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{"STEN", "NBStringEncoder",
                                                    "Error reading NBStringEncoder!\n",
                                                    "Failure reading NBStringEncoder!\n"};

    /// As those of NBCatNumEncoder.
    template <class Encoder>
    struct Values {
        Encoder& fEncoder;

        template <class Self, class Archive>
        static void Fields(Self&& self, Archive& archive) {
            std::int32_t count = self.fEncoder.GetNumCodes();
            archive.Items(count);
            if constexpr (Archive::kRestores) {
                archive.Require(count >= 0);
                self.fEncoder.Clear();
                for (std::int32_t i = 0; i < count; ++i) {
                    std::string value;
                    archive.Items(value);
                    self.fEncoder.Encode(value);
                }
            } else {
                for (const std::string* value : self.fEncoder.fvpCodeValues) archive.Items(*value);
            }
        }
    };

    bool IsMissing(std::string_view text) const;
    void Clear();
    void PointToValues();

    std::map<std::string, std::int32_t, std::less<>> fCodes;  // by value, in byte order
    std::vector<const std::string*> fvpCodeValues;            // by code: the keys of fCodes
    std::unique_ptr<NBStringUserMissing> fpUserMissing;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBSTRINGENCODER_H

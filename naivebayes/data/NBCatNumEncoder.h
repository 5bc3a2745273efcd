#ifndef PREDSEL_NAIVEBAYES_DATA_NBCATNUMENCODER_H
#define PREDSEL_NAIVEBAYES_DATA_NBCATNUMENCODER_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "naivebayes/data/NBCategoryEncoder.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/data/NBUserMissingFields.h"
#include "persistence/Fields.h"

/// Numeric categories, told apart exactly.
class NBCatNumEncoder final : public NBCategoryEncoder {
 public:
    /// Empty. reserve: categories to make room for.
    explicit NBCatNumEncoder(std::int32_t reserve);
    /// Encodes the values in order.
    explicit NBCatNumEncoder(const std::vector<double>& values);
    NBCatNumEncoder(const NBCatNumEncoder& other);
    NBCatNumEncoder& operator=(const NBCatNumEncoder& other);

    /// kMissingCode for a missing value, else the category's code; a new category gets the next.
    /// REQUIRES: no NaN, here and in Lookup.
    double Encode(double value);
    /// The same, but kMissingCode for a new category.
    double Lookup(double value) const;
    /// MCMV::gMissingValue for a code out of range.
    double Decode(std::int32_t code) const;

    bool SetUserMissing(std::unique_ptr<INBUserMissing> definition) override;

    std::int32_t GetEncoderType() const override { return NBEncoderType::kCatNum; }
    std::int32_t GetNumCodes() const override {
        return static_cast<std::int32_t>(fvCodeValues.size());
    }
    const INBUserMissing* GetUserMissing() const override { return fpUserMissing.get(); }
    std::unique_ptr<INBEncoder> Clone() const override {
        return std::make_unique<NBCatNumEncoder>(*this);
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
                NBUserMissingFields::Optional<NBNumericUserMissing, Encoder>{self});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{"CNEN", "NBCatNumEncoder",
                                                    "Error reading NBCatNumEncoder!\n",
                                                    "Failure reading NBCatNumEncoder!\n"};

    /// The values by code. When they are read each is encoded, and the definition that the encoder
    /// had still filters them.
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
                    double value = 0.0;
                    archive.Items(value);
                    archive.Require(!std::isnan(value));  // has no place among ordered values
                    self.fEncoder.Encode(value);
                }
            } else {
                archive.Items(Persistence::Elements{count, self.fEncoder.fvCodeValues});
            }
        }
    };

    bool IsMissing(double value) const;
    void Clear();

    std::map<double, std::int32_t> fCodes;  // by value
    std::vector<double> fvCodeValues;       // by code
    std::unique_ptr<NBNumericUserMissing> fpUserMissing;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBCATNUMENCODER_H

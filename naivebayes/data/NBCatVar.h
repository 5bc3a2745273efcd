#ifndef PREDSEL_NAIVEBAYES_DATA_NBCATVAR_H
#define PREDSEL_NAIVEBAYES_DATA_NBCATVAR_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBCatNumEncoder.h"
#include "naivebayes/data/NBCategoryEncoder.h"
#include "naivebayes/data/NBStringEncoder.h"
#include "persistence/Fields.h"

/// A categorical variable: the target or a predictor. Its user-missing definition is kept by its
/// encoder.
class NBCatVar final : public INBVariable {
 public:
    /// The encoder decides the measure level. numCategories may be more than it has codes: the
    /// others are met later, or values aren't asked for.
    NBCatVar(std::string name, std::string label, std::int32_t role, std::int32_t numCategories,
             std::unique_ptr<NBCatNumEncoder> encoder);
    NBCatVar(std::string name, std::string label, std::int32_t role, std::int32_t numCategories,
             std::unique_ptr<NBStringEncoder> encoder);
    NBCatVar(const NBCatVar& other);
    NBCatVar& operator=(const NBCatVar& other);

    std::int32_t GetMeasureLevel() const override { return LevelOf(fpEncoder->GetEncoderType()); }
    const std::string& GetName() const override { return fName; }
    const std::string& GetLabel() const override { return fLabel; }
    void SetLabel(const std::string& label) override { fLabel = label; }
    std::int32_t GetNumCategories() const override { return fNumCategories; }
    std::int32_t GetRole() const override { return fRole; }
    void SetRole(std::int32_t role) override { fRole = role; }
    std::int32_t RefreshNumCategories() override;
    bool SetUserMissing(std::unique_ptr<INBUserMissing> definition) override {
        return fpEncoder->SetUserMissing(std::move(definition));
    }
    const INBUserMissing* GetUserMissing() const override { return fpEncoder->GetUserMissing(); }
    std::unique_ptr<INBVariable> Clone() const override {
        return std::make_unique<NBCatVar>(*this);
    }
    INBEncoder* GetEncoder() override { return fpEncoder.get(); }
    const INBEncoder* GetEncoderConst() const override { return fpEncoder.get(); }
    std::int32_t GetRangeState() override;

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;
    void Display(std::ostream& out) const override;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        std::int32_t level = self.GetMeasureLevel();
        archive(kSaved, self.fName, self.fLabel, self.fRole, self.fNumCategories, level,
                EncoderOf<std::remove_reference_t<Self>>{self, level});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{"CAVR", "NBCatVar", "Error reading NBCatVar!\n",
                                                    "Failure reading NBCatVar!\n"};

    /// The encoder after its type. When it is read the variable keeps its own until the new one is
    /// whole.
    template <class Variable>
    struct EncoderOf {
        Variable& fVariable;
        const std::int32_t& fLevel;  // the saved one, read just before

        template <class Self, class Archive>
        static void Fields(Self&& self, Archive& archive) {
            std::int32_t type = self.fVariable.fpEncoder->GetEncoderType();
            archive.Items(type);
            if constexpr (Archive::kRestores) {
                archive.Require(self.fVariable.fNumCategories >= 0);
                archive.Require(type == NBEncoderType::kCatNum || type == NBEncoderType::kString);
                archive.Require(self.fLevel == LevelOf(type));
            }
            if (type == NBEncoderType::kCatNum) {
                Encoder<NBCatNumEncoder>(self.fVariable, archive);
            } else {
                Encoder<NBStringEncoder>(self.fVariable, archive);
            }
        }

        template <class Class, class Archive>
        static void Encoder(Variable& variable, Archive& archive) {
            if constexpr (Archive::kRestores) {
                auto encoder = std::make_unique<Class>(2);
                archive.Items(*encoder);
                variable.fpEncoder = std::move(encoder);
            } else {
                archive.Items(static_cast<const Class&>(*variable.fpEncoder));
            }
        }
    };

    static std::int32_t LevelOf(std::int32_t encoderType) {
        return encoderType == NBEncoderType::kCatNum ? NBMeasureLevel::kNumericCat
                                                     : NBMeasureLevel::kStringCat;
    }

    std::string fName;
    std::string fLabel;
    std::int32_t fRole;
    std::int32_t fNumCategories;
    std::unique_ptr<NBCategoryEncoder> fpEncoder;  // never null
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBCATVAR_H

#ifndef PREDSEL_NAIVEBAYES_DATA_NBWEIGHTVAR_H
#define PREDSEL_NAIVEBAYES_DATA_NBWEIGHTVAR_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <type_traits>

#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/data/NBRoundEncoder.h"
#include "naivebayes/data/NBUserMissingFields.h"
#include "persistence/Fields.h"

/// The frequency weight. Its role and its measure level never change.
class NBWeightVar final : public INBVariable {
 public:
    /// roundOption: see NBRoundEncoder.
    NBWeightVar(std::string name, std::string label, std::int32_t roundOption);
    NBWeightVar(const NBWeightVar& other);
    NBWeightVar& operator=(const NBWeightVar& other);

    std::int32_t GetMeasureLevel() const override { return NBMeasureLevel::kWeight; }
    const std::string& GetName() const override { return fName; }
    const std::string& GetLabel() const override { return fLabel; }
    void SetLabel(const std::string& label) override { fLabel = label; }
    std::int32_t GetNumCategories() const override { return 0; }
    std::int32_t GetRole() const override { return NBRole::kWeight; }
    void SetRole(std::int32_t) override {}
    std::int32_t RefreshNumCategories() override { return 0; }
    bool SetUserMissing(std::unique_ptr<INBUserMissing> definition) override;
    const INBUserMissing* GetUserMissing() const override { return fpUserMissing.get(); }
    std::unique_ptr<INBVariable> Clone() const override {
        return std::make_unique<NBWeightVar>(*this);
    }
    NBRoundEncoder* GetEncoder() override { return fpEncoder.get(); }
    const NBRoundEncoder* GetEncoderConst() const override { return fpEncoder.get(); }
    std::int32_t GetRangeState() override { return NBRangeState::kUsable; }

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;
    void Display(std::ostream& out) const override;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        using Variable = std::remove_reference_t<Self>;
        archive(kSaved, self.fName, self.fLabel, *self.fpEncoder,
                NBUserMissingFields::Optional<NBNumericUserMissing, Variable>{self});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{
        "WEVR", "NBWeightVar", "Error reading NBWeightVar!\n", "Failure reading NBWeightVar!\n"};

    std::string fName;
    std::string fLabel;
    std::unique_ptr<NBNumericUserMissing> fpUserMissing;  // borrowed by the encoder
    std::unique_ptr<NBRoundEncoder> fpEncoder;            // never null
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBWEIGHTVAR_H

#ifndef PREDSEL_NAIVEBAYES_DATA_NBNUMERICUSERMISSING_H
#define PREDSEL_NAIVEBAYES_DATA_NBNUMERICUSERMISSING_H

#include <algorithm>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "naivebayes/data/INBUserMissing.h"
#include "naivebayes/data/NBNumericInterval.h"
#include "naivebayes/data/NBUserMissingFields.h"
#include "persistence/Fields.h"

/// Numbers that are missing: some one by one, each with a label or "", and a range of them.
class NBNumericUserMissing : public INBUserMissing {
 public:
    void Add(double value, std::string label);
    /// Null without an interval.
    const NBNumericInterval* GetInterval() const { return fHasInterval ? &fInterval : nullptr; }
    /// Replaces an earlier interval.
    void SetInterval(const NBNumericInterval& interval);
    const std::vector<double>& GetValues() const { return fvValues; }
    /// By position those of the values; may be shorter after a restore.
    const std::vector<std::string>& GetLabels() const { return fvLabels; }

    bool IsMissing(double value) const {
        return std::find(fvValues.begin(), fvValues.end(), value) != fvValues.end() ||
               (fHasInterval && fInterval.Contains(value));
    }

    std::int32_t GetMissingType() const override { return kNumeric; }
    std::int32_t GetNumDiscrete() const override {
        return static_cast<std::int32_t>(fvValues.size());
    }
    bool HasInterval() const override { return fHasInterval; }
    std::unique_ptr<INBUserMissing> Clone() const override {
        return std::make_unique<NBNumericUserMissing>(*this);
    }
    bool Equals(const INBUserMissing* other) const override;
    std::vector<std::unique_ptr<MCCommonXML::XMLElement>> MakePMMLElements() const override;

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;
    void Display(std::ostream& out) const override;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, NBUserMissingFields::Discrete{self.fvValues, self.fvLabels},
                self.fHasInterval, IntervalIfAny<std::remove_reference_t<Self>>{self});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{"NBNumUMi", "NBNumericUserMissing",
                                                    "Error reading NBNumericUserMissing!\n",
                                                    "Failure reading NBNumericUserMissing!\n"};

    template <class Definition>
    struct IntervalIfAny {
        Definition& fDefinition;

        template <class Self, class Archive>
        static void Fields(Self&& self, Archive& archive) {
            if (self.fDefinition.fHasInterval) archive.Items(self.fDefinition.fInterval);
        }
    };

    std::vector<double> fvValues;
    std::vector<std::string> fvLabels;
    NBNumericInterval fInterval;
    bool fHasInterval = false;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBNUMERICUSERMISSING_H

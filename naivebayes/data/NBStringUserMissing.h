#ifndef PREDSEL_NAIVEBAYES_DATA_NBSTRINGUSERMISSING_H
#define PREDSEL_NAIVEBAYES_DATA_NBSTRINGUSERMISSING_H

#include <algorithm>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "naivebayes/data/INBUserMissing.h"
#include "naivebayes/data/NBUserMissingFields.h"
#include "persistence/Fields.h"

/// Strings that are missing, each with a label or "". Compared byte by byte: no blanks are trimmed
/// and case counts.
class NBStringUserMissing : public INBUserMissing {
 public:
    void Add(std::string value, std::string label);
    const std::vector<std::string>& GetValues() const { return fvValues; }
    /// By position those of the values; may be shorter after a restore.
    const std::vector<std::string>& GetLabels() const { return fvLabels; }

    bool IsMissing(std::string_view text) const {
        return std::find(fvValues.begin(), fvValues.end(), text) != fvValues.end();
    }

    std::int32_t GetMissingType() const override { return kString; }
    std::int32_t GetNumDiscrete() const override {
        return static_cast<std::int32_t>(fvValues.size());
    }
    bool HasInterval() const override { return false; }
    std::unique_ptr<INBUserMissing> Clone() const override {
        return std::make_unique<NBStringUserMissing>(*this);
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
        archive(kSaved, NBUserMissingFields::Discrete{self.fvValues, self.fvLabels});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{"NBStrUMi", "NBStringUserMissing",
                                                    "Error reading NBStringUserMissing!\n",
                                                    "Failure reading NBStringUserMissing!\n"};

    std::vector<std::string> fvValues;
    std::vector<std::string> fvLabels;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBSTRINGUSERMISSING_H

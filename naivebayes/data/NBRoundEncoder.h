#ifndef PREDSEL_NAIVEBAYES_DATA_NBROUNDENCODER_H
#define PREDSEL_NAIVEBAYES_DATA_NBROUNDENCODER_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "naivebayes/data/INBEncoder.h"
#include "persistence/Fields.h"

class NBNumericUserMissing;

/// Cleans frequency weights: what comes out is above 0 or missing.
class NBRoundEncoder final : public INBEncoder {
 public:
    /// Options. Any other number leaves the value as it is, too.
    static constexpr std::int32_t kTruncate = 0;
    static constexpr std::int32_t kRound = 1;  // halves up
    static constexpr std::int32_t kAsIs = 2;

    explicit NBRoundEncoder(std::int32_t option) : fOption(option) {}

    /// MCMV::gMissingValue for a missing value and for a result of 0 or below.
    double Encode(double value) const;
    std::int32_t GetOption() const { return fOption; }

    /// As NBBinningEncoder's.
    bool SetUserMissing(const INBUserMissing* definition);

    std::int32_t GetEncoderType() const override { return NBEncoderType::kRound; }
    std::int32_t GetNumCodes() const override { return 0; }
    void SetCategoryLabels(const std::vector<std::string>&) override {}
    void SetCategoryLabel(std::int32_t, const std::string&) override {}
    const std::vector<std::string>* GetCategoryLabels() const override { return nullptr; }
    const INBUserMissing* GetUserMissing() const override;
    std::unique_ptr<INBEncoder> Clone() const override {
        return std::make_unique<NBRoundEncoder>(*this);
    }

    /// 8 bytes. The definition is not saved here but with the variable.
    std::int64_t SaveBinary(std::ostream& stream) const override;
    /// Takes any option.
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    /// Refuses a negative option, unlike the binary form.
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;
    void Display(std::ostream& out) const override;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fOption,
                Persistence::Check{[&self] { return !Archive::kXML || self.fOption >= 0; }});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{"ROEN", "NBRoundEncoder",
                                                    "Error reading NBRoundEncoder!\n",
                                                    "Failure reading NBRoundEncoder from XML!\n"};

    std::int32_t fOption = kAsIs;
    const NBNumericUserMissing* fpUserMissing = nullptr;  // borrowed from the variable
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBROUNDENCODER_H

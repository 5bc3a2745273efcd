#ifndef PREDSEL_NAIVEBAYES_DATA_NBCONTVAR_H
#define PREDSEL_NAIVEBAYES_DATA_NBCONTVAR_H

#include <cstdint>
#include <iosfwd>
#include <iostream>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "naivebayes/IOException.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBBinningEncoder.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/data/NBUserMissingFields.h"
#include "persistence/Fields.h"

/// A continuous predictor. It gets its encoder, the bins, from cutpoints, from a range and a number
/// of bins, or later by MakeBinningEncoder.
class NBContVar final : public INBVariable {
 public:
    /// cutpoints: strictly ascending. The range reaches one interval beyond them on each side, 50
    /// around a single one. Without cutpoints there is no range and the variable counts as
    /// constant.
    NBContVar(std::string name, std::string label, const std::vector<double>& cutpoints,
              std::int32_t role);
    /// Bins are made at once only for max above min, at least 2 bins, and a variable in use.
    NBContVar(std::string name, std::string label, double min, double max, std::int32_t numBins,
              std::int32_t role);
    NBContVar(const NBContVar& other);
    /// A variable that has bins keeps them, even when the other's are different; without bins it
    /// takes a copy of the other's. When the other has none, this one's go. Intended: see
    /// AssignmentKeepsTheBinsThatAreThere.
    NBContVar& operator=(const NBContVar& other);

    double GetMin() const { return fMin; }
    double GetMax() const { return fMax; }

    /// Makes bins of equal width where there are none. numBins counts only where the variable has
    /// no number of bins, at least 2, of its own. The encoders made: 1, or 0 when there were bins
    /// or there can be none.
    std::int32_t MakeBinningEncoder(std::int32_t numBins);
    /// Makes bins with these cutpoints where there are none. cutpoints: not empty and strictly
    /// ascending, or nothing is made. The encoders made.
    std::int32_t SetCutpoints(const std::vector<double>& cutpoints);
    /// Drops the bins, given cutpoints only by force. The encoders dropped; the number of bins
    /// stays.
    std::int32_t DropEncoder(bool force);

    std::int32_t GetMeasureLevel() const override { return NBMeasureLevel::kContinuous; }
    const std::string& GetName() const override { return fName; }
    const std::string& GetLabel() const override { return fLabel; }
    void SetLabel(const std::string& label) override { fLabel = label; }
    std::int32_t GetNumCategories() const override { return fNumBins; }
    std::int32_t GetRole() const override { return fRole; }
    void SetRole(std::int32_t role) override { fRole = role; }
    std::int32_t RefreshNumCategories() override;
    bool SetUserMissing(std::unique_ptr<INBUserMissing> definition) override;
    const INBUserMissing* GetUserMissing() const override { return fpUserMissing.get(); }
    std::unique_ptr<INBVariable> Clone() const override {
        return std::make_unique<NBContVar>(*this);
    }
    NBBinningEncoder* GetEncoder() override { return fpEncoder.get(); }
    const NBBinningEncoder* GetEncoderConst() const override { return fpEncoder.get(); }
    std::int32_t GetRangeState() override;

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;
    void Display(std::ostream& out) const override;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        using Variable = std::remove_reference_t<Self>;
        archive(kSaved, self.fName, self.fLabel, self.fRole, self.fNumBins, self.fMin, self.fMax,
                EncoderOf<Variable>{self},
                NBUserMissingFields::Optional<NBNumericUserMissing, Variable>{self});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{
        "COVR", "NBContVar", "Error reading NBContVar!\n", "Failure reading NBContVar!\n"};
    /// A saved number of bins that are still to be made is not believed beyond this: a few bytes
    /// must not ask for much memory.
    static constexpr std::int32_t kMostBinsToBeMade = 1000;

    /// Whether there is an encoder, then the encoder.
    template <class Variable>
    struct EncoderOf {
        Variable& fVariable;

        template <class Self, class Archive>
        static void Fields(Self&& self, Archive& archive) {
            Variable& variable = self.fVariable;
            std::int32_t type = variable.fpEncoder ? NBEncoderType::kBinning : NBEncoderType::kNone;
            archive.Items(type);
            if constexpr (!Archive::kRestores) {
                if (variable.fpEncoder) archive.Items(std::as_const(*variable.fpEncoder));
            } else if (type == NBEncoderType::kBinning) {
                auto encoder = std::make_unique<NBBinningEncoder>();
                archive.Items(*encoder);
                archive.Require(encoder->GetNumCodes() >= 2);
                variable.fpEncoder = std::move(encoder);
                variable.RefreshNumCategories();
            } else {
                variable.fpEncoder.reset();
                if (type != NBEncoderType::kNone) {
                    // To standard output, unlike all other failures. Intended: see
                    // AWrongEncoderTypeIsToldOnStandardOutput.
                    std::cout << "Wrong encoder type in NBContVar!\n";
                    throw new MCNaive::
                        IOException;  // NOLINT(misc-throw-by-value-catch-by-reference)
                }
                archive.Require(!variable.CanHaveBins() || variable.fNumBins <= kMostBinsToBeMade);
            }
        }
    };

    /// Whether range and role allow bins.
    bool CanHaveBins() const { return fMin < fMax && fRole != NBRole::kUnused; }
    void TakeEncoder(std::unique_ptr<NBBinningEncoder> encoder);

    std::string fName;
    std::string fLabel;
    std::int32_t fRole;
    double fMin = 0.0;
    double fMax = 0.0;
    std::int32_t fNumBins;
    std::unique_ptr<NBNumericUserMissing> fpUserMissing;  // borrowed by the encoder
    std::unique_ptr<NBBinningEncoder> fpEncoder;          // null until there are bins
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBCONTVAR_H

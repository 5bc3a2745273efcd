#ifndef PREDSEL_NAIVEBAYES_DATA_NBBINNINGENCODER_H
#define PREDSEL_NAIVEBAYES_DATA_NBBINNINGENCODER_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "naivebayes/data/INBEncoder.h"
#include "persistence/Fields.h"

class NBNumericUserMissing;
class NBayesInputBase;

/// Sorts numbers into bins. Bin k holds the values above cutpoint k-1 up to and including cutpoint
/// k; the outermost bins are open, so no value is refused. Where cutpoints coincide, the bins
/// between them hold nothing: a value on them belongs to the lowest.
class NBBinningEncoder final : public INBEncoder {
 public:
    /// No bins.
    NBBinningEncoder() = default;
    /// cutpoints: ascending, one less than there are bins. They count as set explicitly.
    explicit NBBinningEncoder(std::vector<double> cutpoints);
    /// Bins of equal width (max - min) / numBins. Below 2 bins there is no cutpoint.
    NBBinningEncoder(double min, double max, std::int32_t numBins);

    /// kMissingCode for a missing value, else the bin: the lowest whose cutpoint is at or above the
    /// value. An infinity falls where the outermost finite number does.
    double Encode(double value) const;
    /// Whether any number falls into the bin. REQUIRES: bin is at most the number of cutpoints.
    bool IsReachable(std::size_t bin) const;
    const std::vector<double>& GetCutpoints() const { return fvCutpoints; }
    /// As the constructor.
    void SetCutpoints(std::vector<double> cutpoints);
    /// Whether the cutpoints were given, not computed from a range.
    bool IsExplicit() const { return fExplicitCutpoints; }

    /// A copy in which the bins that table, the counts of this predictor after training, holds no
    /// record of are closed: a gap between filled bins is cut in the middle, one at an end goes to
    /// its neighbour. The number of bins stays; closed ones can no longer be reached. With fewer
    /// than two filled bins, or none to close, an unchanged copy.
    std::unique_ptr<NBBinningEncoder> MakeCollapsedCopy(const NBayesInputBase& table) const;

    /// Borrowed from the variable, which has to outlive its use here; null clears it. False for
    /// one that isn't numeric: the earlier one stays.
    bool SetUserMissing(const INBUserMissing* definition);

    std::int32_t GetEncoderType() const override { return NBEncoderType::kBinning; }
    std::int32_t GetNumCodes() const override { return fNumBins; }
    void SetCategoryLabels(const std::vector<std::string>&) override {}
    void SetCategoryLabel(std::int32_t, const std::string&) override {}
    const std::vector<std::string>* GetCategoryLabels() const override { return nullptr; }
    const INBUserMissing* GetUserMissing() const override;
    std::unique_ptr<INBEncoder> Clone() const override {
        return std::make_unique<NBBinningEncoder>(*this);
    }

    /// The definition is not saved here but with the variable.
    std::int64_t SaveBinary(std::ostream& stream) const override;
    /// Fewer than 2 bins are refused.
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    /// 0 bins and 1 bin are accepted, unlike in the binary form.
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;
    void Display(std::ostream& out) const override;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fNumBins, self.fExplicitCutpoints,
                CutpointsOf<std::remove_reference_t<Self>>{self});
    }

 private:
    static constexpr Persistence::SavedClass kSaved{"BIEN", "NBBinningEncoder",
                                                    "Error reading NBBinningEncoder!\n",
                                                    "Failure reading NBBinningEncoder from XML!\n"};

    template <class Encoder>
    struct CutpointsOf {
        Encoder& fEncoder;

        template <class Self, class Archive>
        static void Fields(Self&& self, Archive& archive) {
            if constexpr (Archive::kRestores) {
                archive.Require(self.fEncoder.fNumBins >= (Archive::kXML ? 0 : 2));
            }
            const std::int32_t count = std::max(self.fEncoder.fNumBins, 1) - 1;
            archive.Items(Persistence::Elements{count, self.fEncoder.fvCutpoints});
        }
    };

    std::int32_t fNumBins = 0;
    std::vector<double> fvCutpoints;
    bool fExplicitCutpoints = false;
    const NBNumericUserMissing* fpUserMissing = nullptr;  // borrowed from the variable
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBBINNINGENCODER_H

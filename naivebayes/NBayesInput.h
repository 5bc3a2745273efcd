#ifndef PREDSEL_NAIVEBAYES_NBAYESINPUT_H
#define PREDSEL_NAIVEBAYES_NBAYESINPUT_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <type_traits>
#include <vector>

#include "host/Xml.h"
#include "naivebayes/NBayesInputBase.h"
#include "persistence/Fields.h"

class INBEncoder;
class INBVariable;

/// The table of one predictor of the model. Held by value; a copy shares the borrowed variable.
class NBayesInput : public NBayesInputBase {
 public:
    using NBayesInputBase::NBayesInputBase;

    /// Sizes the table for the variable's categories and this many target categories, all 0.
    /// variable: borrowed from the variable list. varIndex: its index there. recordIndex: where its
    /// code stands in a prepared record.
    void Setup(const INBVariable& variable, std::int32_t numTargetCategories, std::int32_t varIndex,
               std::int32_t recordIndex);

    /// Forms the probabilities with 1/totalWeight as the smoothing constant. Returns the rows that
    /// hold weight.
    std::int32_t UpdateProbabilities(double totalWeight) {
        return ComputeProbabilities(1.0 / totalWeight);
    }
    /// An earlier predictor was dropped.
    void DecrementAdjustedIndex() { --fAdjustedRecordIndex; }

    /// Adds the table of the same predictor in another model and forms the probabilities anew. The
    /// encoders give the other side's codes their meaning; this side's learns values that it lacks.
    /// Null encoders: the codes mean the same on both sides. targetCodeMap: this side's target code
    /// for each of the other's. Counts of codes that map to nothing are left out.
    /// numTargetCategories and totalWeight are those of the merged target. Returns the number of
    /// categories.
    std::int32_t MergeFrom(const NBayesInput& other, INBEncoder* thisEncoder,
                           const INBEncoder* otherEncoder, std::int32_t numTargetCategories,
                           const std::vector<std::int32_t>& targetCodeMap, double totalWeight);

    /// The PMML element with the counts. Categories without weight are left out, and the bins of a
    /// continuous predictor are closed up to match. REQUIRES: the variable is set.
    std::unique_ptr<MCCommonXML::XMLElement> MakePMML(const INBEncoder& targetEncoder) const;

    /// Borrowed from the variable list; null after a restore until SetVariable.
    const INBVariable* GetVariable() const { return fpVariable; }
    void SetVariable(const INBVariable* variable) { fpVariable = variable; }
    /// Index in the variable list; -1 in a table that was never set up.
    std::int32_t GetVarIndex() const { return fVarIndex; }
    /// Where the predictor's code stands in a prepared record.
    std::int32_t GetRecordIndex() const { return fRecordIndex; }
    /// The same since predictors before it were dropped.
    std::int32_t GetAdjustedRecordIndex() const { return fAdjustedRecordIndex; }

    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);
    void Display(std::ostream& out) const;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        using Table = std::remove_reference_t<Self>;
        archive(kSaved, self.fVarIndex, self.fAdjustedRecordIndex, self.fNumCategories,
                self.fNumNonEmpty, self.fNumTargetCategories, Rows<Table>{self});
        // One index is saved: a restored model stands as if its predictors had been all there were.
        if constexpr (Archive::kRestores) self.fRecordIndex = self.fAdjustedRecordIndex;
    }

 private:
    /// The bins of a continuous predictor as PMML. REQUIRES: the variable has a binning encoder.
    void AddDiscretize(MCCommonXML::XMLElement& bayesInput) const;

    static constexpr Persistence::SavedClass kSaved{
        "NBIN", "NBayesInput", "Error reading NBayesInput!\n", "Failure reading NBayesInput!\n"};

    const INBVariable* fpVariable = nullptr;  // borrowed from the variable list, not saved
    std::int32_t fVarIndex = -1;
    std::int32_t fRecordIndex = -1;
    std::int32_t fAdjustedRecordIndex = -1;
};

#endif  // PREDSEL_NAIVEBAYES_NBAYESINPUT_H

#ifndef PREDSEL_FEATURESELECT_FSCATACCUM_H
#define PREDSEL_FEATURESELECT_FSCATACCUM_H

#include <span>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSCategoricalAccum.h"

/// Category counts of a categorical predictor when there is no target: screening only.
class FSCatAccum : public FSCategoricalAccum {
 public:
    void AddPair(double predictor, double target, double weight, bool track) override;
    void AddValue(double value, double weight, bool track) override;
    void FinishData() override {}
    /// No criterion: the outputs stay as they are.
    void ComputeCriterion(std::int32_t criterion, double& value, double& tieBreak1,
                          double& tieBreak2, double& extra1, double& extra2) const override;
    FSTestResult Test(std::int32_t) const override { return {}; }
    bool GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                double& third, double& fourth) const override;
    void Display(std::ostream& out) const override;
    void AppendExact(std::string& bytes) const override;

    /// Adds the records of a block for each of the parts, whose accumulators are all of this class.
    static void AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases);

    void MergeFrom(const FSCatAccum& other) { MergeCounts(other); }

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;

    static constexpr Persistence::SavedClass kSaved{"CAPRE", "FSCatAccum"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fProcessed, self.fMissing, self.fFirstCategory, self.fConstant,
                self.fPredCounts);
    }

 private:
    friend class FSCategoricalAccum;
    template <class Entry>
    void AddEntries(std::span<const Entry> entries, std::uint32_t entryEnd,
                    const FSBlockCases& cases);
};

#endif  // PREDSEL_FEATURESELECT_FSCATACCUM_H

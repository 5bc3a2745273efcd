#ifndef PREDSEL_FEATURESELECT_FSCATPCATTACCUM_H
#define PREDSEL_FEATURESELECT_FSCATPCATTACCUM_H

#include <span>
#include <vector>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSCategoricalAccum.h"
#include "featureselect/FSCrosstab.h"
#include "featureselect/FSMapPiCnt.h"

/// The crosstab of a categorical predictor with a categorical target, for the criteria 0 to 3.
class FSCatPCatTAccum : public FSCategoricalAccum {
 public:
    void AddPair(double predictor, double target, double weight, bool track) override;
    void AddValue(double value, double weight, bool track) override;
    void FinishData() override {}
    /// Pearson and likelihood ratio chi-square: p-value, then statistic and degrees of freedom as
    /// tie-breakers; 1.0, 0, 0 when either variable has fewer than two categories. Cramer's V
    /// (1946): value, chi-square. Lambda (Goodman & Kruskal 1954), target from predictor: value,
    /// number of predictor categories.
    FSTestResult Test(std::int32_t criterion) const override;
    bool GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                double& third, double& fourth) const override;
    void Display(std::ostream& out) const override;
    void AppendExact(std::string& bytes) const override;

    /// Adds the records of a block for each of the parts, whose accumulators are all of this class.
    static void AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases);

    /// Adds the cases of a later partition; partition order counts for the first category.
    void MergeFrom(const FSCatPCatTAccum& other);

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;

    static constexpr Persistence::SavedClass kSaved{"CAPRA", "FSCatPCatTAccum"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fProcessed, self.fMissing, self.fFirstCategory, self.fConstant,
                self.fPredCounts, self.fTargetCounts, self.fPairCounts);
    }

 private:
    friend class FSCategoricalAccum;
    template <class Entry>
    void AddEntries(std::span<const Entry> entries, std::uint32_t entryEnd,
                    const FSBlockCases& cases);
    template <class Entry>
    void AddBySorting(std::span<const Entry> entries, const FSBlockCases& cases);
    struct BlockCounts;
    void TakeCounts(const BlockCounts& counts, const FSBlockCases& cases);
    FSCrosstab Crosstab() const;
    bool HasTable() const { return fPredCounts.Size() >= 2 && fTargetCounts.Size() >= 2; }
    double DegreesOfFreedom() const;
    void TestChiSquare(double statistic, FSTestResult& test) const;

    FSMapICnt fTargetCounts;  // weight per target category, of records with a valid predictor
    FSMapPiCnt fPairCounts;   // weight per pair; its margins are the other two tables
};

#endif  // PREDSEL_FEATURESELECT_FSCATPCATTACCUM_H

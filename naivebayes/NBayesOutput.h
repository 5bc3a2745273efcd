#ifndef PREDSEL_NAIVEBAYES_NBAYESOUTPUT_H
#define PREDSEL_NAIVEBAYES_NBAYESOUTPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <type_traits>
#include <vector>

#include "host/Xml.h"
#include "persistence/Fields.h"

class INBEncoder;
class INBVariable;

/// The table of the target: weight and records of each category, and the smoothed priors.
/// Categories that are handed in must be in range: the callers check.
class NBayesOutput {
 public:
    NBayesOutput() = default;
    /// Sizes the table for the target's categories, all 0. variable: borrowed from the variable
    /// list. varIndex: its index there.
    NBayesOutput(const INBVariable& variable, std::int32_t varIndex);
    virtual ~NBayesOutput() = default;
    NBayesOutput(const NBayesOutput&) = default;
    NBayesOutput(NBayesOutput&&) = default;
    NBayesOutput& operator=(const NBayesOutput&) = default;
    NBayesOutput& operator=(NBayesOutput&&) = default;

    /// Counts a record. The category's new weight.
    double AddRecord(std::int32_t category, double weight);
    /// Forms the priors from the weights. With t = 1/totalWeight, N = totalWeight and K' the
    /// categories that hold weight,
    ///     Pi[k] = (t + weight[k]) / (N + K' * t),
    /// for categories without weight too. Returns K'.
    std::int32_t ComputePriors(double totalWeight);
    /// All counts and priors become 0.
    void Clear();

    /// Adds the target table of another model and forms the priors anew. The encoders give the
    /// other side's codes their meaning; this side's learns values that it lacks. Null encoders:
    /// the codes mean the same on both sides. codeMapOut takes this side's code for each of the
    /// other's, -1 where there is none; its counts are left out. totalWeightOut takes the weight of
    /// all categories.
    void MergeFrom(const NBayesOutput& other, INBEncoder* thisEncoder,
                   const INBEncoder* otherEncoder, std::vector<std::int32_t>& codeMapOut,
                   double& totalWeightOut);

    /// The PMML element with the counts, categories without weight included. REQUIRES: the variable
    /// is set and has an encoder.
    std::unique_ptr<MCCommonXML::XMLElement> MakePMML() const;

    /// Borrowed from the variable list; null after a restore until SetVariable.
    const INBVariable* GetVariable() const { return fpVariable; }
    void SetVariable(const INBVariable* variable) { fpVariable = variable; }
    /// Index in the variable list; -1 in a table that was never set up.
    std::int32_t GetVarIndex() const { return fVarIndex; }
    /// -1 in a table that was never set up.
    std::int32_t GetNumCategories() const { return fNumCategories; }
    double GetWeightedCount(std::int32_t category) const {
        return fWeightedCounts[static_cast<std::size_t>(category)];
    }
    std::int32_t GetUnweightedCount(std::int32_t category) const {
        return fUnweightedCounts[static_cast<std::size_t>(category)];
    }
    double GetPi(std::int32_t category) const { return fPi[static_cast<std::size_t>(category)]; }
    const std::vector<double>& GetWeightedCounts() const { return fWeightedCounts; }
    const std::vector<std::int32_t>& GetUnweightedCounts() const { return fUnweightedCounts; }
    /// The priors of all categories.
    const std::vector<double>& GetPi() const { return fPi; }

    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);
    virtual void Display(std::ostream& out) const;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        using Table = std::remove_reference_t<Self>;
        archive(kSaved, self.fVarIndex, self.fNumCategories, Entries<Table>{self});
    }

 private:
    /// The categories as they are saved: weight, records and prior of one after the other.
    template <class Table>
    struct Entries {
        Table& fTable;

        template <class Self, class Archive>
        static void Fields(Self&& entries, Archive& archive);
    };

    // The last letter of the tag is read and not compared. Intended: states whose tag differs there
    // are read.
    static constexpr Persistence::SavedClass kSaved{"NBOUT", "NBayesOutput",
                                                    "Error reading NBayesOutput!\n",
                                                    "Failure reading NBayesOutput!\n", 4};

    const INBVariable* fpVariable = nullptr;  // borrowed from the variable list, not saved
    std::int32_t fVarIndex = -1;
    std::int32_t fNumCategories = -1;
    std::vector<double> fWeightedCounts;
    std::vector<std::int32_t> fUnweightedCounts;
    std::vector<double> fPi;
};

template <class Table>
template <class Self, class Archive>
void NBayesOutput::Entries<Table>::Fields(Self&& entries, Archive& archive) {
    Table& table = entries.fTable;
    auto count = static_cast<std::int32_t>(table.fPi.size());
    archive.Items(count);
    if constexpr (Archive::kRestores) {
        // A table that was never set up has -1 categories and no entries.
        archive.Require(table.fNumCategories >= -1);
        archive.Require(count == std::max(table.fNumCategories, 0));
        table.fWeightedCounts.clear();
        table.fUnweightedCounts.clear();
        table.fPi.clear();
        for (std::int32_t k = 0; k < count; ++k) {
            double weighted = 0.0;
            std::int32_t unweighted = 0;
            double prior = 0.0;
            archive.Items(weighted, unweighted, prior);
            table.fWeightedCounts.push_back(weighted);
            table.fUnweightedCounts.push_back(unweighted);
            table.fPi.push_back(prior);
        }
    } else {
        for (std::size_t k = 0; k < table.fPi.size(); ++k) {
            archive.Items(table.fWeightedCounts[k], table.fUnweightedCounts[k], table.fPi[k]);
        }
    }
}

#endif  // PREDSEL_NAIVEBAYES_NBAYESOUTPUT_H

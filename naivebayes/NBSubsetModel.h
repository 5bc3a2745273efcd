#ifndef PREDSEL_NAIVEBAYES_NBSUBSETMODEL_H
#define PREDSEL_NAIVEBAYES_NBSUBSETMODEL_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "naivebayes/NBDoubleDouble.h"
#include "naivebayes/NBExactMixtures.h"

class NBayesInput;
class NBayesOutput;

/// The probabilities of a search, laid out for its inner loop. Nothing in it changes.
///
/// A row of a table holds P(predictor category | target category k) for each k; row 0 is that of a
/// missing code, all 1, row m + 1 that of category m. Rows are filled up to groups of four.
class NBSubsetModel {
 public:
    /// Four numbers that are read at once.
    struct alignas(32) Group {
        double fValues[4] = {0.0, 0.0, 0.0, 0.0};
    };

    /// Copies the probabilities. A predictor is named by its position in inputs, its table index.
    NBSubsetModel(const std::vector<NBayesInput>& inputs, const NBayesOutput& output);

    /// Whether a code names a category: neither missing nor unknown, which is -1.
    static bool IsValid(double code) { return code > -1.0; }
    /// The row of a code. Codes are whole numbers, and 0.45 bears their rounding; one that is not
    /// must not leave its table.
    static std::uint32_t Row(double code, std::uint32_t numCategories) {
        if (!IsValid(code)) return 0;
        return code + 0.45 < numCategories ? static_cast<std::uint32_t>(code + 0.45) + 1
                                           : numCategories;
    }

    std::size_t GetNumTables() const { return fvTables.size(); }
    std::size_t GetNumTargets() const { return fvPriors.size(); }
    std::int32_t GetNumCategories(std::size_t table) const {
        return fvTables[table].fNumCategories;
    }
    /// Pi by target category.
    const std::vector<double>& GetPriors() const { return fvPriors; }
    /// Groups a row.
    std::size_t GetWidth() const { return fWidth; }
    /// Numbers a row.
    std::size_t GetStride() const { return fWidth * 4; }
    const double* GetRows(std::size_t table) const { return fvTables[table].fvRows[0].fValues; }
    /// The probabilities to 106 bits, in the same shape: as the counts give them, where the numbers
    /// above are those of the counts but for rounding, else those.
    NBExactMixtures::ConstProducts GetExactRows(std::size_t table) const {
        return {fvTables[table].fvHigh[0].fValues, fvTables[table].fvLow[0].fValues};
    }
    /// Pi by target category, likewise.
    const std::vector<NBDoubleDouble>& GetExactPriors() const { return fvExactPriors; }
    /// The largest relative difference of the two forms of a probability or prior.
    double GetRounding() const { return fRounding; }
    /// NBMixtures::Operands::fSafeRun for weights of which the largest is from 1 to 2.
    std::size_t GetSafeRun(std::size_t table) const { return fvTables[table].fSafeRun; }
    /// Whether all probabilities are from kLowest to 1, as those of all but absurd weights are.
    /// Only then do products keep their meaning when they are scaled.
    bool IsModerate() const { return fbModerate; }

    /// The binary exponent of the lowest moderate probability.
    static constexpr int kLowestExponent = -200;

 private:
    struct Table {
        std::int32_t fNumCategories = 0;
        std::size_t fSafeRun = 1;
        std::vector<Group> fvRows;
        std::vector<Group> fvHigh;
        std::vector<Group> fvLow;
    };

    /// Fills a table's exact rows. threshold: 1/N.
    void FillExactRows(const NBayesInput& input, const NBDoubleDouble& threshold, Table& table);
    /// A probability by the counts, if `rounded` is that but for rounding.
    NBDoubleDouble Exact(const NBDoubleDouble& byCounts, double rounded);

    std::vector<double> fvPriors;
    std::vector<NBDoubleDouble> fvExactPriors;
    double fRounding = 0.0;
    std::size_t fWidth;
    std::vector<Table> fvTables;
    bool fbModerate = true;
};

#endif  // PREDSEL_NAIVEBAYES_NBSUBSETMODEL_H

#ifndef PREDSEL_NAIVEBAYES_NBAYESINPUTBASE_H
#define PREDSEL_NAIVEBAYES_NBAYESINPUTBASE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <utility>
#include <vector>

/// A predictor's contingency table against the target, and the smoothed conditional probabilities
/// made from it. Rows are predictor categories, columns target categories; it is given codes and
/// weights and knows nothing of raw values.
///
/// Codes that are handed in must be in range: the callers check.
class NBayesInputBase {
 public:
    using Matrix = std::vector<std::vector<double>>;

    NBayesInputBase() = default;
    /// All counts and probabilities are 0. Both numbers at least 0.
    NBayesInputBase(std::int32_t numCategories, std::int32_t numTargetCategories);
    virtual ~NBayesInputBase() = default;
    NBayesInputBase(const NBayesInputBase&) = default;
    NBayesInputBase(NBayesInputBase&&) = default;
    NBayesInputBase& operator=(const NBayesInputBase&) = default;
    NBayesInputBase& operator=(NBayesInputBase&&) = default;

    /// All counts and probabilities become 0; the shape stays.
    void ClearCounts();
    /// Adds the weight of a record. The cell's new count.
    double AddCount(std::int32_t category, std::int32_t targetCategory, double weight);
    /// Adds to a cell what add(count) makes of it.
    template <class Add>
    void AddRecords(std::int32_t category, std::int32_t targetCategory, Add add) {
        add(fCounts[static_cast<std::size_t>(category)][static_cast<std::size_t>(targetCategory)]);
    }
    /// Forms the probabilities from the counts. threshold is the smoothing constant, 1/N with N the
    /// total training weight. With C[k] the column sums and R the rows that hold weight,
    ///     P[m][k] = (n[m][k] + threshold) / (C[k] + R * threshold).
    /// R leaves out empty rows, so a column with such rows sums to slightly above 1. Intended: do
    /// not renormalise. Without weight anywhere all probabilities are the threshold. Returns R.
    std::int32_t ComputeProbabilities(double threshold);
    /// Takes these counts, one row a category; shorter rows are filled up with 0. Forms the
    /// probabilities and returns the rows that hold weight.
    std::int32_t SetCounts(double threshold, const Matrix& counts);

    /// Rows; -1 in a table that was never set up.
    std::int32_t GetNumCategories() const { return fNumCategories; }
    /// Rows that held weight when the probabilities were last formed.
    std::int32_t GetNumNonEmpty() const { return fNumNonEmpty; }
    /// Cells of a row; -1 in a table that was never set up.
    std::int32_t GetNumTargetCategories() const { return fNumTargetCategories; }
    /// Whether the category holds weight now.
    bool IsFilled(std::size_t category) const;
    /// Weights by predictor category, then target category.
    const Matrix& GetCounts() const { return fCounts; }
    /// P(predictor category | target category), in the same shape.
    const Matrix& GetProbabilities() const { return fProbabilities; }
    double GetProbability(std::int32_t category, std::int32_t targetCategory) const {
        return fProbabilities[static_cast<std::size_t>(category)]
                             [static_cast<std::size_t>(targetCategory)];
    }

    void Display(std::ostream& out) const;

 protected:
    /// Both matrices get this shape, filled with 0.
    void SetShape(std::int32_t numCategories, std::int32_t numTargetCategories);
    /// Raises the shape and keeps what the cells hold; a smaller number changes nothing.
    void ExtendShape(std::int32_t numCategories, std::int32_t numTargetCategories);
    /// The three numbers, then a line for each matrix row by row.
    void DisplayTable(std::ostream& out, const char* probabilityName) const;

    /// The cells as they are saved: row by row, each count with its probability.
    template <class Table>
    struct Rows {
        Table& fTable;

        template <class Self, class Archive>
        static void Fields(Self&& rows, Archive& archive);
    };

    std::int32_t fNumCategories = -1;
    std::int32_t fNumNonEmpty = 0;
    std::int32_t fNumTargetCategories = -1;
    Matrix fCounts;
    Matrix fProbabilities;
};

template <class Table>
template <class Self, class Archive>
void NBayesInputBase::Rows<Table>::Fields(Self&& rows, Archive& archive) {
    Table& table = rows.fTable;
    auto numRows = static_cast<std::int32_t>(table.fCounts.size());
    archive.Items(numRows);
    if constexpr (Archive::kRestores) {
        // A table that was never set up has -1 of both, and no rows.
        archive.Require(table.fNumCategories >= -1 && table.fNumTargetCategories >= -1);
        archive.Require(numRows == std::max(table.fNumCategories, 0));
        table.fCounts.clear();
        table.fProbabilities.clear();
        for (std::int32_t m = 0; m < numRows; ++m) {
            std::int32_t length = 0;
            archive.Items(length);
            archive.Require(length == std::max(table.fNumTargetCategories, 0));
            std::vector<double> counts;
            std::vector<double> probabilities;
            for (std::int32_t k = 0; k < length; ++k) {
                double count = 0.0;
                double probability = 0.0;
                archive.Items(count, probability);
                counts.push_back(count);
                probabilities.push_back(probability);
            }
            table.fCounts.push_back(std::move(counts));
            table.fProbabilities.push_back(std::move(probabilities));
        }
    } else {
        for (std::size_t m = 0; m < table.fCounts.size(); ++m) {
            const auto length = static_cast<std::int32_t>(table.fCounts[m].size());
            archive.Items(length);
            for (std::size_t k = 0; k < table.fCounts[m].size(); ++k) {
                archive.Items(table.fCounts[m][k], table.fProbabilities[m][k]);
            }
        }
    }
}

#endif  // PREDSEL_NAIVEBAYES_NBAYESINPUTBASE_H

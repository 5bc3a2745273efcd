#ifndef PREDSEL_NAIVEBAYES_NBOUTPUTSTATISTICS_H
#define PREDSEL_NAIVEBAYES_NBOUTPUTSTATISTICS_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

/// How observed and predicted target categories meet over many records, in weights.
class NBOutputStatistics {
 public:
    NBOutputStatistics() = default;
    explicit NBOutputStatistics(std::int32_t numCategories) { Reset(numCategories); }

    /// Empties the table and gives it this many categories. Throws as std::vector does when memory
    /// does not suffice, here and in the next; the table is then as it was.
    void Reset(std::int32_t numCategories);
    /// Gives the table further categories behind its own, without counts.
    void Extend(std::int32_t numCategories);
    /// A further record. Its error joins the running percentage. Both codes in range.
    void Add(std::int32_t observed, std::int32_t predicted, double weight);
    /// The same without the percentage, which SetErrorPercent then sets for all.
    void AddCell(std::int32_t observed, std::int32_t predicted, double weight);
    void SetErrorPercent(double percent) { fErrorPercent = percent; }

    std::int32_t GetNumCategories() const { return fNumCategories; }
    double GetTotalWeight() const { return fTotalWeight; }
    /// Percent of incorrect predictions, from 0 to 100.
    double GetErrorPercent() const { return fErrorPercent; }
    /// -1.0 for any index out of range.
    double GetCell(std::int32_t observed, std::int32_t predicted) const;
    /// One row an observed category; empty without categories.
    std::vector<std::vector<double>> GetMatrix() const;
    /// As long as there are categories, all 0 for an index out of range.
    std::vector<double> GetRow(std::int32_t observed) const;
    void Display(std::ostream& out) const;

 private:
    std::int32_t fNumCategories = 0;
    double fTotalWeight = 0.0;
    double fErrorPercent = 0.0;
    std::vector<double> fMatrix;  // observed * fNumCategories + predicted
};

#endif  // PREDSEL_NAIVEBAYES_NBOUTPUTSTATISTICS_H

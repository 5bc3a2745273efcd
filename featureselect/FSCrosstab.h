#ifndef PREDSEL_FEATURESELECT_FSCROSSTAB_H
#define PREDSEL_FEATURESELECT_FSCROSSTAB_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "featureselect/FSDoubleDouble.h"

class FSOrderFreeSum;

/// Association of the rows and columns of a crosstab. Every measure is computed to about 30 digits
/// and rounded to a double once, in sums that know no order of the categories: tables that differ
/// in the names or the order of their categories, or are equal in mathematics otherwise, give the
/// same bits.
///
/// n are the weights of the cells, r and c those of rows and columns, N of all, e = r * c / N.
/// A cell that holds nothing has n = 0; only the others are stored and walked. With a weight that
/// is infinite all results are NaN or nothing.
class FSCrosstab {
 public:
    struct Cell {
        std::uint32_t fRow = 0;
        std::uint32_t fColumn = 0;
        double fWeight = 0;  // n, above 0
    };

    /// Cells in any order, no two at one place, with rows and columns below the numbers given.
    FSCrosstab(std::vector<Cell> cells, std::size_t rows, std::size_t columns);

    /// Pearson's chi-square, the sum of (n - e)^2 / e over all cells, and its share of N.
    struct Pearson {
        double fChiSquare = 0;
        FSDoubleDouble fMeanSquare;

        /// Cramer's V (1946), sqrt(mean square / smaller); smaller, above 0, is the lesser of the
        /// numbers of rows and columns minus 1.
        double CramersV(std::int32_t smaller) const;
    };
    Pearson ChiSquare() const;
    /// The likelihood ratio chi-square, 2 * sum of n * log(n / e), taken as that of
    /// n * log(n / e) - (n - e), which is the same sum with no term below 0: nothing cancels where
    /// rows and columns are nearly independent.
    double LikelihoodRatio() const;
    /// How much better a column is guessed when the row is known (Goodman & Kruskal 1954): with L
    /// the sum of the largest weight of each row and M the largest c, (L - M) / (N - M). Nothing
    /// unless N - M is above 0.
    std::optional<double> Lambda() const;

 private:
    // r * c of every cell that holds nothing: its term of either statistic, times N.
    void AddEmptyCells(FSOrderFreeSum& sum) const;
    // A chi-square of the weights as they were given.
    double Unscaled(const FSDoubleDouble& chiSquare) const;
    FSDoubleDouble Row(const Cell& cell) const { return fvRows[cell.fRow]; }
    FSDoubleDouble Column(const Cell& cell) const { return fvColumns[cell.fColumn]; }

    // In any order where all sums are exact, else ascending by the weight of the column.
    std::vector<Cell> fvCells;
    std::vector<FSDoubleDouble> fvRows;     // r
    std::vector<FSDoubleDouble> fvColumns;  // c
    FSDoubleDouble fTotal;                  // N
    // All weights above are those given times 2^-fPower, the largest cell being from 1 up to 2, so
    // that products of four of them stay in the range of doubles.
    int fPower = 0;
};

#endif  // PREDSEL_FEATURESELECT_FSCROSSTAB_H

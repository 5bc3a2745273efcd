#include "featureselect/FSCrosstab.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "featureselect/FSDoubleDoubleLog.h"
#include "featureselect/FSOrderFreeSum.h"

namespace {

// A cell that is smaller than the largest by this power of two could show in no result, and its
// products would leave the range of doubles.
constexpr int kNegligible = 400;

using Cells = std::vector<FSCrosstab::Cell>;

// Whole weights up to 2^53 in all: their sums are exact, whatever the order.
bool AddUpExactly(const Cells& cells) {
    constexpr double kExactlyWhole = 9007199254740992.0;
    double sum = 0.0;
    for (const FSCrosstab::Cell& cell : cells) {
        sum += cell.fWeight;
        if (std::floor(cell.fWeight) != cell.fWeight) return false;
    }
    return sum <= kExactlyWhole;
}

}  // namespace

FSCrosstab::FSCrosstab(Cells cells, std::size_t rows, std::size_t columns)
    : fvCells(std::move(cells)), fvRows(rows), fvColumns(columns) {
    if (fvCells.empty()) return;
    const auto byWeight = [](const Cell& a, const Cell& b) { return a.fWeight < b.fWeight; };
    const double largest = std::max_element(fvCells.begin(), fvCells.end(), byWeight)->fWeight;
    if (!std::isfinite(largest)) {
        fvCells.clear();
        fTotal = std::numeric_limits<double>::quiet_NaN();
        return;
    }
    // Cells of equal weight may change places: that changes no sum.
    const bool exact = AddUpExactly(fvCells);
    if (!exact) std::sort(fvCells.begin(), fvCells.end(), byWeight);
    fPower = std::ilogb(largest);
    const double negligible = std::ldexp(1.0, fPower - kNegligible);
    std::erase_if(fvCells, [=](const Cell& cell) { return cell.fWeight < negligible; });
    for (Cell& cell : fvCells) {
        cell.fWeight = std::ldexp(cell.fWeight, -fPower);
        fvRows[cell.fRow] = fvRows[cell.fRow] + cell.fWeight;
        fvColumns[cell.fColumn] = fvColumns[cell.fColumn] + cell.fWeight;
        fTotal = fTotal + cell.fWeight;
    }
    if (exact) return;
    std::sort(fvCells.begin(), fvCells.end(), [this](const Cell& a, const Cell& b) {
        const FSDoubleDouble first = Column(a);
        const FSDoubleDouble second = Column(b);
        return first.High() != second.High() ? first.High() < second.High()
                                             : first.Low() < second.Low();
    });
}

double FSCrosstab::Unscaled(const FSDoubleDouble& chiSquare) const {
    return chiSquare.TimesPowerOfTwo(fPower).High();
}

// Of a row it is r times the weight of all columns where the row holds nothing.
void FSCrosstab::AddEmptyCells(FSOrderFreeSum& sum) const {
    if (fvCells.size() == fvRows.size() * fvColumns.size()) return;
    std::vector<FSDoubleDouble> occupied(fvRows.size());
    std::vector<std::size_t> empty(fvRows.size(), fvColumns.size());
    for (const Cell& cell : fvCells) {
        occupied[cell.fRow] = occupied[cell.fRow] + Column(cell);
        --empty[cell.fRow];
    }
    for (std::size_t row = 0; row < fvRows.size(); ++row) {
        if (empty[row] > 0) sum.Add(fvRows[row] * (fTotal - occupied[row]));
    }
}

// The mean square is the sum of (n * N - r * c)^2 / (r * c), divided by N^2. Whole weights have
// exact products below 2^106, so that their difference is exact before it is rounded to 31 digits.
FSCrosstab::Pearson FSCrosstab::ChiSquare() const {
    FSOrderFreeSum sum;
    sum.Reserve(fvCells.size() + fvRows.size());
    for (const Cell& cell : fvCells) {
        const FSDoubleDouble product = Row(cell) * Column(cell);
        const FSDoubleDouble excess = fTotal * cell.fWeight - product;
        sum.Add(excess * excess / product);
    }
    AddEmptyCells(sum);
    const FSDoubleDouble perWeight = sum.Total() / fTotal;
    return {Unscaled(perWeight), perWeight / fTotal};
}

double FSCrosstab::Pearson::CramersV(std::int32_t smaller) const {
    const FSDoubleDouble square = fMeanSquare / smaller;
    return square.High() > 0.0 ? square.SquareRoot().High() : 0.0;
}

// The terms times N. With s = (n * N - r * c) / (n * N + r * c) a term is
// (n * N + r * c) * AtanhExcess(s).
double FSCrosstab::LikelihoodRatio() const {
    FSOrderFreeSum sum;
    sum.Reserve(fvCells.size() + fvRows.size());
    for (const Cell& cell : fvCells) {
        const FSDoubleDouble observed = fTotal * cell.fWeight;
        const FSDoubleDouble expected = Row(cell) * Column(cell);
        const FSDoubleDouble excess = observed - expected;
        const FSDoubleDouble both = observed + expected;
        if (std::abs(excess.High()) <= kSmallAtanh * both.High()) {
            sum.Add(both * AtanhExcess(excess / both));
        } else {
            sum.Add(observed * LogOfRatio(observed, expected) - excess);
        }
    }
    AddEmptyCells(sum);
    return Unscaled(sum.Total() / fTotal * 2.0);
}

// L - M, row by row: what the largest cell of a row has beyond the one in the largest column.
std::optional<double> FSCrosstab::Lambda() const {
    std::size_t mode = 0;
    for (std::size_t column = 1; column < fvColumns.size(); ++column) {
        if ((fvColumns[column] - fvColumns[mode]).High() > 0.0) mode = column;
    }
    if (fvColumns.empty()) return std::nullopt;
    const FSDoubleDouble wrong = fTotal - fvColumns[mode];
    if (!(wrong.High() > 0.0)) return std::nullopt;
    std::vector<double> largest(fvRows.size());
    std::vector<double> guessed(fvRows.size());
    for (const Cell& cell : fvCells) {
        largest[cell.fRow] = std::max(largest[cell.fRow], cell.fWeight);
        if (cell.fColumn == mode) guessed[cell.fRow] = cell.fWeight;
    }
    FSOrderFreeSum gain;
    gain.Reserve(fvRows.size());
    for (std::size_t row = 0; row < fvRows.size(); ++row) {
        gain.Add(FSDoubleDouble::ExactSum(largest[row], -guessed[row]));
    }
    return (gain.Total() / wrong).High();
}

#include "naivebayes/NBayesInputBase.h"

#include <numeric>
#include <ostream>

#include "persistence/Display.h"

NBayesInputBase::NBayesInputBase(std::int32_t numCategories, std::int32_t numTargetCategories) {
    SetShape(numCategories, numTargetCategories);
}

void NBayesInputBase::SetShape(std::int32_t numCategories, std::int32_t numTargetCategories) {
    fNumCategories = numCategories;
    fNumNonEmpty = 0;
    fNumTargetCategories = numTargetCategories;
    fCounts.clear();
    fProbabilities.clear();
    ExtendShape(numCategories, numTargetCategories);
}

void NBayesInputBase::ExtendShape(std::int32_t numCategories, std::int32_t numTargetCategories) {
    fNumCategories = std::max(fNumCategories, numCategories);
    fNumTargetCategories = std::max(fNumTargetCategories, numTargetCategories);
    for (Matrix* matrix : {&fCounts, &fProbabilities}) {
        matrix->resize(static_cast<std::size_t>(std::max(fNumCategories, 0)));
        for (std::vector<double>& row : *matrix) {
            row.resize(static_cast<std::size_t>(std::max(fNumTargetCategories, 0)), 0.0);
        }
    }
}

void NBayesInputBase::ClearCounts() { SetShape(fNumCategories, fNumTargetCategories); }

double NBayesInputBase::AddCount(std::int32_t category, std::int32_t targetCategory,
                                 double weight) {
    double& count =
        fCounts[static_cast<std::size_t>(category)][static_cast<std::size_t>(targetCategory)];
    count += weight;
    return count;
}

bool NBayesInputBase::IsFilled(std::size_t category) const {
    const std::vector<double>& row = fCounts[category];
    return std::accumulate(row.begin(), row.end(), 0.0) > 0.0;
}

std::int32_t NBayesInputBase::ComputeProbabilities(double threshold) {
    // Sized by a row: of a restored table without rows only the number of cells is known.
    std::vector<double> columnSums(fCounts.empty() ? 0 : fCounts.front().size(), 0.0);
    fNumNonEmpty = 0;
    for (std::size_t m = 0; m < fCounts.size(); ++m) {
        for (std::size_t k = 0; k < columnSums.size(); ++k) columnSums[k] += fCounts[m][k];
        if (IsFilled(m)) ++fNumNonEmpty;
    }
    for (std::size_t m = 0; m < fCounts.size(); ++m) {
        for (std::size_t k = 0; k < columnSums.size(); ++k) {
            fProbabilities[m][k] =
                fNumNonEmpty < 1
                    ? threshold
                    : (fCounts[m][k] + threshold) / (columnSums[k] + fNumNonEmpty * threshold);
        }
    }
    return fNumNonEmpty;
}

std::int32_t NBayesInputBase::SetCounts(double threshold, const Matrix& counts) {
    std::size_t longest = 0;
    for (const std::vector<double>& row : counts) longest = std::max(longest, row.size());
    SetShape(static_cast<std::int32_t>(counts.size()), static_cast<std::int32_t>(longest));
    for (std::size_t m = 0; m < counts.size(); ++m) {
        std::copy(counts[m].begin(), counts[m].end(), fCounts[m].begin());
    }
    return ComputeProbabilities(threshold);
}

void NBayesInputBase::DisplayTable(std::ostream& out, const char* probabilityName) const {
    out << "Number of categories: " << fNumCategories << ", non-empty categories: " << fNumNonEmpty
        << ", target categories: " << fNumTargetCategories << '\n';
    for (std::size_t m = 0; m < fCounts.size(); ++m) {
        out << "Category " << m << ": \n";
        Persistence::DisplayVector(out, "Counts  ", fCounts[m]);
        Persistence::DisplayVector(out, probabilityName, fProbabilities[m]);
    }
}

void NBayesInputBase::Display(std::ostream& out) const {
    out << "Begin NBayesInputBase object. \n";
    DisplayTable(out, "Probability_{mk}^j");
    out << "End of NBayesInputBase display.\n";
}

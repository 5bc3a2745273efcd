// A lower bound for the forward search on a CSV file of categorical columns: reads it into codes,
// then finds the best predictors by their likelihood over all records, in products with one
// logarithm per 16 records. Prints each predictor and its average log-likelihood. SubsetFloor FILE
// [STEPS] [THREADS]
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "CsvFields.h"
#include "SideBySide.h"

namespace {

constexpr std::size_t kClasses = 3;
constexpr std::size_t kGroup = 16;

using Codes = std::vector<std::uint8_t>;
using Joint = std::array<std::vector<double>, kClasses>;

struct Candidate {
    std::string fName;
    Codes fCodes;
    std::array<std::array<double, kCodes>, kClasses> fProbability{};
    double fOwn = 0;  // the part of the likelihood that its table alone settles
};

struct Piece {
    std::vector<LevelCodes> fvLevels;
    std::vector<Codes> fvCodes;
};

// Columns of codes, every label with one code over all pieces.
std::vector<Codes> ReadCodes(const MappedTable& table, std::size_t threads) {
    const std::size_t columns = table.GetNames().size();
    const std::vector<std::string_view> texts = table.Pieces(threads);
    std::vector<Piece> pieces(threads);
    SideBySide(threads, threads, [&](std::size_t i) {
        Piece& piece = pieces[i];
        piece.fvLevels.resize(columns);
        piece.fvCodes.resize(columns);
        std::size_t column = 0;
        ForEachField(texts[i], [&](const char* first, const char* last, bool endsRow) {
            piece.fvCodes[column].push_back(
                static_cast<std::uint8_t>(piece.fvLevels[column](first, last)));
            column = endsRow ? 0 : column + 1;
        });
    });
    std::vector<Codes> codes(columns);
    SideBySide(threads, columns, [&](std::size_t j) {
        std::vector<std::string> labels;
        for (const Piece& piece : pieces) {
            std::array<std::uint8_t, kCodes> map{};
            map[kMissingCode] = kMissingCode;
            for (std::size_t l = 0; l < piece.fvLevels[j].GetLabels().size(); ++l) {
                const std::string& label = piece.fvLevels[j].GetLabels()[l];
                const auto found = std::find(labels.begin(), labels.end(), label);
                map[l] = static_cast<std::uint8_t>(found - labels.begin());
                if (found == labels.end()) labels.push_back(label);
            }
            for (const std::uint8_t code : piece.fvCodes[j]) codes[j].push_back(map[code]);
        }
    });
    return codes;
}

void Train(Candidate& candidate, const Codes& target) {
    std::array<std::array<std::uint32_t, kCodes>, kClasses> counts{};
    for (std::size_t i = 0; i < target.size(); ++i) ++counts[target[i]][candidate.fCodes[i]];
    const double threshold = 1.0 / static_cast<double>(target.size());
    double filled = 0;
    for (std::size_t l = 0; l < kMaxLevels; ++l) {
        filled += counts[0][l] + counts[1][l] + counts[2][l] > 0 ? 1 : 0;
    }
    for (std::size_t k = 0; k < kClasses; ++k) {
        const double sum = std::accumulate(counts[k].begin(), counts[k].begin() + kMaxLevels, 0.0);
        for (std::size_t l = 0; l < kMaxLevels; ++l) {
            candidate.fProbability[k][l] = (counts[k][l] + threshold) / (sum + filled * threshold);
            candidate.fOwn += counts[k][l] * std::log(candidate.fProbability[k][l]);
        }
        candidate.fProbability[k][kMissingCode] = 1.0;
    }
}

double LogOfSums(const Candidate& candidate, const Joint& joint) {
    const std::size_t records = candidate.fCodes.size();
    double sum = 0;
    for (std::size_t i = 0; i < records;) {
        const std::size_t end = std::min(records, i + kGroup);
        double product = 1;
        for (; i < end; ++i) {
            const std::size_t code = candidate.fCodes[i];
            double cell = 0;
            for (std::size_t k = 0; k < kClasses; ++k)
                cell += joint[k][i] * candidate.fProbability[k][code];
            product *= cell;
        }
        sum += std::log(product);
    }
    return sum;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const std::size_t steps = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 10;
    const std::size_t threads = argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 2;
    const MappedTable table(argv[1]);
    std::vector<Codes> columns = ReadCodes(table, threads);
    const Codes target = columns[table.TargetColumn()];
    const auto records = static_cast<double>(target.size());

    std::array<double, kClasses> classes{};
    for (const std::uint8_t k : target) {
        if (k >= kClasses) return 1;
        classes[k] += 1;
    }
    Joint joint;
    double own = 0;
    for (std::size_t k = 0; k < kClasses; ++k) {
        const double prior =
            (classes[k] + 1 / records) / (records + static_cast<double>(kClasses) / records);
        joint[k].assign(target.size(), prior);
        own += classes[k] * std::log(prior);
    }
    std::vector<Candidate> candidates;
    for (std::size_t j = 0; j < columns.size(); ++j) {
        if (j == table.TargetColumn()) continue;
        candidates.emplace_back().fName = table.GetNames()[j];
        candidates.back().fCodes = std::move(columns[j]);
    }
    SideBySide(threads, candidates.size(), [&](std::size_t j) { Train(candidates[j], target); });

    double divided = 0;  // logarithms of what has been divided out of joint
    for (std::size_t step = 0; step < steps && !candidates.empty(); ++step) {
        std::vector<double> scores(candidates.size());
        SideBySide(threads, candidates.size(), [&](std::size_t j) {
            scores[j] = own + candidates[j].fOwn - divided - LogOfSums(candidates[j], joint);
        });
        const auto best = std::max_element(scores.begin(), scores.end()) - scores.begin();
        const Candidate& found = candidates[static_cast<std::size_t>(best)];
        std::printf("%s,%.17g\n", found.fName.c_str(),
                    scores[static_cast<std::size_t>(best)] / records);
        own += found.fOwn;
        for (std::size_t i = 0; i < target.size(); ++i) {
            double sum = 0;
            for (std::size_t k = 0; k < kClasses; ++k) {
                sum += joint[k][i] *= found.fProbability[k][found.fCodes[i]];
            }
            divided += std::log(sum);
            for (std::size_t k = 0; k < kClasses; ++k) joint[k][i] /= sum;
        }
        candidates.erase(candidates.begin() + best);
    }
    return 0;
}

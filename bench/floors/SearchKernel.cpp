// The bare inner loop of the forward search, on one thread: a candidate's average log-likelihood
// over all records, three classes. Prints the nanoseconds of processor time a cell (record,
// candidate, class), first in products with one logarithm per 32 records, then with exponentials
// and a logarithm a record. SearchKernel [RECORDS] [REPEATS]
#include <time.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr std::size_t kClasses = 3;
constexpr std::size_t kLevels = 10;
constexpr std::size_t kGroup = 32;

struct Candidate {
    std::array<std::array<double, kLevels + 1>, kClasses> fProbability;
    std::array<std::array<double, kLevels + 1>, kClasses> fLogarithm;
};

using Columns = std::array<std::vector<double>, kClasses>;

double InProducts(const std::vector<std::uint8_t>& codes, const Columns& joint,
                  const Candidate& candidate) {
    double sum = 0;
    for (std::size_t i = 0; i < codes.size();) {
        const std::size_t end = std::min(codes.size(), i + kGroup);
        double product = 1;
        for (; i < end; ++i) {
            double cell = 0;
            for (std::size_t k = 0; k < kClasses; ++k) {
                cell += joint[k][i] * candidate.fProbability[k][codes[i]];
            }
            product *= cell;
        }
        sum += std::log(product);
    }
    return sum;
}

double InLogarithms(const std::vector<std::uint8_t>& codes, const Columns& logs,
                    const Candidate& candidate) {
    double sum = 0;
    for (std::size_t i = 0; i < codes.size(); ++i) {
        std::array<double, kClasses> cell{};
        for (std::size_t k = 0; k < kClasses; ++k)
            cell[k] = logs[k][i] + candidate.fLogarithm[k][codes[i]];
        const double most = std::max({cell[0], cell[1], cell[2]});
        double shares = 0;
        for (const double c : cell) shares += std::exp(c - most);
        sum += most + std::log(shares);
    }
    return sum;
}

double ProcessorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The fastest of the repeats: what the machine can do when nothing disturbs it.
template <class Kernel>
double Nanoseconds(std::size_t records, int repeats, double& result, const Kernel& kernel) {
    double best = HUGE_VAL;
    for (int r = 0; r < repeats; ++r) {
        const double start = ProcessorTime();
        result = kernel();
        best = std::min(best, ProcessorTime() - start);
    }
    return best * 1e9 / static_cast<double>(records * kClasses);
}

}  // namespace

int main(int argc, char** argv) {
    const std::size_t records = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 200000;
    const int repeats = argc > 2 ? std::atoi(argv[2]) : 50;
    std::mt19937_64 random(2026);
    std::uniform_real_distribution<double> uniform(0.05, 1.0);
    std::vector<std::uint8_t> codes(records);
    for (std::uint8_t& code : codes) code = static_cast<std::uint8_t>(random() % (kLevels + 1));
    Columns joint;
    Columns logs;
    for (std::size_t k = 0; k < kClasses; ++k) {
        for (std::size_t i = 0; i < records; ++i) {
            joint[k].push_back(uniform(random));
            logs[k].push_back(std::log(joint[k].back()));
        }
    }
    Candidate candidate{};
    for (std::size_t k = 0; k < kClasses; ++k) {
        for (std::size_t l = 0; l <= kLevels; ++l) {
            // The code behind the levels is the missing one, which leaves the product as it is.
            candidate.fProbability[k][l] = l == kLevels ? 1.0 : uniform(random) / kLevels;
            candidate.fLogarithm[k][l] = std::log(candidate.fProbability[k][l]);
        }
    }
    double products = 0;
    double logarithms = 0;
    const double inProducts = Nanoseconds(records, repeats, products,
                                          [&] { return InProducts(codes, joint, candidate); });
    const double inLogarithms = Nanoseconds(records, std::max(1, repeats / 10), logarithms,
                                            [&] { return InLogarithms(codes, logs, candidate); });
    if (!(std::abs(products - logarithms) <= 1e-10 * std::abs(logarithms))) {
        std::fprintf(stderr, "the two forms disagree: %.17g and %.17g\n", products, logarithms);
        return 1;
    }
    std::printf("{\"products\": %.4f, \"exponentials\": %.4f}\n", inProducts, inLogarithms);
    return 0;
}

// A lower bound for screening a CSV file: every cell is found, parsed and counted or summed by
// class in one pass, and nothing else is done. CsvFloor FILE [THREADS]
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "CsvFields.h"
#include "SideBySide.h"

namespace {

struct ColumnSums {
    char fKind = 'c';
    LevelCodes fCodes;
    std::array<std::array<std::uint32_t, kCodes>, kMaxClasses> fCounts{};
    std::array<double, kMaxClasses> fNumber{};
    std::array<double, kMaxClasses> fSum{};
    std::array<double, kMaxClasses> fSquares{};
    double fOrigin = 0;
    bool fbSeen = false;
};

void Count(std::string_view piece, std::vector<ColumnSums>& columns) {
    std::size_t column = 0;
    std::size_t target = 0;
    ForEachField(piece, [&](const char* first, const char* last, bool endsRow) {
        ColumnSums& sums = columns[column];
        if (sums.fKind == 'x') {
            if (first != last) {
                double value = ShortNumber(first, last);
                if (!sums.fbSeen) sums.fOrigin = value;
                sums.fbSeen = true;
                value -= sums.fOrigin;
                sums.fNumber[target] += 1;
                sums.fSum[target] += value;
                sums.fSquares[target] += value * value;
            }
        } else {
            const std::size_t code = sums.fCodes(first, last);
            if (sums.fKind == 'y') {
                target = code % kMaxClasses;
            } else {
                ++sums.fCounts[target][code];
            }
        }
        column = endsRow ? 0 : column + 1;
    });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const std::size_t threads = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 2;
    const MappedTable table(argv[1]);
    const std::vector<std::string_view> pieces = table.Pieces(threads);
    std::vector<std::vector<ColumnSums>> parts(threads);
    SideBySide(threads, threads, [&](std::size_t i) {
        parts[i].resize(table.GetNames().size());
        for (std::size_t j = 0; j < parts[i].size(); ++j)
            parts[i][j].fKind = table.GetNames()[j][0];
        Count(pieces[i], parts[i]);
    });
    // Everything counted is used, so that nothing can be left out.
    double cells = 0;
    double sum = 0;
    for (const std::vector<ColumnSums>& part : parts) {
        for (const ColumnSums& sums : part) {
            for (std::size_t k = 0; k < kMaxClasses; ++k) {
                for (std::size_t l = 0; l < kMaxLevels; ++l) cells += sums.fCounts[k][l];
                cells += sums.fNumber[k];
                sum += sums.fSum[k] + sums.fNumber[k] * sums.fOrigin + sums.fSquares[k] * 1e-300;
            }
        }
    }
    std::printf("%.0f valid cells, sum %.10g\n", cells, sum);
    return 0;
}

// A lower bound for screening a Parquet file through the Parquet library: indices of dictionaries
// are counted without making texts or numbers of them, doubles are decoded and summed by class, and
// nothing else is done. ParquetFloor FILE [THREADS] [decode]; with "decode" nothing is counted. A
// column is of the kind that its name begins with: y target, x scale, any other categorical.
#include <parquet/api/reader.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "SideBySide.h"

namespace {

constexpr std::size_t kMaxClasses = 4;
constexpr std::int64_t kBatch = 65536;
constexpr int kColumnsOfTask = 64;

using ClassCounts = std::array<std::int64_t, kMaxClasses>;

struct ColumnSums {
    std::mutex fMutex;
    std::map<std::string, ClassCounts> fCounts;
    ClassCounts fNumber{};
    std::array<double, kMaxClasses> fSum{};
};

struct Buffers {
    std::vector<std::int16_t> fValid = std::vector<std::int16_t>(kBatch);
    std::vector<std::int32_t> fIndices = std::vector<std::int32_t>(kBatch);
    std::vector<double> fNumbers = std::vector<double>(kBatch);
};

std::string Label(const parquet::ByteArray& text) {
    return {reinterpret_cast<const char*>(text.ptr), text.len};
}
std::string Label(std::int32_t number) { return std::to_string(number); }

// visit(first row, rows, valid cells) for each batch of indices, then finish(dictionary, length).
template <class Reader, class Visit, class Finish>
void ReadIndices(parquet::RowGroupReader& group, int column, Buffers& buffers, const Visit& visit,
                 const Finish& finish) {
    const auto reader = std::static_pointer_cast<Reader>(
        group.ColumnWithExposeEncoding(column, parquet::ExposedEncoding::DICTIONARY));
    if (reader->GetExposedEncoding() != parquet::ExposedEncoding::DICTIONARY) {
        throw std::runtime_error("a column has no dictionary");
    }
    const typename Reader::T* dictionary = nullptr;
    std::int32_t length = 0;
    for (std::int64_t row = 0; reader->HasNext();) {
        std::int64_t valid = 0;
        const typename Reader::T* words = nullptr;
        std::int32_t count = 0;
        const std::int64_t rows =
            reader->ReadBatchWithDictionary(kBatch, buffers.fValid.data(), nullptr,
                                            buffers.fIndices.data(), &valid, &words, &count);
        if (words != nullptr) {
            dictionary = words;
            length = count;
        }
        visit(row, rows, valid);
        row += rows;
    }
    finish(dictionary, length);
}

class Floor {
 public:
    Floor(const char* path, bool counts)
        : fPath(path),
          fbCounts(counts),
          fMetadata(Open()->metadata()),
          fvTarget(Groups()),
          fvSums(Columns()) {
        while (NameOf(fTargetColumn) != "y") ++fTargetColumn;
    }

    void Run(std::size_t threads) {
        const std::size_t stripes = (fvSums.size() + kColumnsOfTask - 1) / kColumnsOfTask;
        SideBySide(threads, Groups(), [&](std::size_t group) { ReadTarget(group); });
        SideBySide(threads, Groups() * stripes, [&](std::size_t task) {
            const auto first = static_cast<int>(task % stripes) * kColumnsOfTask;
            ReadStripe(task / stripes, first,
                       std::min(first + kColumnsOfTask, fMetadata->num_columns()));
        });
    }

    void Print() const {
        std::int64_t cells = 0;
        double sum = 0;
        for (const ColumnSums& sums : fvSums) {
            for (const auto& [label, counts] : sums.fCounts) {
                for (const std::int64_t count : counts) cells += count;
            }
            for (const std::int64_t count : sums.fNumber) cells += count;
            for (const double part : sums.fSum) sum += part;
        }
        std::printf("%lld valid cells, sum %.10g\n", static_cast<long long>(cells), sum);
    }

 private:
    std::unique_ptr<parquet::ParquetFileReader> Open() const {
        return parquet::ParquetFileReader::OpenFile(
            fPath, true, parquet::default_reader_properties(), fMetadata);
    }

    std::size_t Groups() const { return static_cast<std::size_t>(fMetadata->num_row_groups()); }
    std::size_t Columns() const { return static_cast<std::size_t>(fMetadata->num_columns()); }
    const std::string& NameOf(int column) const {
        return fMetadata->schema()->Column(column)->name();
    }

    void ReadTarget(std::size_t group) {
        Buffers buffers;
        const auto file = Open();
        const auto rows = file->RowGroup(static_cast<int>(group));
        std::vector<std::uint8_t>& target = fvTarget[group];
        ReadIndices<parquet::ByteArrayReader>(
            *rows, fTargetColumn, buffers,
            [&](std::int64_t, std::int64_t count, std::int64_t) {
                for (std::int64_t i = 0; i < count; ++i) {
                    target.push_back(
                        static_cast<std::uint8_t>(buffers.fIndices[static_cast<std::size_t>(i)]));
                }
            },
            [&](const parquet::ByteArray* words, std::int32_t length) {
                // Each row group has a dictionary of its own.
                std::array<std::uint8_t, 256> codes{};
                const std::lock_guard lock(fMutex);
                for (std::int32_t i = 0; i < length; ++i) {
                    const auto code =
                        fClasses.try_emplace(Label(words[i]), fClasses.size()).first->second;
                    codes[static_cast<std::size_t>(i)] =
                        static_cast<std::uint8_t>(code % kMaxClasses);
                }
                for (std::uint8_t& code : target) code = codes[code];
            });
    }

    void ReadStripe(std::size_t group, int first, int last) {
        Buffers buffers;
        const auto file = Open();
        const auto rows = file->RowGroup(static_cast<int>(group));
        for (int column = first; column < last; ++column) {
            if (column == fTargetColumn) continue;
            if (NameOf(column)[0] == 'x') {
                Sum(*rows, group, column, buffers);
            } else if (fMetadata->schema()->Column(column)->physical_type() ==
                       parquet::Type::BYTE_ARRAY) {
                Count<parquet::ByteArrayReader>(*rows, group, column, buffers);
            } else {
                Count<parquet::Int32Reader>(*rows, group, column, buffers);
            }
        }
    }

    void Sum(parquet::RowGroupReader& rows, std::size_t group, int column, Buffers& buffers) {
        const auto reader = std::static_pointer_cast<parquet::DoubleReader>(rows.Column(column));
        std::array<double, kMaxClasses> number{};
        std::array<double, kMaxClasses> sum{};
        std::array<double, kMaxClasses> squares{};
        double origin = 0;
        const std::uint8_t* target = fvTarget[group].data();
        for (bool seen = false; reader->HasNext();) {
            std::int64_t valid = 0;
            const std::int64_t count = reader->ReadBatch(kBatch, buffers.fValid.data(), nullptr,
                                                         buffers.fNumbers.data(), &valid);
            if (!seen && valid > 0) {
                seen = true;
                origin = buffers.fNumbers[0];
            }
            if (fbCounts) {
                const double* next = buffers.fNumbers.data();
                for (std::int64_t i = 0; i < count; ++i) {
                    if (buffers.fValid[static_cast<std::size_t>(i)] == 0) continue;
                    const double value = *next++ - origin;
                    const std::size_t k = target[i];
                    number[k] += 1;
                    sum[k] += value;
                    squares[k] += value * value;
                }
            }
            target += count;
        }
        ColumnSums& sums = fvSums[static_cast<std::size_t>(column)];
        const std::lock_guard lock(sums.fMutex);
        for (std::size_t k = 0; k < kMaxClasses; ++k) {
            sums.fNumber[k] += static_cast<std::int64_t>(number[k]);
            sums.fSum[k] += sum[k] + number[k] * origin + squares[k] * 1e-300;
        }
    }

    template <class Reader>
    void Count(parquet::RowGroupReader& rows, std::size_t group, int column, Buffers& buffers) {
        // Two tables in turn, so that an increment needn't wait for the one before.
        constexpr std::size_t kMissing = 255;
        std::array<std::array<std::array<std::uint32_t, kMaxClasses>, kMissing + 1>, 2> counts{};
        const std::vector<std::uint8_t>& target = fvTarget[group];
        ReadIndices<Reader>(
            rows, column, buffers,
            [&](std::int64_t row, std::int64_t count, std::int64_t) {
                if (!fbCounts) return;
                const std::uint8_t* classes = target.data() + row;
                const std::int32_t* next = buffers.fIndices.data();
                for (std::int64_t i = 0; i < count; ++i) {
                    const bool valid = buffers.fValid[static_cast<std::size_t>(i)] != 0;
                    const std::size_t index = valid ? static_cast<std::size_t>(*next) : kMissing;
                    ++counts[static_cast<std::size_t>(i & 1)][index][classes[i]];
                    next += valid ? 1 : 0;
                }
            },
            [&](const typename Reader::T* words, std::int32_t length) {
                ColumnSums& sums = fvSums[static_cast<std::size_t>(column)];
                const std::lock_guard lock(sums.fMutex);
                for (std::size_t i = 0; i < static_cast<std::size_t>(length); ++i) {
                    ClassCounts& total = sums.fCounts[Label(words[i])];
                    for (std::size_t k = 0; k < kMaxClasses; ++k)
                        total[k] += counts[0][i][k] + counts[1][i][k];
                }
            });
    }

    std::string fPath;
    bool fbCounts;
    std::shared_ptr<parquet::FileMetaData> fMetadata;
    int fTargetColumn = 0;
    std::mutex fMutex;  // of fClasses
    std::map<std::string, std::size_t> fClasses;
    std::vector<std::vector<std::uint8_t>> fvTarget;  // a row group each
    std::vector<ColumnSums> fvSums;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    const std::size_t threads = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 2;
    Floor floor(argv[1], argc <= 3);
    floor.Run(threads);
    floor.Print();
    return 0;
}

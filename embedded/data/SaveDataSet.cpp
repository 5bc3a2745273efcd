#include "embedded/data/SaveDataSet.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "embedded/data/ArrowExport.h"
#include "embedded/data/CellText.h"
#include "embedded/data/FileWriters.h"
#include "host/Assertion.h"

namespace embedded {
namespace {

std::string Number(double value) {
    constexpr double kWhole = 1e15;  // whole numbers below have all their digits
    constexpr double kSmall = 1e-5;
    const double size = std::abs(value);
    const bool fixed = size < kWhole && (size >= kSmall || value == 0.0);
    std::array<char, 64> buffer{};
    char* const end = buffer.data() + buffer.size();
    const auto result = fixed ? std::to_chars(buffer.data(), end, value, std::chars_format::fixed)
                              : std::to_chars(buffer.data(), end, value);
    PREDSEL_ASSERT(result.ec == std::errc(), "every double has a text of 64 characters");
    return {buffer.data(), result.ptr};
}

using Parser = std::optional<double> (*)(std::string_view);

// The same with nine decimals of a second.
std::string FineCalendar(double value, const KoltFormat& format) {
    const double whole = std::floor(value);
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value - whole,
                                      std::chars_format::fixed, 9);
    // Behind the zero.
    return ConvertObsToString(whole, format, false) + std::string(buffer.data() + 1, result.ptr);
}

// The calendar form that is read as the same value or, where none is, the nearest; the number where
// there is no such form.
std::string Calendar(double value, std::int32_t code, Parser parse) {
    const KoltFormat format = {code, 0, 0};
    std::string text = ConvertObsToString(value, format, false);
    const std::optional<double> read = parse(text);
    if (!read) return Number(value);
    if (*read == value) return text;
    std::string fine = FineCalendar(value, format);
    return parse(fine) == value ? fine : text;
}

std::string NumberCell(ColumnKind kind, double value) {
    switch (kind) {
        case ColumnKind::kBoolean:
            if (value == 0.0) return "false";
            return value == 1.0 ? "true" : Number(value);
        case ColumnKind::kDate:
            return Calendar(value, kFormatDate, &ParseDate);
        case ColumnKind::kDateTime:
            return Calendar(value, kFormatDateTime, &ParseDateTime);
        case ColumnKind::kTime:
            return Calendar(value, kFormatTime, &ParseTime);
        default:
            return Number(value);
    }
}

class TextWriter {
 public:
    TextWriter(const DataSet& data, char delimiter, std::ostream& file)
        : fData(data), fDelimiter(delimiter), fFile(file) {}

    void Write() {
        for (std::int32_t i = 0; i < fData.ColumnCount(); ++i) {
            fLine += i == 0 ? "" : std::string(1, fDelimiter);
            fLine += Text(fData.Variable(i).GetName());
        }
        fLine += '\n';
        // Distinct texts are quoted once.
        fvTexts.resize(static_cast<std::size_t>(fData.ColumnCount()));
        for (std::int32_t i = 0; i < fData.ColumnCount(); ++i) {
            if (fData.GetColumn(i).IsNumeric()) continue;
            for (const std::string& text : fData.GetColumn(i).Categories().Strings()) {
                fvTexts[static_cast<std::size_t>(i)].push_back(Text(text));
            }
        }
        const std::int64_t rows = fData.RowCount();
        for (std::int32_t chunk = 0; std::int64_t{chunk} * kChunkRows < rows; ++chunk) {
            WriteChunk(chunk);
        }
        fFile << fLine;
        fFile.flush();
    }

 private:
    // Quoted where it would be read as something else: a string of nothing is no missing value,
    // and blanks around a text belong to it.
    std::string Text(const std::string& text) const {
        const bool plain =
            !text.empty() && text.front() != ' ' && text.back() != ' ' &&
            text.find_first_of(std::string("\"\r\n\t") + fDelimiter) == std::string::npos;
        if (plain) return text;
        std::string quoted = "\"";
        for (const char letter : text) {
            if (letter == '"') quoted += '"';
            quoted += letter;
        }
        return quoted + '"';
    }

    void WriteChunk(std::int32_t index) {
        std::vector<ColumnChunk> chunks;
        for (std::int32_t i = 0; i < fData.ColumnCount(); ++i) {
            chunks.push_back(fData.GetColumn(i).Chunk(index));
        }
        for (std::int32_t row = 0; row < chunks.front().fRows; ++row) {
            for (std::size_t i = 0; i < chunks.size(); ++i) {
                if (i > 0) fLine += fDelimiter;
                if (chunks[i].IsValid(row)) {
                    AppendCell(chunks[i], i, row);
                } else if (chunks.size() == 1) {
                    fLine += "\"\"";  // an empty line would be no case
                }
            }
            fLine += '\n';
            if (fLine.size() > kBuffer) {
                fFile << std::exchange(fLine, "");
                if (!fFile) return;
            }
        }
    }

    void AppendCell(const ColumnChunk& chunk, std::size_t column, std::int32_t row) {
        const auto at = static_cast<std::size_t>(row);
        if (chunk.fNumbers.empty()) {
            fLine += fvTexts[column][chunk.fCodes[at]];
        } else {
            fLine += NumberCell(fData.Kind(static_cast<std::int32_t>(column)), chunk.fNumbers[at]);
        }
    }

    static constexpr std::size_t kBuffer = std::size_t{1} << 20;

    const DataSet& fData;
    char fDelimiter;
    std::ostream& fFile;
    std::string fLine;                              // not written yet
    std::vector<std::vector<std::string>> fvTexts;  // by column and category
};

[[noreturn]] void Fail(const std::string& name, int reason) {
    throw DataError(DataError::Kind::kFile,
                    name + ": cannot be written: " +
                        (reason == 0 ? std::string("the file takes no more")
                                     : std::generic_category().message(reason)));
}

}  // namespace

SaveFormat SaveFormatOf(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& letter : extension) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
    }
    if (extension == ".csv") return SaveFormat::kCsv;
    if (extension == ".tsv") return SaveFormat::kTsv;
    if (extension == ".parquet") return SaveFormat::kParquet;
    if (extension == ".arrow" || extension == ".feather") return SaveFormat::kArrow;
    throw DataError(DataError::Kind::kOption,
                    path +
                        ": the format of a data file is told by its name; give it the ending "
                        ".csv, .tsv, .parquet, .arrow or .feather");
}

void SaveDataSet(const DataSet& data, SaveFormat format, std::ostream& file,
                 const std::string& name, std::int32_t threads) {
    if (format == SaveFormat::kCsv || format == SaveFormat::kTsv) {
        errno = 0;
        TextWriter(data, format == SaveFormat::kCsv ? ',' : '\t', file).Write();
    } else {
        errno = 0;
        if (format == SaveFormat::kParquet) {
            WriteParquet(*ExportColumns(data), file, name, threads);
        } else {
            ArrowArrayStream stream{};
            ExportDataSet(data, stream);
            WriteIpcFile(stream, file, name);
        }
        file.flush();
    }
    if (!file) Fail(name, errno);
}

void SaveDataSet(const DataSet& data, SaveFormat format, const std::string& path) {
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) Fail(path, errno);
    SaveDataSet(data, format, file, path);
    file.close();
    if (!file) Fail(path, errno);
}

}  // namespace embedded

#include "embedded/data/SaveDataSet.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <ostream>
#include <span>
#include <string_view>
#include <system_error>
#include <variant>
#include <vector>

#include "embedded/data/ArrowExport.h"
#include "embedded/data/CellText.h"
#include "embedded/data/FileWriters.h"
#include "embedded/threads/ParallelTasks.h"
#include "host/Assertion.h"

namespace embedded {
namespace {

void AppendNumber(double value, std::string& text) {
    constexpr double kWhole = 1e15;  // whole numbers below have all their digits
    constexpr double kSmall = 1e-5;
    const double size = std::abs(value);
    const bool fixed = size < kWhole && (size >= kSmall || value == 0.0);
    std::array<char, 64> buffer;
    char* const end = buffer.data() + buffer.size();
    const auto result = fixed ? std::to_chars(buffer.data(), end, value, std::chars_format::fixed)
                              : std::to_chars(buffer.data(), end, value);
    PREDSEL_ASSERT(result.ec == std::errc(), "every double has a text of 64 characters");
    text.append(buffer.data(), result.ptr);
}

std::string Number(double value) {
    std::string text;
    AppendNumber(value, text);
    return text;
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

// Rows that are opened together are formatted side by side, in pieces, and written in order.
class TextWriter {
 public:
    TextWriter(const DataSet& data, char delimiter, std::ostream& file, std::int32_t threads)
        : fData(data),
          fDelimiter(delimiter),
          fFile(file),
          fThreads(threads),
          fvCells(static_cast<std::size_t>(data.ColumnCount())),
          fvLines(kPieces) {}

    void Write() {
        std::string header;
        for (std::int32_t i = 0; i < fData.ColumnCount(); ++i) {
            header += i == 0 ? "" : std::string(1, fDelimiter);
            header += Text(fData.Variable(i).GetName());
        }
        fFile << header << '\n';
        ForEachColumn([this](std::size_t i) { FormatCategories(i); });
        const std::int64_t rows = fData.RowCount();
        const std::int32_t open = OpenRows();
        for (std::int64_t first = 0; first < rows && fFile; first += open) {
            WriteRows({static_cast<std::int32_t>(first / kChunkRows),
                       static_cast<std::int32_t>(first % kChunkRows),
                       static_cast<std::int32_t>(std::min<std::int64_t>(open, rows - first))},
                      open / kPieces);
        }
        fFile.flush();
    }

 private:
    static constexpr std::int32_t kPieces = 16;

    // A column and the rows of it that are being written.
    struct ColumnCells {
        std::vector<std::string> fvTexts;  // of a column that is held as codes, by category
        ColumnBuffer fBuffer;
        CodeSpan::Entries fEntries;
        std::span<const double> fNumbers;
    };

    void ForEachColumn(const std::function<void(std::size_t)>& task) const {
        RunTasks(fThreads, fData.ColumnCount(),
                 [&task](std::int32_t i) { task(static_cast<std::size_t>(i)); });
    }
    const Column& ColumnAt(std::size_t i) const {
        return fData.GetColumn(static_cast<std::int32_t>(i));
    }

    // The lines take room too.
    std::int32_t OpenRows() const {
        constexpr std::int64_t kCellBytes = 16;  // about as many as a number has digits
        std::int64_t rowBytes = 0;
        for (std::int32_t i = 0; i < fData.ColumnCount(); ++i) {
            const Column& column = fData.GetColumn(i);
            rowBytes += column.BufferBytes(column.IsCoded()) + kCellBytes;
        }
        return RowsToOpen(rowBytes);
    }

    // Distinct values are formatted once.
    void FormatCategories(std::size_t i) {
        if (!ColumnAt(i).IsCoded()) return;
        const ColumnCategories& categories = ColumnAt(i).Categories();
        std::vector<std::string>& texts = fvCells[i].fvTexts;
        for (const std::string& text : categories.Strings()) texts.push_back(Text(text));
        for (const double number : categories.Numbers()) {
            texts.push_back(NumberCell(fData.Kind(static_cast<std::int32_t>(i)), number));
        }
    }

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

    void WriteRows(const ChunkPart& part, std::int32_t pieceRows) {
        ForEachColumn([this, &part](std::size_t i) {
            ColumnCells& cells = fvCells[i];
            if (ColumnAt(i).IsCoded()) {
                cells.fEntries = ColumnAt(i).Codes(part, cells.fBuffer).GetEntries();
            } else {
                cells.fNumbers = ColumnAt(i).Numbers(part, cells.fBuffer);
            }
        });
        const std::int32_t pieces = (part.fRows + pieceRows - 1) / pieceRows;
        RunTasks(fThreads, pieces, [this, &part, pieceRows](std::int32_t piece) {
            const std::int32_t first = piece * pieceRows;
            FormatRows(static_cast<std::size_t>(first),
                       static_cast<std::size_t>(std::min(first + pieceRows, part.fRows)),
                       fvLines[static_cast<std::size_t>(piece)]);
        });
        for (std::int32_t piece = 0; piece < pieces && fFile; ++piece) {
            fFile << fvLines[static_cast<std::size_t>(piece)];
        }
    }

    void FormatRows(std::size_t first, std::size_t end, std::string& lines) const {
        lines.clear();
        for (std::size_t row = first; row < end; ++row) {
            for (std::size_t i = 0; i < fvCells.size(); ++i) {
                if (i > 0) lines += fDelimiter;
                if (!AppendCell(i, row, lines) && fvCells.size() == 1) {
                    lines += "\"\"";  // an empty line would be no case
                }
            }
            lines += '\n';
        }
    }

    // False for a missing value.
    bool AppendCell(std::size_t i, std::size_t row, std::string& lines) const {
        const ColumnCells& cells = fvCells[i];
        if (ColumnAt(i).IsCoded()) {
            const std::size_t entry = std::visit(
                [row](const auto entries) { return std::size_t{entries[row]}; }, cells.fEntries);
            if (entry > 0) lines += cells.fvTexts[entry - 1];
            return entry > 0;
        }
        const double number = cells.fNumbers[row];
        if (number == MCMV::gMissingValue) return false;
        const ColumnKind kind = fData.Kind(static_cast<std::int32_t>(i));
        if (kind == ColumnKind::kNumber) {
            AppendNumber(number, lines);
        } else {
            lines += NumberCell(kind, number);
        }
        return true;
    }

    const DataSet& fData;
    char fDelimiter;
    std::ostream& fFile;
    std::int32_t fThreads;
    std::vector<ColumnCells> fvCells;  // by column
    std::vector<std::string> fvLines;  // by piece of the open rows
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
        TextWriter(data, format == SaveFormat::kCsv ? ',' : '\t', file, threads).Write();
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

#include "embedded/data/DelimitedText.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "embedded/data/CellText.h"
#include "embedded/data/DataError.h"
#include "embedded/data/DialectDetection.h"
#include "embedded/data/FileReaders.h"
#include "embedded/data/Utf8.h"

namespace embedded {
namespace {

std::string DelimiterName(char delimiter) {
    switch (delimiter) {
        case ',':
            return "comma";
        case ';':
            return "semicolon";
        case '\t':
            return "tab";
        default:
            return "'" + std::string(1, delimiter) + "'";
    }
}

std::string Counted(std::int64_t count, const std::string& one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

}  // namespace

DelimitedText::DelimitedText(std::string_view bytes, const OpenOptions& options, std::string name)
    : fName(std::move(name)),
      fText(bytes, options.fEncoding),
      fBlockBytes(std::max(options.fBlockBytes, 1)) {
    const std::string_view text = fText.Get();
    if (text.find('\0') != std::string_view::npos) {
        throw DataError(DataError::Kind::kContent,
                        fName + ": is no data file in a known form (Parquet, Arrow or delimited " +
                            "text): it holds zero bytes; check the file, or its encoding with " +
                            "--encoding");
    }
    fDialect = DetectDialect(text, options.fDelimiter, options.fQuote);
    RecordScanner scanner(text, fDialect);
    if (!scanner.Next()) {
        throw DataError(DataError::Kind::kContent,
                        fName + ": is empty; a header line with the variables' names is expected");
    }
    ReadHeader(scanner);
    CheckRecords(scanner);
    if (fText.Encoding() == TextEncoding::kLatin1 && options.fEncoding == TextEncoding::kDetect) {
        DataNote note;
        note.fKind = DataNote::Kind::kEncoding;
        note.fText =
            "The file is no UTF-8 text and was read as Windows-1252 (Latin-1). "
            "If names or values look wrong, set --encoding.";
        fvNotes.push_back(std::move(note));
    }
}

void DelimitedText::ReadHeader(RecordScanner& scanner) {
    if (scanner.IsUnterminated()) {
        return;  // reported with the records
    }
    fBodyStart = scanner.Position();
    bool allNumbers = true;
    for (const std::string& cell : SplitRecord(scanner.Record(), fDialect)) {
        const std::string_view trimmed = TrimBlanks(cell);
        allNumbers = allNumbers && ParseNumber(trimmed, '.').has_value();
        fvNames.push_back(ReplaceInvalidUtf8(trimmed));
    }
    if (allNumbers) {
        DataNote note;
        note.fKind = DataNote::Kind::kHeader;
        note.fText =
            "The first line holds numbers only and was read as the variables' names. "
            "If it is data, put a header line above it.";
        fvNotes.push_back(std::move(note));
    }
}

void DelimitedText::CheckRecords(RecordScanner& scanner) {
    const std::int32_t expected = scanner.FieldCount();
    while (!scanner.IsUnterminated() && scanner.Next()) {
        if (scanner.FieldCount() != expected && !scanner.IsUnterminated()) {
            throw DataError(DataError::Kind::kContent,
                            fName + ": line " + std::to_string(scanner.Line()) + " has " +
                                Counted(scanner.FieldCount(), "value") + " where the header has " +
                                Counted(expected, "name") + "; correct the line, or if " +
                                DelimiterName(fDialect.fDelimiter) +
                                " is not what separates values, set --delimiter");
        }
        ++fRowCount;
        fLongestRecord =
            std::max(fLongestRecord, static_cast<std::int64_t>(scanner.Record().size()));
    }
    if (scanner.IsUnterminated()) {
        throw DataError(DataError::Kind::kContent, fName + ": the record that starts in line " +
                                                       std::to_string(scanner.Line()) +
                                                       " has a quote that is never closed; " +
                                                       "close it or double it, or set --quote");
    }
}

std::int64_t DelimitedText::LineOfRow(std::int64_t row) const {
    RecordScanner scanner(fText.Get(), fDialect);
    for (std::int64_t at = -1; at <= row; ++at) {  // the header comes first
        scanner.Next();
    }
    return scanner.Line();
}

void DelimitedText::Read(const std::vector<std::unique_ptr<TextColumn>>& columns) const {
    std::vector<std::int32_t> wanted;
    for (std::size_t column = 0; column < columns.size(); ++column) {
        if (columns[column]) {
            wanted.push_back(static_cast<std::int32_t>(column));
        }
    }
    for (int reading = 1; reading <= 2 && !wanted.empty(); ++reading) {
        ReadOnce(columns, wanted);
        std::erase_if(wanted, [&columns](std::int32_t column) {
            return columns[static_cast<std::size_t>(column)]->EndReading();
        });
    }
}

void DelimitedText::ReadOnce(const std::vector<std::unique_ptr<TextColumn>>& columns,
                             const std::vector<std::int32_t>& wanted) const {
    if (fRowCount == 0) {
        return;
    }
    const ArrowStream stream = ReadCells(fText.Get().substr(fBodyStart), fDialect,
                                         static_cast<std::int32_t>(columns.size()), wanted,
                                         fLongestRecord, fBlockBytes, fName);
    std::int64_t rows = 0;
    for (OwnedArrowArray batch; stream.Next(batch);) {
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            TextColumn& column = *columns[static_cast<std::size_t>(wanted[i])];
            const ArrowArray& cells = *batch.Get().children[i];
            const auto* validity = static_cast<const unsigned char*>(cells.buffers[0]);
            const auto* offsets = static_cast<const std::int32_t*>(cells.buffers[1]);
            const auto* letters = static_cast<const char*>(cells.buffers[2]);
            const std::int64_t first = batch.Get().offset + cells.offset;
            for (std::int64_t at = first; at < first + batch.Get().length; ++at) {
                if (validity != nullptr && ((validity[at / 8] >> (at % 8)) & 1) == 0) {
                    column.AppendEmpty();
                } else {
                    column.Append({letters + offsets[at],
                                   static_cast<std::size_t>(offsets[at + 1] - offsets[at])});
                }
            }
            if (column.GetFault()) {
                return;
            }
        }
        rows += batch.Get().length;
    }
    if (rows != fRowCount) {
        throw DataError(DataError::Kind::kContent,
                        fName + ": " + std::to_string(fRowCount) + " rows were found and " +
                            std::to_string(rows) + " were read; look for stray quotes");
    }
}

}  // namespace embedded

#include "embedded/data/DelimitedText.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "embedded/data/CellIndex.h"
#include "embedded/data/CellText.h"
#include "embedded/data/ColumnAssembly.h"
#include "embedded/data/DataError.h"
#include "embedded/data/DialectDetection.h"
#include "embedded/data/SectionColumn.h"
#include "embedded/data/Utf8.h"
#include "embedded/threads/ParallelTasks.h"

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

/// Sections of this many times the bytes of a block are read as one, if there are enough of them
/// for all threads to have something to do to the end.
constexpr std::size_t kMostBlocks = 32;
constexpr std::size_t kSectionsPerThread = 8;

std::size_t SectionBytes(std::size_t textBytes, std::int32_t blockBytes, std::int32_t threads) {
    const auto block = static_cast<std::size_t>(std::max(blockBytes, 1));
    const auto tasks = static_cast<std::size_t>(threads < 1 ? AvailableThreads() : threads);
    return std::clamp(textBytes / (kSectionsPerThread * tasks), block, kMostBlocks * block);
}

/// Rows from which is guessed which columns are many distinct numbers.
constexpr std::int32_t kSampleRows = 128;

/// The columns of a text while they are read, section by section.
class TextReading {
 public:
    using Outcome = DelimitedText::Outcome;

    TextReading(const SectionedText& sections, TextDialect dialect,
                std::vector<std::unique_ptr<TextColumn>> columns, std::int32_t threads,
                std::shared_ptr<ColumnMemory> memory, const SourceBytes* pSource)
        : fSections(sections),
          fDialect(dialect),
          fvColumns(std::move(columns)),
          fThreads(threads),
          fpMemory(std::move(memory)),
          fpSource(pSource) {
        fvFirstRows.push_back(0);
        for (const TextSection& section : sections.fvSections) {
            fvSectionRows.push_back(section.fRows);
            fvFirstRows.push_back(fvFirstRows.back() + section.fRows);
        }
        for (const auto& column : fvColumns) {
            if (column) {
                // A copy: settling what the column is changes the rules of the column.
                fvReadings.emplace_back(fvRules.emplace_back(column->Rules()));
                fvWanted.push_back(static_cast<std::int32_t>(&column - fvColumns.data()));
            }
        }
    }

    /// False when a record is malformed.
    bool Read() {
        Sample();
        PlaceNumbers();
        fvRead.resize(fSections.fvSections.size());
        std::vector<std::vector<std::size_t>> all(fSections.fvSections.size());
        for (auto& columns : all) {
            columns.resize(fvWanted.size());
            std::iota(columns.begin(), columns.end(), std::size_t{0});
        }
        if (!ReadSections(all, false)) {
            return false;
        }
        RunTasks(fThreads, Count(fvWanted),
                 [this](std::int32_t at) { Settle(static_cast<std::size_t>(at)); });
        // What was read as numbers and turns out to be something else.
        std::vector<std::vector<std::size_t>> again(fSections.fvSections.size());
        bool any = false;
        for (std::size_t at = 0; at < fvWanted.size(); ++at) {
            any = AddSectionsToReadAgain(at, again) || any;
        }
        if (!any) {
            return true;
        }
        if (!ReadSections(again, true)) {
            return false;
        }
        for (std::size_t at = 0; at < fvWanted.size(); ++at) {
            if (std::any_of(again.begin(), again.end(), [at](const auto& columns) {
                    return std::find(columns.begin(), columns.end(), at) != columns.end();
                })) {
                fvColumns[static_cast<std::size_t>(fvWanted[at])] =
                    std::make_unique<TextColumn>(fvRules[at]);
                Settle(at);
            }
        }
        return true;
    }

    std::vector<Outcome> Finish() {
        std::vector<Outcome> outcomes(fvColumns.size());
        RunTasks(fThreads, Count(fvWanted), [&](std::int32_t number) {
            const auto at = static_cast<std::size_t>(number);
            const auto column = static_cast<std::size_t>(fvWanted[at]);
            outcomes[column] = fvColumns[column]->Kind() == ColumnKind::kString ? FinishTexts(at)
                                                                                : FinishNumbers(at);
            fvColumns[column].reset();
        });
        return outcomes;
    }

 private:
    static std::int32_t Count(const auto& list) { return static_cast<std::int32_t>(list.size()); }
    TextColumn& Column(std::size_t at) const {
        return *fvColumns[static_cast<std::size_t>(fvWanted[at])];
    }
    CellIndex Index(std::size_t section) const {
        return {fSections.fvSections[section], fDialect, Count(fvColumns)};
    }

    // Columns of many distinct numbers are read as such from the start. That is a guess for speed.
    void Sample() {
        if (fSections.fvSections.empty()) {
            return;
        }
        CellIndex index = Index(0);
        if (!index.Next(kSampleRows)) {
            return;
        }
        RunTasks(fThreads, Count(fvWanted), [&](std::int32_t number) {
            const auto at = static_cast<std::size_t>(number);
            CellReading& reading = fvReadings[at];
            SectionColumn column(reading, 0, index.Rows(), true);
            column.Take(index, fvWanted[at]);
            const CellDictionary& texts = column.Dictionary();
            bool numbers = reading.fbMayBeNumbers && texts.Count() > kSampleRows / 3;
            for (std::uint32_t entry = 1; entry <= texts.Count() && numbers; ++entry) {
                const std::string_view text = TrimBlanks(texts.Text(entry));
                numbers = text.empty() || reading.fRules.fMissingTexts.contains(text) ||
                          ParseNumber(text, '.') || ParseNumber(text, ',');
            }
            reading.fbStartsAsNumbers = numbers;
        });
    }

    // Numbers are written where they stay if all that are foreseen have room in memory; others are
    // counted when a section of them is complete.
    void PlaceNumbers() {
        const std::int64_t limit =
            fpMemory ? fpMemory->Limit() : std::numeric_limits<std::int64_t>::max();
        std::int64_t rowBytes = 0;
        for (const CellReading& reading : fvReadings) {
            rowBytes += reading.fbStartsAsNumbers ? 8 : 1;
        }
        const bool fits = fSections.fRows == 0 || rowBytes < limit / 2 / fSections.fRows;
        for (CellReading& reading : fvReadings) {
            reading.fbPlaced = fits && reading.fbStartsAsNumbers;
            fvNumbers.push_back(reading.fbPlaced
                                    ? std::make_unique<NumericParts>(fvSectionRows, fpMemory)
                                    : std::make_unique<NumericParts>(fpMemory));
            reading.fpNumbers = fvNumbers.back().get();
        }
    }

    // Reads columns of each section, given by their place among the wanted ones.
    bool ReadSections(const std::vector<std::vector<std::size_t>>& columns, bool asTexts) {
        std::atomic<bool> malformed = false;
        RunTasks(fThreads, Count(fSections.fvSections), [&](std::int32_t number) {
            const auto section = static_cast<std::size_t>(number);
            if (malformed || columns[section].empty()) {
                return;
            }
            const std::int64_t rows = fSections.fvSections[section].fRows;
            auto& read = fvRead[section];
            read.resize(fvWanted.size());
            for (const std::size_t at : columns[section]) {
                read[at].emplace(fvReadings[at], number, rows, asTexts);
            }
            CellIndex index = Index(section);
            std::size_t givenBack = 0;
            while (index.Next(index.SuitableRows())) {
                for (const std::size_t at : columns[section]) {
                    read[at]->Take(index, fvWanted[at]);
                }
                if (index.Position() - givenBack >= kGiveBackBytes) {
                    GiveBack(section, givenBack, index.Position());
                    givenBack = index.Position();
                }
            }
            GiveBack(section, givenBack, fSections.fvSections[section].fText.size());
            if (index.IsMalformed() || index.FirstRow() != rows) {
                malformed = true;
                return;
            }
            for (const std::size_t at : columns[section]) {
                read[at]->End();
            }
        });
        return !malformed;
    }

    void GiveBack(std::size_t section, std::size_t begin, std::size_t end) const {
        if (fpSource != nullptr) {
            fpSource->GiveBack(fSections.fvSections[section].fText.substr(begin, end - begin));
        }
    }

    // What the column is, from the distinct texts of all sections in order.
    void Settle(std::size_t at) {
        TextColumn& column = Column(at);
        CellDictionary met;
        std::string padded;
        for (const auto& section : fvRead) {
            const SectionColumn& read = *section[at];
            for (const std::string& text : read.Examples()) {
                column.Append(text);
            }
            if (read.GetForm() != SectionColumn::Form::kTexts) {
                continue;
            }
            const CellDictionary& texts = read.Dictionary();
            for (std::uint32_t entry = 1; entry <= texts.Count(); ++entry) {
                if (column.Kind() == ColumnKind::kString) {
                    break;
                }
                const std::string_view text = texts.Text(entry);
                padded.assign(text);
                padded.append(CellDictionary::kLettersRead, '\0');
                const std::size_t before = met.Count();
                met.Entry(padded.data(), static_cast<std::uint32_t>(text.size()));
                if (met.Count() > before) {
                    column.Append(text);
                }
            }
        }
        column.EndReading();
    }

    bool AddSectionsToReadAgain(std::size_t at, std::vector<std::vector<std::size_t>>& again) {
        const TextColumn& column = Column(at);
        const bool numbers = column.Kind() == ColumnKind::kNumber;
        const bool contradicted = std::any_of(fvRead.begin(), fvRead.end(), [at](const auto& read) {
            return read[at]->GetForm() == SectionColumn::Form::kContradicted;
        });
        const bool all = !numbers || (contradicted && !column.Rules().fDeclared);
        bool any = false;
        for (std::size_t section = 0; section < fvRead.size(); ++section) {
            const SectionColumn::Form form = fvRead[section][at]->GetForm();
            if (form == SectionColumn::Form::kContradicted ||
                (all && form == SectionColumn::Form::kNumbers)) {
                again[section].push_back(at);
                any = true;
            }
        }
        if (any && all) {
            fvNumbers[at] = std::make_unique<NumericParts>(fpMemory);
        }
        return any;
    }

    Outcome FinishTexts(std::size_t at) {
        TextParts parts(&Column(at).Rules().fMissingTexts, fpMemory);
        for (std::size_t section = 0; section < fvRead.size(); ++section) {
            std::optional<SectionColumn>& read = fvRead[section][at];
            const CellDictionary& texts = read->Dictionary();
            std::vector<std::string> values;
            values.reserve(texts.Count());
            for (std::uint32_t entry = 1; entry <= texts.Count(); ++entry) {
                values.emplace_back(texts.Text(entry));
            }
            CodeVector entries = std::move(read->Entries());
            read.reset();
            parts.SetCodes(static_cast<std::int32_t>(section), std::move(values),
                           std::move(entries));
        }
        Outcome outcome;
        outcome.fRead = ReadColumn{parts.Finish(1), ColumnKind::kString};
        outcome.fRead->fUndecodable = parts.Undecodable();
        return outcome;
    }

    Outcome FinishNumbers(std::size_t at) {
        TextColumn& column = Column(at);
        NumericParts& parts = *fvNumbers[at];
        std::int32_t mostDecimals = 0;
        Oddity inexact;
        for (std::size_t section = 0; section < fvRead.size(); ++section) {
            std::optional<SectionColumn>& read = fvRead[section][at];
            mostDecimals = std::max(mostDecimals, read->Decimals());
            Join(inexact, read->Inexact(), fvFirstRows[section]);
            if (read->GetForm() == SectionColumn::Form::kTexts) {
                const CellDictionary& texts = read->Dictionary();
                std::vector<double> values;
                std::vector<bool> faults(texts.Count() + 1);
                std::vector<bool> inexacts(texts.Count() + 1);
                bool anyFault = false;
                bool anyInexact = false;
                for (std::uint32_t entry = 1; entry <= texts.Count(); ++entry) {
                    const TextColumn::Value value = column.ValueOf(texts.Text(entry));
                    mostDecimals = std::max(mostDecimals, value.fDecimals);
                    values.push_back(value.fNumber);
                    faults[entry] = value.fbFault;
                    inexacts[entry] = value.fbInexact;
                    anyFault = anyFault || value.fbFault;
                    anyInexact = anyInexact || value.fbInexact;
                }
                if (anyFault) {
                    const Oddity rows = RowsWith(read->Entries(), faults);
                    const std::uint32_t entry = EntryOf(read->Entries(), rows.fFirstRow);
                    Outcome outcome;
                    outcome.fFault = TextColumn::Fault{fvFirstRows[section] + rows.fFirstRow,
                                                       std::string(texts.Text(entry))};
                    return outcome;
                }
                if (anyInexact) {
                    Join(inexact, RowsWith(read->Entries(), inexacts), fvFirstRows[section]);
                }
                parts.SetCodes(static_cast<std::int32_t>(section), std::move(values),
                               std::move(read->Entries()));
            }
            read.reset();
        }
        Outcome outcome;
        outcome.fRead = ReadColumn{parts.Finish(1), column.Kind()};
        outcome.fRead->fInfinite = parts.Infinite();
        outcome.fRead->fInexact = inexact;
        if (column.Kind() == ColumnKind::kNumber) {
            outcome.fRead->fDecimals = std::min(mostDecimals, 16);
        }
        return outcome;
    }

    static void Join(Oddity& all, const Oddity& part, std::int64_t firstRow) {
        if (part.fCount > 0 && all.fCount == 0) {
            all.fFirstRow = firstRow + part.fFirstRow;
        }
        all.fCount += part.fCount;
    }
    static Oddity RowsWith(const CodeVector& codes, const std::vector<bool>& marked) {
        Oddity rows;
        std::visit(
            [&](const auto& entries) {
                for (std::size_t row = 0; row < entries.size(); ++row) {
                    if (marked[entries[row]]) {
                        rows.Note(static_cast<std::int64_t>(row));
                    }
                }
            },
            codes);
        return rows;
    }
    static std::uint32_t EntryOf(const CodeVector& codes, std::int64_t row) {
        return std::visit(
            [row](const auto& entries) {
                return std::uint32_t{entries[static_cast<std::size_t>(row)]};
            },
            codes);
    }

    static constexpr std::size_t kGiveBackBytes = std::size_t{1} << 20U;

    const SectionedText& fSections;
    TextDialect fDialect;
    std::vector<std::unique_ptr<TextColumn>> fvColumns;
    std::int32_t fThreads;
    std::shared_ptr<ColumnMemory> fpMemory;
    const SourceBytes* fpSource;
    std::vector<std::int64_t> fvSectionRows;
    std::vector<std::int64_t> fvFirstRows;                 // by section, and behind the last
    std::vector<std::int32_t> fvWanted;                    // column numbers
    std::deque<TextColumnRules> fvRules;                   // by place among the wanted
    std::deque<CellReading> fvReadings;                    // by place among the wanted
    std::vector<std::unique_ptr<NumericParts>> fvNumbers;  // so
    std::vector<std::vector<std::optional<SectionColumn>>> fvRead;  // by section, so
};

}  // namespace

DelimitedText::DelimitedText(std::string_view bytes, const OpenOptions& options, std::string name,
                             const SourceBytes* pSource)
    : fName(std::move(name)),
      fpSource(pSource),
      fThreads(options.fThreads),
      fSectionBytes(SectionBytes(bytes.size(), options.fBlockBytes, options.fThreads)),
      fDelimiter(options.fDelimiter),
      fQuote(options.fQuote),
      fText(bytes, options.fEncoding, [this](std::string_view text) {
          Scan(text);
          return !fSections.fbBeyondAscii || IsUtf8Throughout(text);
      }) {
    const std::string_view text = fText.Get();
    if (text.data() != fScanned.data() || text.size() != fScanned.size() || text.empty()) {
        Scan(text);
    }
    if (fSections.fbZeroes) {
        throw DataError(DataError::Kind::kContent,
                        fName + ": is no data file in a known form (Parquet, Arrow or delimited " +
                            "text): it holds zero bytes; check the file, or its encoding with " +
                            "--encoding");
    }
    RecordScanner scanner(text, fDialect);
    if (!scanner.Next()) {
        throw DataError(DataError::Kind::kContent,
                        fName + ": is empty; a header line with the variables' names is expected");
    }
    if (scanner.IsUnterminated() || fSections.fbUnterminated) {
        CheckRecords();
    }
    ReadHeader(scanner);
    if (fText.Encoding() == TextEncoding::kLatin1 && options.fEncoding == TextEncoding::kDetect) {
        DataNote note;
        note.fKind = DataNote::Kind::kEncoding;
        note.fText =
            "The file is no UTF-8 text and was read as Windows-1252 (Latin-1). "
            "If names or values look wrong, set --encoding.";
        fvNotes.push_back(std::move(note));
    }
}

void DelimitedText::GiveBack(std::string_view part) const {
    if (fpSource != nullptr) {
        fpSource->GiveBack(part);
    }
}

bool DelimitedText::IsUtf8Throughout(std::string_view text) const {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        // No character goes on behind a line feed.
        const std::size_t end = std::min(text.find('\n', fSectionBytes), text.size() - 1) + 1;
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end);
    }
    std::atomic<bool> isUtf8 = true;
    RunTasks(fThreads, static_cast<std::int32_t>(parts.size()), [&](std::int32_t number) {
        const std::string_view part = parts[static_cast<std::size_t>(number)];
        if (isUtf8 && !IsUtf8(part)) {
            isUtf8 = false;
        }
        GiveBack(part);
    });
    return isUtf8;
}

// Finds the form of the text, and the sections of its records.
void DelimitedText::Scan(std::string_view text) {
    fScanned = text;
    fDialect = DetectDialect(text, fDelimiter, fQuote);
    RecordScanner scanner(text, fDialect);
    scanner.Next();
    const std::size_t body = scanner.Position();
    fBodyLine = scanner.NextLine();
    fSections = CutIntoSections(text, body, fDialect, fSectionBytes, fThreads,
                                [this](std::string_view part) { GiveBack(part); });
    const std::string_view header = text.substr(0, body);
    fSections.fbZeroes = fSections.fbZeroes || header.find('\0') != std::string_view::npos;
    fSections.fbBeyondAscii =
        fSections.fbBeyondAscii || std::any_of(header.begin(), header.end(), [](char letter) {
            return static_cast<unsigned char>(letter) >= 0x80;
        });
}

void DelimitedText::ReadHeader(const RecordScanner& scanner) {
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

void DelimitedText::CheckRecords() const {
    RecordScanner scanner(fText.Get(), fDialect);
    scanner.Next();
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
    }
    if (scanner.IsUnterminated()) {
        throw DataError(DataError::Kind::kContent, fName + ": the record that starts in line " +
                                                       std::to_string(scanner.Line()) +
                                                       " has a quote that is never closed; " +
                                                       "close it or double it, or set --quote");
    }
}

std::int64_t DelimitedText::LineOfRow(std::int64_t row) const {
    if (fSections.fbPlain) {
        return fBodyLine + row;  // every line is a record
    }
    RecordScanner scanner(fText.Get(), fDialect);
    for (std::int64_t at = -1; at <= row; ++at) {  // the header comes first
        scanner.Next();
    }
    return scanner.Line();
}

std::vector<DelimitedText::Outcome> DelimitedText::Read(
    std::vector<std::unique_ptr<TextColumn>> columns,
    const std::shared_ptr<ColumnMemory>& memory) const {
    for (const TextSection& section : fSections.fvSections) {
        if (section.fText.size() > std::numeric_limits<std::uint32_t>::max() - 64) {
            CheckRecords();
            throw DataError(DataError::Kind::kContent,
                            fName + ": has a record of more than 4 GB; look for stray quotes");
        }
    }
    TextReading reading(fSections, fDialect, std::move(columns), fThreads, memory, fpSource);
    if (!reading.Read()) {
        CheckRecords();
        throw std::logic_error(fName + ": its records could not be told apart");
    }
    return reading.Finish();
}

}  // namespace embedded

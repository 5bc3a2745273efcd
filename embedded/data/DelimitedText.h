#ifndef PREDSEL_EMBEDDED_DATA_DELIMITEDTEXT_H
#define PREDSEL_EMBEDDED_DATA_DELIMITEDTEXT_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/ColumnMemory.h"
#include "embedded/data/DataSet.h"
#include "embedded/data/OpenOptions.h"
#include "embedded/data/ReadColumn.h"
#include "embedded/data/RecordScanner.h"
#include "embedded/data/SourceBytes.h"
#include "embedded/data/TextColumn.h"
#include "embedded/data/TextDecoding.h"
#include "embedded/data/TextSections.h"

namespace embedded {

/// A delimited text with a header: cut into sections, which are read side by side. No result
/// depends on the sections or the threads.
class DelimitedText {
 public:
    /// Borrows the bytes; pSource, if given, is where they come from, and told of those that are
    /// not needed for now. Throws DataError when they are no text or a quote is not closed.
    DelimitedText(std::string_view bytes, const OpenOptions& options, std::string name,
                  const SourceBytes* pSource = nullptr);

    /// The cells of the header line, without blanks around them.
    const std::vector<std::string>& Names() const { return fvNames; }
    std::int64_t RowCount() const { return fSections.fRows; }
    const TextDialect& Dialect() const { return fDialect; }
    /// The line on which a row starts, from 1; may walk over the text.
    std::int64_t LineOfRow(std::int64_t row) const;
    /// Notes about the text as a whole.
    const std::vector<DataNote>& Notes() const { return fvNotes; }

    /// Throws DataError at the first record that has more or fewer fields than the header, or an
    /// open quote; walks over the text. Read does so as well.
    void CheckRecords() const;

    /// What became of a column: its values, or the first cell that contradicts its declared kind.
    struct Outcome {
        std::optional<ReadColumn> fRead;
        std::optional<TextColumn::Fault> fFault;
    };
    /// Reads the columns, one for each name, null for those that are not wanted, which then have
    /// neither. The columns say what their cells are and are given no more than each text once. A
    /// null memory: all is held in memory.
    std::vector<Outcome> Read(std::vector<std::unique_ptr<TextColumn>> columns,
                              const std::shared_ptr<ColumnMemory>& memory) const;

 private:
    void Scan(std::string_view text);
    bool IsUtf8Throughout(std::string_view text) const;
    void GiveBack(std::string_view part) const;
    void ReadHeader(const RecordScanner& scanner);

    std::string fName;
    const SourceBytes* fpSource;  // borrowed, may be null
    std::int32_t fThreads;
    std::size_t fSectionBytes;
    std::optional<char> fDelimiter;
    std::optional<char> fQuote;
    // Of the text that was scanned last:
    std::string_view fScanned;
    TextDialect fDialect;
    std::int64_t fBodyLine = 0;  // on which the records start
    SectionedText fSections;
    std::vector<std::string> fvNames;
    std::vector<DataNote> fvNotes;
    DecodedText fText;  // scans, to know its encoding
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_DELIMITEDTEXT_H

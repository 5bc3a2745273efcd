#ifndef PREDSEL_EMBEDDED_DATA_DELIMITEDTEXT_H
#define PREDSEL_EMBEDDED_DATA_DELIMITEDTEXT_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/DataSet.h"
#include "embedded/data/OpenOptions.h"
#include "embedded/data/ReadColumn.h"
#include "embedded/data/RecordScanner.h"
#include "embedded/data/TextColumn.h"
#include "embedded/data/TextDecoding.h"

namespace embedded {

/// A delimited text with a header: its form is found and checked at construction, so that every
/// fault of form is reported with its line.
class DelimitedText {
 public:
    /// Borrows the bytes. Throws DataError when they are no text, when a record has more or fewer
    /// fields than the header, or when a quote is not closed.
    DelimitedText(std::string_view bytes, const OpenOptions& options, std::string name);

    /// The cells of the header line, without blanks around them.
    const std::vector<std::string>& Names() const { return fvNames; }
    std::int64_t RowCount() const { return fRowCount; }
    const TextDialect& Dialect() const { return fDialect; }
    /// The line on which a row starts, from 1; walks over the text.
    std::int64_t LineOfRow(std::int64_t row) const;
    /// Notes about the text as a whole.
    const std::vector<DataNote>& Notes() const { return fvNotes; }

    /// Reads the cells into the columns, one for each name, null for those that are not wanted;
    /// twice those that need it. Stops early when a column has a fault.
    void Read(const std::vector<std::unique_ptr<TextColumn>>& columns) const;

 private:
    void ReadHeader(RecordScanner& scanner);
    void CheckRecords(RecordScanner& scanner);
    void ReadOnce(const std::vector<std::unique_ptr<TextColumn>>& columns,
                  const std::vector<std::int32_t>& wanted) const;

    std::string fName;
    DecodedText fText;
    TextDialect fDialect;
    std::int32_t fBlockBytes;
    std::vector<std::string> fvNames;
    std::size_t fBodyStart = 0;  // behind the header, in fText
    std::int64_t fRowCount = 0;
    std::int64_t fLongestRecord = 0;  // bytes
    std::vector<DataNote> fvNotes;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_DELIMITEDTEXT_H

#ifndef PREDSEL_EMBEDDED_DATA_OPENOPTIONS_H
#define PREDSEL_EMBEDDED_DATA_OPENOPTIONS_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace embedded {

enum class TextEncoding { kDetect, kUtf8, kUtf16, kLatin1 };

/// How a data file is to be read. Names are matched exactly.
struct OpenOptions {
    /// Path of the Table Schema; empty: FILE.schema.json if it exists.
    std::string fSchemaPath;
    /// Cells with exactly one of these texts are system-missing, in every column.
    std::vector<std::string> fvNaTexts;

    // Delimited text; what is not set is detected.
    std::optional<char> fDelimiter;
    std::optional<char> fQuote;                      // '\0': quotes have no meaning
    std::optional<char> fDecimalMark;                // '.' or ','
    TextEncoding fEncoding = TextEncoding::kDetect;  // kLatin1 is read as Windows-1252
    /// Bytes of text handed to the parser at a time. No result depends on it.
    std::int32_t fBlockBytes = 1 << 20;
    /// Threads to read with; 0: one a processor. No result depends on it.
    std::int32_t fThreads = 0;
    /// Bytes that the columns may take in memory; what is beyond goes to a temporary file in the
    /// folder that TMPDIR names, else /tmp. 0: half of what the machine has.
    std::int64_t fMemory = 0;

    /// See DataSet::NominalMax.
    std::int32_t fNominalMax = 20;
    /// Variable and level: "nominal", "ordinal" or "scale". Beats the schema.
    std::vector<std::pair<std::string, std::string>> fvLevels;
    /// Variable and its user-missing values: up to three values separated by commas, one of which
    /// may be a range LOW..HIGH if the variable is numeric (then at most one value beside it).
    /// Replaces what the schema says; an empty text leaves none.
    std::vector<std::pair<std::string, std::string>> fvMissing;
    /// The weight variable; empty: what the schema says.
    std::string fWeight;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_OPENOPTIONS_H

#ifndef PREDSEL_EMBEDDED_DATA_COLUMNBUILDER_H
#define PREDSEL_EMBEDDED_DATA_COLUMNBUILDER_H

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "embedded/data/Column.h"

namespace embedded {

/// Text hashed without making a std::string of it.
struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
        return std::hash<std::string_view>()(text);
    }
};
using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

/// Codes as they come, in chunks of kChunkRows, each chunk as narrow as its largest code allows.
class CodeChunks {
 public:
    void Append(std::uint32_t code) { Store(code + 1); }
    void AppendMissing() { Store(0); }
    /// The same rows with each code replaced by newCodes[code] and 0 for missing rows, all chunks
    /// in the narrowest integer that holds codes below count.
    std::vector<CodeVector> Recode(const std::vector<std::uint32_t>& newCodes,
                                   std::size_t count) &&;

 private:
    void Store(std::uint32_t entry);

    std::vector<CodeVector> fvChunks;  // code + 1, 0 for missing rows
    std::int32_t fRowsInLast = kChunkRows;
};

/// Validity bits as they come; a chunk without a missing row takes no memory.
class ValidityChunks {
 public:
    void Append(bool valid);
    std::int64_t Rows() const { return fRows; }
    std::vector<Column::Validity> Finish() && { return std::move(fvChunks); }

 private:
    std::vector<Column::Validity> fvChunks;
    std::int64_t fRows = 0;
};

/// How many values of a column share an oddity, and where the first is.
struct Oddity {
    std::int64_t fCount = 0;
    std::int64_t fFirstRow = -1;
    void Note(std::int64_t row) {
        if (fCount++ == 0) {
            fFirstRow = row;
        }
    }
};

/// Makes a numeric column row by row.
class NumericColumnBuilder {
 public:
    /// NaN is system-missing; so are infinities and MCMV::gMissingValue, which are counted as well.
    void Append(double value);
    void AppendMissing();
    /// Multiplies what has been appended so far, for a unit that turns out to be another.
    void Scale(double factor);

    std::int64_t Rows() const { return fValidity.Rows(); }
    const Oddity& Infinite() const { return fInfinite; }
    Column Finish() &&;

 private:
    void Store(double value, bool valid);

    std::vector<std::vector<double>> fvChunks;
    ValidityChunks fValidity;
    Oddity fInfinite;
};

/// Makes a string column row by row.
class StringColumnBuilder {
 public:
    /// Texts that are system-missing; borrowed, null when there are none.
    explicit StringColumnBuilder(const TextSet* missingTexts = nullptr)
        : fpMissingTexts(missingTexts) {}

    /// A text that has been taken up, to be appended any number of times.
    using Token = std::int32_t;
    static constexpr Token kMissingToken = -1;

    /// Takes up a text, without the blanks at its end. Bytes that are no UTF-8 are replaced by
    /// U+FFFD.
    Token Intern(std::string_view text);
    void Append(Token token);
    void Append(std::string_view text) { Append(Intern(text)); }
    void AppendMissing() { Append(kMissingToken); }

    std::int64_t Rows() const { return fValidity.Rows(); }
    /// Rows whose text had bytes replaced.
    const Oddity& Undecodable() const { return fUndecodable; }
    Column Finish() &&;

 private:
    struct Text {
        std::string fText;
        bool fbReplaced;
    };
    const TextSet* fpMissingTexts;
    std::unordered_map<std::string, Token, TextHash, std::equal_to<>> fTokens;  // by bytes as read
    std::deque<Text> fvTexts;                                                   // by token
    std::string fLastText;  // columns repeat themselves: saves the look-up
    Token fLastToken = kMissingToken;
    bool fbHaveLast = false;
    CodeChunks fCodes;
    ValidityChunks fValidity;
    Oddity fUndecodable;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_COLUMNBUILDER_H

#ifndef PREDSEL_EMBEDDED_DATA_COLUMNBUILDER_H
#define PREDSEL_EMBEDDED_DATA_COLUMNBUILDER_H

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
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

/// How many values of a column share an oddity, and where the first is.
struct Oddity {
    std::int64_t fCount = 0;
    std::int64_t fFirstRow = -1;
    void Note(std::int64_t row) {
        if (fCount++ == 0) {
            fFirstRow = row;
        }
    }
    /// Adds what was noted in rows that begin at firstRow, behind all rows so far.
    void Join(const Oddity& part, std::int64_t firstRow) {
        if (part.fCount > 0 && fCount == 0) {
            fFirstRow = firstRow + part.fFirstRow;
        }
        fCount += part.fCount;
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

    std::int64_t Rows() const { return fRows; }
    const Oddity& Infinite() const { return fInfinite; }
    Column Finish(std::shared_ptr<ColumnMemory> memory = nullptr) &&;

 private:
    void Store(double value);

    std::vector<Cells<double>> fvChunks;
    std::int64_t fRows = 0;
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

    std::int64_t Rows() const { return fRows; }
    /// Rows whose text had bytes replaced.
    const Oddity& Undecodable() const { return fUndecodable; }
    Column Finish(std::shared_ptr<ColumnMemory> memory = nullptr) &&;

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
    CodeVector fCodes;
    std::int64_t fRows = 0;
    Oddity fUndecodable;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_COLUMNBUILDER_H

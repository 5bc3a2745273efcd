// Holds the string table against the sources, so that neither drifts from the other.
#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/strings/StringTable.h"

namespace embedded {
namespace {

namespace fs = std::filesystem;

/// A word, a sign or a text literal of C++; neighbouring literals are one, as the compiler has
/// them.
struct SourceToken {
    std::string fText;
    bool fbLiteral = false;
};

class SourceScanner {
 public:
    explicit SourceScanner(std::string source) : fSource(std::move(source)) {}

    std::vector<SourceToken> Scan() {
        while (fAt < fSource.size()) Step();
        return std::move(fvTokens);
    }

 private:
    bool Ahead(std::string_view text) const {
        return std::string_view(fSource).substr(fAt).starts_with(text);
    }

    void SkipTo(std::string_view end) {
        const std::size_t found = fSource.find(end, fAt);
        fAt = found == std::string::npos ? fSource.size() : found + end.size();
    }

    void Step() {
        const char c = fSource[fAt];
        if (Ahead("//")) {
            SkipTo("\n");
        } else if (Ahead("/*")) {
            SkipTo("*/");
        } else if (Ahead("R\"")) {
            RawLiteral();
        } else if (c == '"') {
            Literal();
        } else if (c == '\'') {
            ++fAt;
            while (fAt < fSource.size() && fSource[fAt] != '\'')
                fAt += fSource[fAt] == '\\' ? 2 : 1;
            ++fAt;
        } else if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_') {
            Word();
        } else {
            if (std::isspace(static_cast<unsigned char>(c)) == 0)
                fvTokens.push_back({std::string(1, c), false});
            ++fAt;
        }
    }

    void Word() {
        const std::size_t from = fAt;
        // The mark between the digits of a number is part of it.
        while (fAt < fSource.size() &&
               (std::isalnum(static_cast<unsigned char>(fSource[fAt])) != 0 ||
                fSource[fAt] == '_' || (fSource[fAt] == '\'' && IsDigit(fSource[from]))))
            ++fAt;
        fvTokens.push_back({fSource.substr(from, fAt - from), false});
    }

    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

    void Literal() {
        std::string text;
        for (++fAt; fAt < fSource.size() && fSource[fAt] != '"'; ++fAt) {
            if (fSource[fAt] == '\\' && fAt + 1 < fSource.size()) {
                ++fAt;
                text += fSource[fAt] == 'n' ? '\n' : fSource[fAt];
            } else {
                text += fSource[fAt];
            }
        }
        ++fAt;
        Add(text);
    }

    void RawLiteral() {
        fAt += 2;
        const std::size_t open = fSource.find('(', fAt);
        const std::string end = ")" + fSource.substr(fAt, open - fAt) + "\"";
        const std::size_t close = fSource.find(end, open);
        Add(fSource.substr(open + 1, close - open - 1));
        fAt = close + end.size();
    }

    void Add(const std::string& text) {
        if (!fvTokens.empty() && fvTokens.back().fbLiteral)
            fvTokens.back().fText += text;
        else
            fvTokens.push_back({text, true});
    }

    std::string fSource;
    std::size_t fAt = 0;
    std::vector<SourceToken> fvTokens;
};

/// The sources that show texts, without their tests.
std::vector<fs::path> Sources() {
    std::vector<fs::path> files;
    for (const char* folder : {"backend/predselect", "embedded"}) {
        const fs::path root = fs::path(PREDSEL_SOURCE_DIR) / folder;
        if (!fs::exists(root)) continue;
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            const fs::path relative = fs::relative(entry.path(), root);
            bool test = false;
            for (const auto& part : relative) test = test || part == "tests";
            const auto extension = entry.path().extension();
            if (!test && (extension == ".cpp" || extension == ".h")) files.push_back(entry.path());
        }
    }
    return files;
}

struct SourceTexts {
    std::set<std::string> fLiterals;  // all
    std::set<std::string> fKeys;      // those that are keys by the way in which they are used
};

/// True for `Class("text", true` and `Class name("text", true`, with either kind of bracket.
bool IsKeyOf(const std::vector<SourceToken>& tokens, std::size_t literal) {
    if (literal < 2 || literal + 2 >= tokens.size()) return false;
    if (tokens[literal + 1].fText != "," || tokens[literal + 2].fText != "true") return false;
    const std::string& bracket = tokens[literal - 1].fText;
    if (bracket != "(" && bracket != "{") return false;
    for (std::size_t back = 2; back <= 3 && back <= literal; ++back) {
        const std::string& name = tokens[literal - back].fText;
        if (name == "BpString" || name == "BpComposite") return true;
    }
    return false;
}

SourceTexts ReadTexts(const std::string& source) {
    SourceTexts texts;
    const std::vector<SourceToken> tokens = SourceScanner(source).Scan();
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (!tokens[i].fbLiteral) continue;
        const std::string& text = tokens[i].fText;
        texts.fLiterals.insert(text);
        const bool textOf = i >= 2 && tokens[i - 2].fText == "TextOf";
        // Three dots end the keys of messages and of other long texts.
        const bool dots = text.size() > 3 && text.ends_with("...") &&
                          std::isalnum(static_cast<unsigned char>(text.front())) != 0;
        if (textOf || dots || IsKeyOf(tokens, i)) texts.fKeys.insert(text);
    }
    return texts;
}

const SourceTexts& AllTexts() {
    static const SourceTexts all = [] {
        SourceTexts sum;
        for (const fs::path& file : Sources()) {
            std::ifstream in(file, std::ios::binary);
            const std::string source{std::istreambuf_iterator<char>(in), {}};
            SourceTexts texts = ReadTexts(source);
            sum.fLiterals.merge(texts.fLiterals);
            sum.fKeys.merge(texts.fKeys);
        }
        return sum;
    }();
    return all;
}

TEST(KeyUse, TheScannerJoinsLiteralsAndSkipsComments) {
    const SourceTexts texts = ReadTexts(
        "BpString a(\"one \" // \"no\"\n    \"two\", true); /* \"no\" */ char c = '\"';\n"
        "BpString(\"plain\", false); f(\"dots...\"); n = 1'000'000; BpComposite{R\"(raw\\n)\", "
        "true};");
    EXPECT_EQ(texts.fKeys, (std::set<std::string>{"one two", "dots...", "raw\\n"}));
    EXPECT_EQ(texts.fLiterals, (std::set<std::string>{"one two", "plain", "dots...", "raw\\n"}));
}

TEST(KeyUse, EveryKeyInTheSourcesHasAText) {
    ASSERT_GT(AllTexts().fLiterals.size(), 50U);
    for (const std::string& key : AllTexts().fKeys)
        EXPECT_TRUE(StringTable::English().All().contains(key)) << key;
}

TEST(KeyUse, EveryTextIsUsed) {
    for (const auto& [key, text] : StringTable::English().All())
        EXPECT_TRUE(AllTexts().fLiterals.contains(key)) << key;
}

}  // namespace
}  // namespace embedded

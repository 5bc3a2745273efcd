#include "embedded/command/NearestNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace embedded {
namespace {

using Names = std::vector<std::string>;

Names Nearest(std::string_view word, const Names& names) {
    NearestNames nearest(word);
    for (const std::string& name : names) nearest.Offer(name);
    return nearest.Names();
}

TEST(NearestNames, FindsOneSlipOfEachKind) {
    EXPECT_EQ(Nearest("incme", {"income"}), Names{"income"});    // a letter missing
    EXPECT_EQ(Nearest("inncome", {"income"}), Names{"income"});  // one too many
    EXPECT_EQ(Nearest("inkome", {"income"}), Names{"income"});   // a wrong one
    EXPECT_EQ(Nearest("icnome", {"income"}), Names{"income"});   // two swapped
}

TEST(NearestNames, CaseIsNoSlip) { EXPECT_EQ(Nearest("AGE", {"age"}), Names{"age"}); }

TEST(NearestNames, NearestComesFirstAndThreeAreEnough) {
    EXPECT_EQ(Nearest("region", {"regxyn", "regon", "region2", "regiom", "reigon"}),
              (Names{"regon", "region2", "regiom"}));
    EXPECT_EQ(Nearest("region", {"regxyn", "regon"}), (Names{"regon", "regxyn"}));
}

TEST(NearestNames, ShortWordsMustBeAlmostRight) {
    EXPECT_EQ(Nearest("ab", {"xy", "zz", "ax"}), Names{"ax"});
    EXPECT_TRUE(Nearest("a", {"bcd"}).empty());
}

TEST(NearestNames, FarAwayWordsFallBackOnTheirBeginning) {
    EXPECT_EQ(Nearest("inc", {"education", "income_household", "income_person"}),
              (Names{"income_household", "income_person"}));
    EXPECT_TRUE(Nearest("zzz", {"education"}).empty());
}

TEST(NearestNames, EmptyNamesDoNoHarm) {
    EXPECT_TRUE(Nearest("", {"education"}).empty());
    EXPECT_EQ(Nearest("", {""}), Names{""});
    EXPECT_TRUE(Nearest("education", {""}).empty());
}

// The plain form of the distance: the whole table, no band.
std::size_t PlainDistance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> table(a.size() + 1,
                                                std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) table[i][0] = i;
    for (std::size_t j = 0; j <= b.size(); ++j) table[0][j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i)
        for (std::size_t j = 1; j <= b.size(); ++j) {
            table[i][j] = std::min({table[i - 1][j] + 1, table[i][j - 1] + 1,
                                    table[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
        }
    return table[a.size()][b.size()];
}

TEST(NearestNames, AgreesWithTheWholeTableOnRandomWords) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto word = [&random] {
        std::string text(random() % 12, 'A');
        for (char& c : text) c = static_cast<char>('A' + random() % 3);
        return text;
    };
    std::size_t near = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string a = word(), b = word();
        const std::size_t slips = std::clamp<std::size_t>(a.size() / 3, 1, 3);
        const bool begins = a.size() > 1 && b.size() > a.size() && b.starts_with(a);
        const bool expected = PlainDistance(a, b) <= slips || begins;
        ASSERT_EQ(!Nearest(a, {b}).empty(), expected) << a << " " << b;
        near += expected ? 1 : 0;
    }
    EXPECT_GT(near, 1000u);  // both answers occurred often
    EXPECT_LT(near, 19000u);
}

}  // namespace
}  // namespace embedded

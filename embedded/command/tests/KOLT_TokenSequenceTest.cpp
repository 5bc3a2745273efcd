#include <gtest/gtest.h>

#include "embedded/command/tests/CommandRun.h"

namespace embedded {
namespace {

TEST(KOLT_TokenSequence, GivesTheTokensBehindTheNameAndThenTheEnd) {
    CommandRun run("SELECTPRED y BY;");
    KOLT_TokenSequence tokens(true);
    EXPECT_EQ(tokens.Peek().getString(), "y");
    EXPECT_EQ(tokens.Peek().getString(), "y");
    tokens.Advance();
    EXPECT_EQ(tokens.Peek().getUpperString(), "BY");
    tokens.Advance();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(tokens.Peek().Kind(), TokenKind::End);
        EXPECT_EQ(tokens.Peek().Column(), 16);
        tokens.Advance();
    }
}

TEST(KOLT_TokenSequence, CommandWithoutTokensIsAtItsEnd) {
    CommandRun run("SELECTPRED");
    EXPECT_EQ(KOLT_TokenSequence(true).Peek().Kind(), TokenKind::End);
}

TEST(KOLT_TokenSequence, EachSequenceReadsByItself) {
    CommandRun run("SELECTPRED y BY x");
    KOLT_TokenSequence first(true), second(true);
    first.Advance();
    EXPECT_EQ(first.Peek().getString(), "BY");
    EXPECT_EQ(second.Peek().getString(), "y");
}

}  // namespace
}  // namespace embedded

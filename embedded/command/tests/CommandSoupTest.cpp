// Whatever a text holds, reading it ends in commands or a fault, and reading a command ends in a
// status with at least one message when it is refused.
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <string_view>

#include "embedded/command/tests/CommandRun.h"

namespace embedded {
namespace {

CommandDescriptor SoupGrammar() {
    CommandDescriptor command("SELECTPRED");
    command.addSubComDescriptor(SubComDescriptor("", kSubComVarList, true));
    SubComDescriptor sub("SUB", kSubComParams, false);
    sub.addParamDescriptor(ParamDescriptor("LIST", kParamTokenList, false, true));
    ParamDescriptor size("SIZE", kParamTokenList, false, true);
    size.setQualifOption(0);
    size.addQualifDesc("Q");
    sub.addParamDescriptor(size);
    ParamDescriptor words("WORDS", kParamStringList, false, false);
    words.addStringValue("a");
    words.addStringValue("B");
    sub.addParamDescriptor(words);
    ParamDescriptor count("COUNT", kParamInteger, false, true);
    count.setLowerBdry(0, kBdryExcluded);
    count.addStringValue("AUTO");
    sub.addParamDescriptor(count);
    sub.addParamDescriptor(ParamDescriptor("FLAG", kParamKeyword, false, true));
    sub.addParamDescriptor(ParamDescriptor("NAME", kParamVariable, false, false));
    sub.addParamDescriptor(ParamDescriptor("FILE", kParamFile, false, true));
    command.addSubComDescriptor(sub);
    return command;
}

DataSet SoupData() {
    DataSetBuilder builder;
    builder.Numbers("a", {1, 2}).Numbers("x1", {1, 2}).Numbers("x2", {1, 2});
    builder.Strings("s", {"u", "v"}).Numbers("ö ä", {1, 2});
    return builder.Build();
}

/// Everything that a procedure asks of the command language, on the first command of a text.
void ReadAndResolve(const std::string& text) {
    const CommandScript script = ParseCommandText(text, "soup");
    ASSERT_EQ(script.fFault.has_value(), script.fvCommands.empty());
    if (script.fFault) {
        EXPECT_FALSE(script.fFault->fText.empty());
        EXPECT_EQ(script.fFault->fText.find('\n'), std::string::npos);
        return;
    }
    const CommandRun run(text, SoupData());
    const CommandDescriptor grammar = SoupGrammar();
    KOLT_TokenSequence tokens(true);
    CommandSpec spec;
    const std::int32_t faults = UniversalParser(tokens, spec, grammar).getCommandSpecifications();
    EXPECT_EQ(static_cast<std::size_t>(faults), run.Messages().size());
    EXPECT_EQ(faults != 0, run.HasError());
    const std::size_t before = run.Messages().size();

    const ProcedureDataSource source;
    VarSpecObj target("", "", grammar, source, false), factors("", "", grammar, source, false),
        covariates("", "", grammar, source, true), list("LIST", "SUB", grammar, source, true);
    bool good = true;
    target.SetAllVarsByDefault(true);
    target.SetAllowQualifiers(true);
    if (const SubComObj* opening = spec.getSubComObj(""))
        good = target.ValidateRegrVarList(opening->exportParamObj(), factors, covariates, 2, {});
    if (const SubComObj* sub = spec.getSubComObj("SUB"))
        if (const ParamObj* param = sub->getParamObj("LIST"))
            good = list.ValidateVariables(param->getTokenList(), 0) && good;
    EXPECT_EQ(good, run.Messages().size() == before);
}

unsigned Seed() { return std::random_device{}(); }

TEST(CommandSoup, RandomTokensEndInAStatus) {
    constexpr std::array<std::string_view, 46> kPieces = {
        "SELECTPRED", "NAIVEBAYES", "a",     "x1",    "x2",   "s",       "\"ö ä\"", "y",
        "ALL",        "BY",         "WITH",  "/",     "/",    "SUB",     "/SUB",    "LIST",
        "SIZE",       "WORDS",      "COUNT", "FLAG",  "NAME", "FILE",    "=",       "=",
        "(",          ")",          "(",     ")",     ",",    ":",       "..",      "*",
        "-",          ";",          "5",     "-0.5",  "AUTO", "'it''s'", "\n",      "\t",
        " ",          "# c\n",      "x*",    "a..x2", "Q=b",  "\r\n"};
    const unsigned seed = Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 5000; ++round) {
        std::string text = random() % 10 == 0 ? "" : "SELECTPRED a ";
        const std::size_t pieces = random() % 25;
        for (std::size_t i = 0; i < pieces; ++i) {
            text += kPieces[random() % kPieces.size()];
            if (random() % 3 != 0) text += ' ';
        }
        SCOPED_TRACE(text);
        ReadAndResolve(text);
        if (HasFailure()) break;
    }
}

TEST(CommandSoup, RandomBytesEndInAStatus) {
    const unsigned seed = Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 5000; ++round) {
        std::string text = "SELECTPRED ";
        const std::size_t bytes = random() % 60;
        for (std::size_t i = 0; i < bytes; ++i) text += static_cast<char>(random() % 256);
        SCOPED_TRACE(testing::PrintToString(text));
        ReadAndResolve(text);
        if (HasFailure()) break;
    }
}

TEST(CommandSoup, CommandWithAChangedByteEndsInAStatus) {
    const std::string command =
        "\xEF\xBB\xBFSELECTPRED a (MLEVEL=S) BY s, \"ö ä\" WITH x1..x2 # why\r\n"
        "  /SUB LIST=(x*, a) SIZE=AUTO(Q=b) WORDS(a B) COUNT=1e3 FLAG NAME FILE='it''s';";
    ReadAndResolve(command);
    const unsigned seed = Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (std::size_t at = 0; at < command.size() && !HasFailure(); ++at)
        for (int change = 0; change < 12; ++change) {
            std::string text = command;
            text[at] = static_cast<char>(change < 8 ? text[at] ^ (1 << change) : random() % 256);
            SCOPED_TRACE(testing::PrintToString(text));
            ReadAndResolve(text);
        }
}

TEST(CommandSoup, CommandCutOffAnywhereEndsInAStatus) {
    const std::string command =
        "SELECTPRED a (MLEVEL=S) BY s, \"ö ä\" WITH x1..x2 # why\r\n"
        "  /SUB LIST=(x*, a) SIZE=AUTO(Q=b) WORDS(a B) COUNT=1e3 FLAG NAME FILE='it''s';";
    for (std::size_t length = 0; length <= command.size(); ++length) {
        SCOPED_TRACE(length);
        ReadAndResolve(command.substr(0, length));
    }
}

}  // namespace
}  // namespace embedded

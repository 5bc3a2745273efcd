#include "persistence/XMLArchive.h"

#include <gtest/gtest.h>

#include <sstream>

#include "persistence/tests/Sample.h"

namespace {

using sample::Outer;

const std::string kDocument =
    " <Obj name=\"Outer\">\n"
    "  <Int value=\"-3\"/>\n"
    "  <Long value=\"4294967294\"/>\n"
    "  <Int value=\"1\"/>\n"
    "  <Double value=\"0.1\"/>\n"
    "  <String value=\"a&lt;b\"/>\n"
    "  <Obj name=\"Inner\">\n"
    "   <Int value=\"5\"/>\n"
    "  </Obj>\n"
    "  <Int value=\"2\"/>\n"
    "  <Int value=\"1\"/>\n"
    "  <Double value=\"0.5\"/>\n"
    "  <Int value=\"2\"/>\n"
    "  <Double value=\"1.5\"/>\n"
    "  <Int value=\"1\"/>\n"
    "  <Obj name=\"Inner\">\n"
    "   <Int value=\"6\"/>\n"
    "  </Obj>\n"
    "  <Int value=\"2\"/>\n"
    "  <Int value=\"1\"/>\n"
    "  <Int value=\"0\"/>\n"
    "  <Int value=\"2\"/>\n"
    "  <Int value=\"7\"/>\n"
    "  <Int value=\"8\"/>\n"
    " </Obj>\n";
constexpr std::int64_t kElements = 22;

std::string Saved(const Outer& outer) {
    std::ostringstream stream;
    EXPECT_EQ(Persistence::SaveXML(outer, stream, 1), kElements);
    return stream.str();
}

bool Restore(Outer& outer, const std::string& text, std::string& line) {
    std::istringstream stream(text);
    MCCommonXML::XMLReader document(stream);
    testing::internal::CaptureStderr();
    bool restored = true;
    try {
        EXPECT_EQ(Persistence::RestoreXML<sample::Failure>(outer, document), kElements);
    } catch (const sample::Failure* failure) {
        delete failure;
        restored = false;
    }
    line = testing::internal::GetCapturedStderr();
    return restored;
}

std::string LineFor(const std::string& text) {
    Outer outer = Outer::Empty();
    std::string line;
    EXPECT_FALSE(Restore(outer, text, line));
    return line;
}

std::string Replaced(const std::string& what, const std::string& by) {
    std::string text = kDocument;
    text.replace(text.find(what), what.size(), by);
    return text;
}

TEST(XMLArchive, WritesObjectsAndValuesAtTheirLevels) {
    EXPECT_EQ(Saved(sample::Full()), kDocument);
}

TEST(XMLArchive, ReadsWhatItWrote) {
    Outer outer = Outer::Empty();
    std::string line;
    EXPECT_TRUE(Restore(outer, kDocument, line));
    EXPECT_TRUE(sample::Same(outer, sample::Full()));
    EXPECT_EQ(line, "");
}

TEST(XMLArchive, ARefusalNamesTheInnermostObject) {
    EXPECT_EQ(LineFor(Replaced("Outer", "Other")), "No Outer in XML!\n");
    EXPECT_EQ(LineFor(Replaced("\"Inner\"", "\"Other\"")), "Error reading Inner!\n");
    EXPECT_EQ(LineFor(Replaced("value=\"5\"", "value=\"x\"")), "Error reading Inner!\n");
    EXPECT_EQ(LineFor(Replaced("<Double", "<Single")), "No Outer in XML!\n");
    EXPECT_EQ(LineFor(Replaced("<Int value=\"5\"/>", "")), "Error reading Inner!\n");
}

TEST(XMLArchive, AnObjectThatHoldsMoreIsRefused) {
    EXPECT_EQ(LineFor(Replaced("<Int value=\"5\"/>", "<Int value=\"5\"/><Int value=\"5\"/>")),
              "Error reading Inner!\n");
}

TEST(XMLArchive, AnUnsignedNumberOutOfRangeIsRefused) {
    EXPECT_EQ(LineFor(Replaced("4294967294", "4294967296")), "No Outer in XML!\n");
    EXPECT_EQ(LineFor(Replaced("4294967294", "-1")), "No Outer in XML!\n");
}

TEST(XMLArchive, OnlyOneReadsAsTrue) {
    Outer outer = Outer::Empty();
    std::string line;
    EXPECT_TRUE(Restore(outer, Replaced("<Int value=\"1\"/>", "<Int value=\"2\"/>"), line));
    EXPECT_FALSE(outer.fbFlag);
}

TEST(XMLArchive, AFailedCheckIsARefusal) {
    EXPECT_EQ(LineFor(Replaced("value=\"-3\"", "value=\"99\"")), "No Outer in XML!\n");
}

TEST(XMLArchive, ADocumentThatIsNoneIsRefused) {
    EXPECT_EQ(LineFor(""), "No Outer in XML!\n");
    EXPECT_EQ(LineFor("<!DOCTYPE a [<!ENTITY b \"c\">]>" + kDocument), "No Outer in XML!\n");
}

constexpr Persistence::SavedClass kDeep{.fTag = "DEEPS", .fName = "Deep", .fMinLevel = 3};

std::string SavedDeep(std::int32_t level) {
    std::ostringstream stream;
    Persistence::XMLWriter writer(stream, level);
    writer(kDeep, 1);
    return stream.str();
}

TEST(XMLArchive, AClassMayAskForADepthOfItsOwn) {
    EXPECT_EQ(SavedDeep(1), "   <Obj name=\"Deep\">\n    <Int value=\"1\"/>\n   </Obj>\n");
    EXPECT_TRUE(SavedDeep(4).starts_with("    <Obj"));
}

}  // namespace

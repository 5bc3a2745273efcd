#include <gtest/gtest.h>

#include <locale>
#include <sstream>

#include "host/Records.h"
#include "host/Xml.h"

namespace MCCommonXML {
namespace {

std::string Written(const XMLElement& root, const XMLDocType* docType = nullptr,
                    std::int32_t indent = 0) {
    std::ostringstream stream;
    WriteTree(stream, docType, root, indent);
    return stream.str();
}

constexpr const char* kProlog = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

TEST(XMLElement, AttributesStandInTheOrderAdded) {
    XMLElement root("Criterion");
    root.AddAttribute("name", "Cramer V");
    root.AddAttribute("criterionValue", 0.25);
    root.AddAttribute("df", 3);
    EXPECT_EQ(
        Written(root),
        std::string(kProlog) + "<Criterion name=\"Cramer V\" criterionValue=\"0.25\" df=\"3\"/>\n");
}

TEST(XMLElement, MissingNumberIsWrittenAsMissing) {
    XMLElement root("Predictor");
    root.AddAttribute("statisticValue", MCMV::gMissingValue);
    EXPECT_EQ(Written(root), std::string(kProlog) + "<Predictor statisticValue=\"Missing\"/>\n");
}

TEST(XMLElement, AttributeAddedTwiceKeepsItsPlace) {
    XMLElement root("Root");
    root.AddAttribute("a", "1");
    root.AddAttribute("b", "2");
    root.AddAttribute("a", "3");
    EXPECT_EQ(Written(root), std::string(kProlog) + "<Root a=\"3\" b=\"2\"/>\n");
}

TEST(XMLElement, AttributeAddedAfterChildrenIsWritten) {
    XMLElement root("Root");
    root.AddChild("Child");
    root.AddAttribute("numberOfPredictors", 1.0);
    EXPECT_EQ(Written(root),
              std::string(kProlog) + "<Root numberOfPredictors=\"1\"><Child/></Root>\n");
}

TEST(XMLElement, TreeIsIndentedAndTextIsLeftInOneLine) {
    XMLElement root("FSOutputOne");
    XMLElement& header = root.AddChild("Header");
    header.AddChild("Application").AddAttribute("version", "1.0");
    header.AddChild("Timestamp").AddText("Thu Jan  1 00:00:00 1970");
    root.AddChild(std::make_unique<XMLElement>("Target"));
    const auto docType = XMLDocType::Create("FSOutputOne", "fsoutputonecrit.dtd");
    EXPECT_EQ(Written(root, docType.get(), 1),
              std::string(kProlog) +
                  "<!DOCTYPE FSOutputOne SYSTEM \"fsoutputonecrit.dtd\">\n"
                  "<FSOutputOne>\n"
                  " <Header>\n"
                  "  <Application version=\"1.0\"/>\n"
                  "  <Timestamp>Thu Jan  1 00:00:00 1970</Timestamp>\n"
                  " </Header>\n"
                  " <Target/>\n"
                  "</FSOutputOne>\n");
}

TEST(XMLElement, WholeNumbersHaveNeitherPointNorExponent) {
    XMLElement root("N");
    root.AddAttribute("hundredThousand", 100000.0);
    root.AddAttribute("largest", -999999999999999.0);
    root.AddAttribute("larger", 1e15);
    root.AddAttribute("fraction", 0.00001);
    EXPECT_EQ(Written(root, nullptr, 0),
              std::string(kProlog) +
                  "<N hundredThousand=\"100000\" largest=\"-999999999999999\""
                  " larger=\"1e+15\" fraction=\"1e-05\"/>\n");
}

TEST(XMLElement, TreesAskedForInUTF8DeclareIt) {
    XMLElement root("N");
    root.AddAttribute("name",
                      "Gr\xC3\xB6\xC3\x9F"
                      "e\n");
    std::ostringstream stream;
    WriteTreeUTF8(stream, nullptr, root, 0);
    EXPECT_EQ(stream.str(), std::string(kProlog) +
                                "<N name=\"Gr\xC3\xB6\xC3\x9F"
                                "e&#10;\"/>\n");
}

TEST(XMLElement, NoBreakIsPutBesideText) {
    XMLElement root("A");
    root.AddText("x < y");
    root.AddChild("B").AddChild("C");
    EXPECT_EQ(Written(root, nullptr, 2), std::string(kProlog) + "<A>x &lt; y<B><C/></B></A>\n");
}

TEST(XMLElement, NumbersIgnoreTheLocaleOfTheStream) {
    struct Grouping : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    XMLElement root("N");
    root.AddAttribute("v", 1234567.5);
    std::ostringstream stream;
    stream.imbue(std::locale(std::locale::classic(), new Grouping));
    WriteTree(stream, nullptr, root, 0);
    XMLObj("O", 1).WriteSubElement(stream, std::int32_t{1234567});
    EXPECT_EQ(stream.str(),
              std::string(kProlog) + "<N v=\"1234567.5\"/>\n  <Int value=\"1234567\"/>\n");
}

}  // namespace
}  // namespace MCCommonXML

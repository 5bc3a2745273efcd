#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <sstream>

#include "host/Records.h"
#include "host/Xml.h"

namespace MCCommonXML {
namespace {

struct Saved {
    std::int32_t fInt = 0;
    std::int64_t fLong = 0;
    double fDouble = 0;
    double fMissing = 0;
    std::string fText;
    std::int32_t fInner = 0;
    bool operator==(const Saved&) const = default;
};

const std::unique_ptr<XMLDocType>& SaveType() {
    static const auto type = XMLDocType::Create("MCXMLRoot", "savexml.dtd");
    return type;
}

const Saved kSample{-7,
                    std::numeric_limits<std::int64_t>::min(),
                    0.1,
                    MCMV::gMissingValue,
                    "Gr\xC3\xB6\xC3\x9F"
                    "e <\"&'>\t\r\n",
                    1};

std::string Save(const Saved& value) {
    std::ostringstream stream;
    StartRoot(stream, *SaveType(), "Copyright (c) 2026 The predselect authors");
    const XMLObj outer("Outer 1.00", 1);
    outer.StartObj(stream);
    outer.WriteSubElement(stream, value.fInt);
    outer.WriteSubElement(stream, value.fLong);
    outer.WriteSubElement(stream, value.fDouble);
    const XMLObj inner("Inner", 2);
    inner.StartObj(stream);
    inner.WriteSubElement(stream, value.fInner);
    inner.EndObj(stream);
    outer.WriteSubElement(stream, value.fMissing);
    outer.WriteSubElement(stream, value.fText);
    outer.EndObj(stream);
    EndRoot(stream, *SaveType());
    return stream.str();
}

/// True when all of it was there; values read before a failure stay in valueOut.
bool Restore(const std::string& text, Saved& valueOut, std::size_t maxBytes = kMaxXMLBytes) {
    std::istringstream stream(text);
    XMLReader reader(stream, maxBytes);
    return reader.ParseStartRoot(*SaveType()) && reader.ParseStartObj("Outer 1.00") &&
           reader.ParseValue(valueOut.fInt) && reader.ParseValue(valueOut.fLong) &&
           reader.ParseValue(valueOut.fDouble) && reader.ParseStartObj("Inner") &&
           reader.ParseValue(valueOut.fInner) && reader.ParseEndObj() &&
           reader.ParseValue(valueOut.fMissing) && reader.ParseValue(valueOut.fText) &&
           reader.ParseEndObj() && reader.ParseEndRoot() && reader.IsGood();
}

bool Restores(const std::string& text) {
    Saved ignored;
    return Restore(text, ignored);
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

TEST(XMLReader, SavedObjectsAreWrittenInTheirVocabulary) {
    EXPECT_EQ(Save({1, 2, 0.5, MCMV::gMissingValue, "a", 0}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE MCXMLRoot SYSTEM \"savexml.dtd\">\n"
              "<MCXMLRoot copyright=\"Copyright (c) 2026 The predselect authors\">\n"
              " <Obj name=\"Outer 1.00\">\n"
              "  <Int value=\"1\"/>\n"
              "  <Long value=\"2\"/>\n"
              "  <Double value=\"0.5\"/>\n"
              "  <Obj name=\"Inner\">\n"
              "   <Int value=\"0\"/>\n"
              "  </Obj>\n"
              "  <Double value=\"Missing\"/>\n"
              "  <String value=\"a\"/>\n"
              " </Obj>\n"
              "</MCXMLRoot>\n");
}

TEST(XMLReader, ReadsBackWhatWasWritten) {
    Saved read;
    EXPECT_TRUE(Restore(Save(kSample), read));
    EXPECT_EQ(read, kSample);
}

TEST(XMLReader, AnyDoubleReadsBackTheSame) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::lognormal_distribution<double> values(0.0, 200.0);
    std::vector<double> written = {std::numeric_limits<double>::denorm_min(),
                                   std::numeric_limits<double>::max(),
                                   std::numeric_limits<double>::infinity(), -0.0};
    for (int i = 0; i < 1000; ++i) written.push_back(values(random));
    for (const double value : written) {
        Saved sample = kSample;
        sample.fDouble = value;
        Saved read;
        ASSERT_TRUE(Restore(Save(sample), read)) << value;
        EXPECT_EQ(read.fDouble, value);
        EXPECT_EQ(std::signbit(read.fDouble), std::signbit(value));
    }
}

TEST(XMLReader, SingleObjectNeedsNoRoot) {
    std::istringstream stream("<Obj name=\"FSMapICnt\"><Int value=\"0\"/></Obj>");
    XMLReader reader(stream);
    std::int32_t count = -1;
    EXPECT_TRUE(reader.ParseStartObj("FSMapICnt") && reader.ParseValue(count) &&
                reader.ParseEndObj());
    EXPECT_EQ(count, 0);
}

TEST(XMLReader, EveryTruncationFails) {
    const std::string whole = Save(kSample);
    const std::size_t lastNeeded = whole.rfind('>') + 1;
    for (std::size_t length = 0; length < lastNeeded; ++length) {
        EXPECT_FALSE(Restores(whole.substr(0, length))) << length;
    }
    EXPECT_TRUE(Restores(whole.substr(0, lastNeeded)));
}

// Whatever happens to the bytes, reading ends in a result; the sanitizers watch the rest.
TEST(XMLReader, FlippedBitsNeverCrash) {
    const std::string whole = Save(kSample);
    int refused = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string changed = whole;
            changed[at] = static_cast<char>(changed[at] ^ (1 << bit));
            if (!Restores(changed)) ++refused;
        }
    }
    EXPECT_GT(refused, static_cast<int>(whole.size()));
}

TEST(XMLReader, AFailureEndsTheReading) {
    std::istringstream stream("<Obj name=\"A\"><Int value=\"5\"/></Obj>");
    XMLReader reader(stream);
    ASSERT_TRUE(reader.ParseStartObj("A"));
    double wrongType = 1.5;
    EXPECT_FALSE(reader.ParseValue(wrongType));
    EXPECT_EQ(wrongType, 1.5);
    std::int32_t right = 3;
    EXPECT_FALSE(reader.ParseValue(right));
    EXPECT_EQ(right, 3);
    EXPECT_FALSE(reader.ParseEndObj());
    EXPECT_FALSE(reader.IsGood());
}

TEST(XMLReader, UnreadValuesFailTheEndOfTheObject) {
    std::istringstream stream("<Obj name=\"A\"><Int value=\"5\"/></Obj>");
    XMLReader reader(stream);
    ASSERT_TRUE(reader.ParseStartObj("A"));
    EXPECT_FALSE(reader.ParseEndObj());
}

struct Change {
    const char* fName;
    std::string fFrom;
    std::string fTo;
};

class ChangedDocument : public testing::TestWithParam<Change> {};

TEST_P(ChangedDocument, IsRefused) {
    EXPECT_FALSE(Restores(Replaced(Save(kSample), GetParam().fFrom, GetParam().fTo)));
}

INSTANTIATE_TEST_SUITE_P(
    Changes, ChangedDocument,
    testing::Values(
        Change{"InternalSubset", "\"savexml.dtd\">", "\"savexml.dtd\" [<!ENTITY a \"b\">]>"},
        Change{"EmptyInternalSubset", "\"savexml.dtd\">", "\"savexml.dtd\" []>"},
        Change{"OtherDtd", "savexml.dtd", "file:///etc/passwd"},
        Change{"PublicIdentifier", "SYSTEM", "PUBLIC \"x\""},
        Change{"OtherRoot", "<MCXMLRoot copy", "<Root copy"},
        Change{"SecondDocumentType", "<MCXMLRoot", "<!DOCTYPE a><MCXMLRoot"},
        Change{"OtherObjectName", "Outer 1.00", "Outer 2.00"},
        Change{"OtherValueType", "<Int value=\"-7\"", "<Long value=\"-7\""},
        Change{"IntegerTooLarge", "\"-7\"", "\"2147483648\""},
        Change{"LongTooLarge", "-9223372036854775808", "-9223372036854775809"},
        Change{"NumberWithRest", "\"-7\"", "\"-7x\""},
        Change{"NumberWithBlank", "\"-7\"", "\" -7\""}, Change{"EmptyNumber", "\"-7\"", "\"\""},
        Change{"DoubleOutOfRange", "\"0.1\"", "\"1e999\""},
        Change{"MissingInteger", "\"-7\"", "\"Missing\""},
        Change{"ExtraAttribute", "<Int value", "<Int a=\"\" value"},
        Change{"ContentInAValue", "<Int value=\"-7\"/>", "<Int value=\"-7\">x</Int>"},
        Change{"TextInAnObject", "<Int value=\"-7\"/>", "x<Int value=\"-7\"/>"},
        Change{"ExtraValue", "<Int value=\"-7\"/>", "<Int value=\"-7\"/><Int value=\"-7\"/>"},
        Change{"MissingValueElement", "<Int value=\"-7\"/>", ""},
        Change{"SecondRoot", "</MCXMLRoot>", "</MCXMLRoot><MCXMLRoot/>"},
        Change{"TextAfterTheRoot", "</MCXMLRoot>", "</MCXMLRoot>x"},
        Change{"NulByte", "Gr", std::string("G\0r", 3)}, Change{"InvalidUtf8", "Gr", "\xFF"},
        Change{"ControlCharacter", "Gr", "\x02"}),
    [](const auto& test) { return std::string(test.param.fName); });

TEST(XMLReader, TextLongerThanAllowedIsRefused) {
    const std::string whole = Save(kSample);
    Saved read;
    EXPECT_TRUE(Restore(whole, read, whole.size()));
    EXPECT_FALSE(Restore(whole, read, whole.size() - 1));
}

std::string Nested(std::int32_t depth) {
    std::string text;
    for (std::int32_t i = 0; i < depth; ++i) text += "<Obj name=\"A\">";
    for (std::int32_t i = 0; i < depth; ++i) text += "</Obj>";
    return text;
}

TEST(XMLReader, NestingIsBounded) {
    std::istringstream deepest(Nested(kMaxXMLDepth));
    EXPECT_TRUE(XMLReader(deepest).IsGood());
    std::istringstream deeper(Nested(kMaxXMLDepth + 1));
    EXPECT_FALSE(XMLReader(deeper).IsGood());
    std::istringstream hostile(Nested(500000));
    EXPECT_FALSE(XMLReader(hostile).IsGood());
}

TEST(XMLReader, BrokenStreamIsAFailure) {
    std::istringstream bad(Save(kSample));
    bad.setstate(std::ios::badbit);
    EXPECT_FALSE(XMLReader(bad).IsGood());
    std::istringstream throwing("");
    throwing.exceptions(std::ios::failbit | std::ios::eofbit);
    EXPECT_FALSE(XMLReader(throwing).IsGood());
}

TEST(XMLReader, EmptyDocumentIsAFailure) {
    for (const char* text : {"", " \n", "<!-- only a comment -->", "<?xml version=\"1.0\"?>"}) {
        std::istringstream stream(text);
        EXPECT_FALSE(XMLReader(stream).IsGood()) << text;
    }
}

}  // namespace
}  // namespace MCCommonXML

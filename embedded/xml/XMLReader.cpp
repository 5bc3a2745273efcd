#include <array>
#include <charconv>
#include <exception>
#include <istream>
#include <pugixml.hpp>

#include "embedded/xml/XmlText.h"
#include "host/Records.h"
#include "host/Xml.h"

namespace MCCommonXML {
namespace {

/// False when the stream broke, is longer than allowed or holds what XML cannot.
bool ReadText(std::istream& stream, std::size_t maxBytes, std::string& textOut) {
    std::array<char, 65536> block;
    do {
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        const auto received = static_cast<std::size_t>(stream.gcount());
        if (received > maxBytes - textOut.size()) return false;
        textOut.append(block.data(), received);
    } while (stream);
    if (stream.bad()) return false;
    for (std::size_t at = 0; at < textOut.size();) {
        const std::size_t length = embedded::XmlCharacterLength(textOut, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

struct DepthCheck final : pugi::xml_tree_walker {
    // The root has depth 0.
    bool for_each(pugi::xml_node&) override { return depth() < kMaxXMLDepth; }
};

/// True for a prolog in its order and one element, which the document always ends with.
bool HasOneElement(const pugi::xml_document& document) {
    pugi::xml_node node = document.first_child();
    if (node.type() == pugi::node_declaration) node = node.next_sibling();
    if (node.type() == pugi::node_doctype) node = node.next_sibling();
    return node.type() == pugi::node_element && !node.next_sibling();
}

template <class Number>
bool ReadNumber(std::string_view text, Number& out) {
    Number value{};
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end) return false;
    out = value;
    return true;
}

}  // namespace

// The parser works in place: its nodes point into fText. It knows no entities but XML's own five
// and opens no files.
struct XMLReader::Document {
    std::string fText;
    pugi::xml_document fTree;
    pugi::xml_node fInside;  // what was entered last
    pugi::xml_node fNext;    // its first child that has not been read
    bool fbGood = false;

    void Enter(pugi::xml_node node) {
        fInside = node;
        fNext = node.first_child();
    }

    bool Leave() {
        if (!fbGood || fNext || fInside.type() != pugi::node_element) return fbGood = false;
        fNext = fInside.next_sibling();
        fInside = fInside.parent();
        return true;
    }

    /// Takes the next child when it is <type value="..."/>.
    bool TakeValue(const char* type, std::string_view& textOut) {
        const pugi::xml_attribute value = fNext.first_attribute();
        const bool fits = fbGood && std::string_view(fNext.name()) == type &&
                          !fNext.first_child() && std::string_view(value.name()) == "value" &&
                          !value.next_attribute();
        if (!fits) return fbGood = false;
        textOut = value.value();
        fNext = fNext.next_sibling();
        return true;
    }

    template <class Number>
    bool TakeNumber(const char* type, Number& out) {
        std::string_view text;
        return TakeValue(type, text) && (fbGood = ReadNumber(text, out));
    }
};

XMLReader::XMLReader(std::istream& stream, std::size_t maxBytes)
    : fpDocument(std::make_unique<Document>()) {
    Document& document = *fpDocument;
    try {
        if (!ReadText(stream, maxBytes, document.fText)) return;
        // Fragments are allowed here so that text beside the root is seen, and refused.
        constexpr unsigned kKeep = pugi::parse_escapes | pugi::parse_declaration |
                                   pugi::parse_doctype | pugi::parse_fragment;
        if (!document.fTree.load_buffer_inplace(document.fText.data(), document.fText.size(), kKeep,
                                                pugi::encoding_utf8)) {
            return;
        }
        DepthCheck depthCheck;
        if (!document.fTree.traverse(depthCheck) || !HasOneElement(document.fTree)) return;
    } catch (const std::exception&) {  // memory, or a stream that throws
        return;
    }
    document.Enter(document.fTree);
    if (document.fNext.type() == pugi::node_declaration) {
        document.fNext = document.fNext.next_sibling();
    }
    document.fbGood = true;
}

XMLReader::~XMLReader() = default;

bool XMLReader::IsGood() const { return fpDocument->fbGood; }

bool XMLReader::ParseStartRoot(const XMLDocType& docType) {
    Document& document = *fpDocument;
    if (!document.fbGood) return false;
    if (document.fNext.type() == pugi::node_doctype) {
        // The whole line is compared, which leaves no room for an internal subset.
        const std::string expected = docType.RootName() + " SYSTEM \"" + docType.DtdName() + '"';
        if (document.fNext.value() != expected) return document.fbGood = false;
        document.fNext = document.fNext.next_sibling();
    }
    if (document.fNext.name() != docType.RootName()) return document.fbGood = false;
    document.Enter(document.fNext);
    return true;
}

bool XMLReader::ParseEndRoot() { return fpDocument->Leave(); }

bool XMLReader::ParseStartObj(std::string_view name) {
    Document& document = *fpDocument;
    const pugi::xml_attribute attribute = document.fNext.first_attribute();
    const bool fits = document.fbGood && std::string_view(document.fNext.name()) == "Obj" &&
                      std::string_view(attribute.name()) == "name" && attribute.value() == name &&
                      !attribute.next_attribute();
    if (!fits) return document.fbGood = false;
    document.Enter(document.fNext);
    return true;
}

bool XMLReader::ParseValue(std::int32_t& valueOut) {
    return fpDocument->TakeNumber("Int", valueOut);
}

bool XMLReader::ParseValue(std::int64_t& valueOut) {
    return fpDocument->TakeNumber("Long", valueOut);
}

bool XMLReader::ParseValue(double& valueOut) {
    std::string_view text;
    if (!fpDocument->TakeValue("Double", text)) return false;
    if (text == kMissingText) {
        valueOut = MCMV::gMissingValue;
        return true;
    }
    return fpDocument->fbGood = ReadNumber(text, valueOut);
}

bool XMLReader::ParseValue(std::string& valueOut) {
    std::string_view text;
    if (!fpDocument->TakeValue("String", text)) return false;
    valueOut = text;
    return true;
}

bool XMLReader::ParseEndObj() { return fpDocument->Leave(); }

}  // namespace MCCommonXML

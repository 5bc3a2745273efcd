#include <ostream>

#include "embedded/xml/XmlText.h"
#include "host/Records.h"
#include "host/Xml.h"

namespace MCCommonXML {
namespace {

using embedded::EscapeXml;

void WriteElement(std::ostream& stream, const XMLElement& element, std::size_t indent,
                  std::size_t depth) {
    stream << '<' << element.Name();
    for (const auto& [name, value] : element.Attributes()) {
        stream << ' ' << name << "=\"" << EscapeXml(value) << '"';
    }
    if (element.Children().empty()) {
        stream << "/>";
        return;
    }
    stream << '>';
    bool hasText = false;
    for (const XMLElement::Child& child : element.Children()) {
        hasText = hasText || std::holds_alternative<std::string>(child);
    }
    // A line break beside a text would become part of the content.
    const auto breakLine = [&](std::size_t level) {
        if (indent > 0 && !hasText) stream << '\n' << std::string(indent * level, ' ');
    };
    for (const XMLElement::Child& child : element.Children()) {
        breakLine(depth + 1);
        if (const auto* text = std::get_if<std::string>(&child)) {
            stream << EscapeXml(*text);
        } else {
            const auto& nested = *std::get<std::unique_ptr<XMLElement>>(child);
            WriteElement(stream, nested, hasText ? 0 : indent, depth + 1);
        }
    }
    breakLine(depth);
    stream << "</" << element.Name() << '>';
}

void WriteProlog(std::ostream& stream, const XMLDocType* docType) {
    stream << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    if (docType == nullptr) return;
    stream << "<!DOCTYPE " << docType->RootName() << " SYSTEM \"" << docType->DtdName() << "\">\n";
}

}  // namespace

void XMLElement::AddAttribute(std::string_view name, std::string_view value) {
    for (auto& [present, content] : fvAttributes) {
        if (present == name) {
            content = value;
            return;
        }
    }
    fvAttributes.emplace_back(name, value);
}

void XMLElement::AddAttribute(std::string_view name, double value) {
    if (value == MCMV::gMissingValue) {
        AddAttribute(name, kMissingText);
    } else {
        AddAttribute(name, embedded::PlainNumberText(value));
    }
}

XMLElement& XMLElement::AddChild(std::string_view name) {
    return AddChild(std::make_unique<XMLElement>(name));
}

XMLElement& XMLElement::AddChild(std::unique_ptr<XMLElement> child) {
    XMLElement& added = *child;
    fvChildren.emplace_back(std::move(child));
    return added;
}

void XMLElement::AddText(std::string_view text) { fvChildren.emplace_back(std::string(text)); }

std::unique_ptr<XMLDocType> XMLDocType::Create(std::string_view rootName,
                                               std::string_view dtdName) {
    return std::unique_ptr<XMLDocType>(new XMLDocType(rootName, dtdName));
}

void WriteTree(std::ostream& stream, const XMLDocType* docType, const XMLElement& root,
               std::int32_t indent) {
    WriteProlog(stream, docType);
    WriteElement(stream, root, static_cast<std::size_t>(indent < 0 ? 0 : indent), 0);
    stream << '\n';
}

void WriteTreeUTF8(std::ostream& stream, const XMLDocType* docType, const XMLElement& root,
                   std::int32_t indent) {
    WriteTree(stream, docType, root, indent);
}

void StartRoot(std::ostream& stream, const XMLDocType& docType, std::string_view copyright) {
    WriteProlog(stream, &docType);
    stream << '<' << docType.RootName() << " copyright=\"" << EscapeXml(copyright) << "\">\n";
}

void EndRoot(std::ostream& stream, const XMLDocType& docType) {
    stream << "</" << docType.RootName() << ">\n";
}

}  // namespace MCCommonXML

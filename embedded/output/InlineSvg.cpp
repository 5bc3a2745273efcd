#include "embedded/output/InlineSvg.h"

#include <algorithm>
#include <pugixml.hpp>
#include <sstream>
#include <string_view>

#include "embedded/output/ShowableText.h"

namespace embedded {

namespace {

template <class Visit>
void ForEachElement(pugi::xml_node node, const Visit& visit) {
    visit(node);
    for (pugi::xml_node child : node.children())
        if (child.type() == pugi::node_element) ForEachElement(child, visit);
}

/// A list of ids by blanks, each with the prefix.
std::string PrefixedList(const std::string& ids, const std::string& prefix) {
    std::istringstream in(ids);
    std::string out;
    for (std::string id; in >> id;) out += (out.empty() ? "" : " ") + prefix + id;
    return out;
}

/// A value with the prefix behind each occurrence of a lead such as "url(#".
std::string PrefixedBehind(std::string value, std::string_view lead, const std::string& prefix) {
    for (std::size_t at = value.find(lead); at != std::string::npos;
         at = value.find(lead, at + lead.size() + prefix.size()))
        value.insert(at + lead.size(), prefix);
    return value;
}

void PrefixIds(pugi::xml_node element, const std::string& prefix) {
    for (pugi::xml_attribute attribute : element.attributes()) {
        const std::string_view name = attribute.name();
        const std::string value = attribute.value();
        if (name == "id")
            attribute.set_value((prefix + value).c_str());
        else if (name == "aria-labelledby" || name == "aria-describedby")
            attribute.set_value(PrefixedList(value, prefix).c_str());
        else if ((name == "href" || name == "xlink:href") && value.starts_with('#'))
            attribute.set_value(PrefixedBehind(value, "#", prefix).c_str());
        else
            attribute.set_value(PrefixedBehind(value, "url(#", prefix).c_str());
    }
}

}  // namespace

InlineSvg::InlineSvg(const std::string& svg, const std::string& prefix,
                     std::set<std::string>& usedIds) {
    pugi::xml_document document;
    const std::string text = ShowableText(svg);
    if (!document.load_buffer(text.data(), text.size(),
                              pugi::parse_default | pugi::parse_ws_pcdata_single,
                              pugi::encoding_utf8))
        return;
    pugi::xml_node root = document.document_element();
    if (std::string_view(root.name()) != "svg") return;

    std::vector<std::string> ids;
    ForEachElement(root, [&](pugi::xml_node element) {
        if (const auto id = element.attribute("id")) ids.emplace_back(id.value());
        if (std::string_view(element.name()) == "style")
            fvStyles.emplace_back(element.child_value());
    });
    const bool taken = std::any_of(ids.begin(), ids.end(),
                                   [&](const std::string& id) { return usedIds.contains(id); });
    if (taken) ForEachElement(root, [&](pugi::xml_node element) { PrefixIds(element, prefix); });
    for (const std::string& id : ids) usedIds.insert(taken ? prefix + id : id);

    std::ostringstream out;
    root.print(out, "", pugi::format_raw, pugi::encoding_utf8);
    fMarkup = out.str();
}

}  // namespace embedded

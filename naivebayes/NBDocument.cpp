#include "naivebayes/NBDocument.h"

#include <ctime>
#include <string>
#include <string_view>

#include "naivebayes/NBVersion.h"

namespace {

std::string_view TextOr(const NBWriteOptions* options, std::string NBWriteOptions::*text,
                        std::string_view otherwise) {
    return options == nullptr || (options->*text).empty() ? otherwise : options->*text;
}

/// The local time in the C library's fixed form, without its line end.
std::string CurrentTime() {
    const std::time_t now = std::time(nullptr);
    std::string text = std::ctime(&now);
    text.pop_back();
    return text;
}

}  // namespace

namespace NBDocument {

void AddHeader(MCCommonXML::XMLElement& root, const NBWriteOptions* options) {
    MCCommonXML::XMLElement& header = root.AddChild("Header");
    header.AddAttribute("copyright",
                        TextOr(options, &NBWriteOptions::fCopyright, NBVersion::kCopyright));
    MCCommonXML::XMLElement& application = header.AddChild("Application");
    application.AddAttribute("name",
                             TextOr(options, &NBWriteOptions::fAppName, NBVersion::kAppName));
    application.AddAttribute("version",
                             TextOr(options, &NBWriteOptions::fAppVersion, NBVersion::kAppVersion));
    header.AddChild("Timestamp").AddText(CurrentTime());
}

void Write(std::ostream& stream, const MCCommonXML::XMLDocType* docType,
           const MCCommonXML::XMLElement& root, const NBWriteOptions* options) {
    constexpr std::int32_t kIndent = 1;
    if (options != nullptr && options->fUTF8) {
        MCCommonXML::WriteTreeUTF8(stream, docType, root, kIndent);
    } else {
        MCCommonXML::WriteTree(stream, docType, root, kIndent);
    }
}

}  // namespace NBDocument

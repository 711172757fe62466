// Finds the one base address in a download-links document.
#include "sdk/camera/DownloadLinks.h"

#include <cstddef>
#include <memory>

#include "sdk/SimpleXML.h"
#include "sdk/xml/TagSearch.h"

namespace dax {

namespace {

/// The content of the first element `name` in `text`, as SimpleXML::setNode() finds it.
std::optional<std::string_view> contentOf(std::string_view text, std::string_view name) {
    const std::size_t opening = findTag(text, name, TagKind::kOpening, 0, text.size());
    if (opening == kNoTag) return std::nullopt;
    const std::size_t content = opening + tagLength(name, TagKind::kOpening);
    const std::size_t closing = findTag(text, name, TagKind::kClosing, content, text.size());
    if (closing == kNoTag) return std::nullopt;
    return text.substr(content, closing - content);
}

}  // namespace

DownloadLinks downloadLinksIn(std::string_view text) {
    DownloadLinks links;
    for (const char* const name : {"Imager", "CaliData", "Links"}) {
        const std::optional<std::string_view> content = contentOf(text, name);
        if (!content) return links;
        text = *content;
    }
    links.hasLinks = true;
    // Deliberate: of several `string` elements only the first is ever used.
    links.base = contentOf(text, "string");
    return links;
}

std::optional<DownloadLinks> readDownloadLinks(const char* file) {
    SimpleXML document;
    if (!document.open(file, kLinksRoot)) return std::nullopt;
    document.setNode();
    char* text = nullptr;
    document.getNode(&text);
    const std::unique_ptr<char[]> owned(text);
    return downloadLinksIn(text == nullptr ? "" : text);
}

std::array<std::string, 4> serverPath(std::string_view serial, std::string_view name) {
    return {std::string(serial.substr(0, 2)), std::string(serial.substr(0, 4)),
            std::string("Califiles SN").append(serial), std::string(name)};
}

}  // namespace dax

// Finds the one base address in a download-links document.
#include "sdk/camera/DownloadLinks.h"

#include <memory>

#include "sdk/SimpleXML.h"

namespace dax {

std::optional<DownloadLinks> readDownloadLinks(const char* file) {
    SimpleXML document;
    if (!document.open(file, "DownloadLinks")) return std::nullopt;

    DownloadLinks links;
    document.setNode();
    // Each descent is made, whatever the one before it found.
    const bool hasImager = document.setNode("Imager");
    const bool hasCaliData = document.setNode("CaliData");
    const bool hasLinks = document.setNode("Links");
    links.hasLinks = hasImager && hasCaliData && hasLinks;
    // Deliberate: of several `string` elements only the first is ever used.
    if (links.hasLinks && document.setNode("string")) {
        char* text = nullptr;
        document.getNode(&text);
        const std::unique_ptr<char[]> owned(text);
        links.base = text == nullptr ? "" : text;
    }
    return links;
}

}  // namespace dax

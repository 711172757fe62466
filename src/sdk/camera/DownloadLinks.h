// Where the vendor's file server keeps calibration files: the document that names the base address,
// and the layout below it. Knows nothing of how a document got here.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace dax {

constexpr const char* kLinksPath = "/downloadlinks.xml";  // on the server, over plain HTTP
constexpr const char* kLinksRoot = "DownloadLinks";       // the document's root element

struct DownloadLinks {
    /// Whether there is an `Imager`, in it a `CaliData` and in that a `Links` element.
    bool hasLinks = false;
    /// The text of the first `string` element there, white space included; nothing without one.
    std::optional<std::string> base;
};

/// What the document says whose lines between those of its root element, joined and without
/// comments, are `text`. Looks at nothing else, so it is safe from any thread.
DownloadLinks downloadLinksIn(std::string_view text);

/// The same for a file. Nothing, and a line in the log, when `file` cannot be read or its comments
/// do not pair up.
/// Process: LC_NUMERIC is "C" afterwards.
std::optional<DownloadLinks> readDownloadLinks(const char* file);

/// The parts of a file's path below the base address, each to be preceded by "/": the first two
/// characters of the serial number, the first four, "Califiles SN" and all of it, and `name`.
std::array<std::string, 4> serverPath(std::string_view serial, std::string_view name);

}  // namespace dax

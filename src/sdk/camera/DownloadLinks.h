// The document that names where the vendor's file server keeps calibration files. Knows nothing of
// how it got here.
#pragma once

#include <optional>
#include <string>

namespace dax {

struct DownloadLinks {
    /// Whether there is an `Imager`, in it a `CaliData` and in that a `Links` element.
    bool hasLinks = false;
    /// The text of the first `string` element there, white space included; nothing without one.
    std::optional<std::string> base;
};

/// Nothing, and a line in the log, when `file` cannot be read or its comments do not pair up.
/// Process: LC_NUMERIC is "C" afterwards.
std::optional<DownloadLinks> readDownloadLinks(const char* file);

}  // namespace dax

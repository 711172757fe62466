// Text between two tags of an XML document: as it stands there, and as its reader has it. A
// calibration description's texts stand there as they are, references and all.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace thermika::cli {

/// What a reader has of `written`: its references resolved. Nothing where it cannot stand between
/// two tags: it has "<", "]]>", an "&" without a reference, or a reference to no character of XML.
/// Whether its bytes are characters is not looked at.
std::optional<std::string> readText(std::string_view written);

/// What to write for a reader to have `text`.
std::string writtenText(std::string_view text);

}  // namespace thermika::cli

// Addresses of files on a server, made and judged by libcurl's own parser: what is checked here is
// what is asked for later.
#pragma once

#include <string>
#include <string_view>

namespace thermika::fetch {

/// `text` as an address that can be asked for; "" when it is none, and `problem` says why. White
/// space around it is cut; blanks and bytes above 127 in its path are encoded.
std::string checkedAddress(std::string_view text, std::string& problem);

/// The address of a camera's file below `base`, which checkedAddress() gave: every piece of the
/// vendor's layout percent-encoded.
std::string fileAddress(const std::string& base, std::string_view serial, std::string_view name);

}  // namespace thermika::fetch

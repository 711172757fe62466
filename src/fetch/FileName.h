// Which file names are safe to use: in the destination directory, and as a piece of an address.
#pragma once

#include <string>
#include <string_view>

namespace thermika::fetch {

/// What the names of part files begin and end with.
constexpr std::string_view kPartPrefix = ".thermika-fetch-";
constexpr std::string_view kPartSuffix = ".part";

bool isPartName(std::string_view name);

/// Why `name` is not one plain path component, or is a part file's; "" when it may be used.
std::string nameRefusal(std::string_view name);

}  // namespace thermika::fetch

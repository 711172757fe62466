// The one place that writes to a descriptor.
#pragma once

#include <string_view>

namespace thermika::cli {

/// Writes all of `bytes`, after interruptions too. False, with `errno` set, when it cannot.
bool writeAll(int descriptor, std::string_view bytes);

}  // namespace thermika::cli

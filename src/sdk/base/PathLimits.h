// The one limit of paths in the given interface.
#pragma once

#include <cstddef>

namespace dax {

constexpr std::size_t kPathBytes = 260;  // of directories, names and paths; the terminator included

}  // namespace dax

// Which directory stands for the one that a caller names.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace dax {

/// `dir` itself; "Imager", or its first `nameChars` characters, below the working directory when it
/// is empty. Nothing when there is no working directory or its path needs more than `bytes` bytes
/// with its terminator.
std::optional<std::string> caliDirectory(const char* dir, std::size_t bytes,
                                         std::size_t nameChars = std::string::npos);

}  // namespace dax

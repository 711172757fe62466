// Which directory stands for the one that a caller names, and with which mode it is created.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>

namespace dax {

constexpr mode_t kDirectoryMode = 0777;  // less the umask

/// `dir` itself; "Imager", or its first `nameChars` characters, below the working directory when it
/// is empty. Nothing when there is no working directory or its path needs more than `bytes` bytes
/// with its terminator.
std::optional<std::string> caliDirectory(const char* dir, std::size_t bytes,
                                         std::size_t nameChars = std::string::npos);

}  // namespace dax

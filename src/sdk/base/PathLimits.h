// What is fixed about paths: their length, and the mode of the directories that are created.
#pragma once

#include <sys/types.h>

#include <cstddef>

namespace dax {

constexpr std::size_t kPathBytes = 260;  // of directories, names and paths; the terminator included
constexpr mode_t kDirectoryMode = 0777;  // less the umask

}  // namespace dax

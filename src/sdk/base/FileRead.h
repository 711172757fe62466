// Reads files that others may have put there. Opening never waits for a pipe or a device; it waits
// for a regular file that another process has a lease on, until the kernel has taken the lease away
// (and for a pipe that replaces that file at that very moment). Interrupted calls are repeated, at
// most 1000 times; descriptors are close-on-exec. What the bytes mean is the callers' business.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace dax {

struct FileBytes {
    std::unique_ptr<char[]> bytes;  ///< at least one more than `size`, whose value is undefined
    std::size_t size = 0;
};

/// The bytes of a regular file. Nothing when `path` is no regular file, cannot be opened, is longer
/// than `maxBytes` (found out before any memory is taken) or cannot be read to its end: an error in
/// mid-file counts as a file that cannot be opened. A file that shrinks meanwhile gives what is
/// left of it, one that grows as much as it had.
std::optional<FileBytes> readRegularFile(const char* path, std::size_t maxBytes);

/// The longest line that is read; device attributes have a page at most.
constexpr std::size_t kMaxLineBytes = 65536;

/// True when `path` could be read; `line` holds the text before the first line feed, or all of it,
/// and at most the first kMaxLineBytes: zero and control bytes included. A relative path is looked
/// up in the open directory `directory`, or in the working directory when that is AT_FDCWD. False,
/// `line` empty and the reason in `errno`, when the file cannot be opened or read.
bool readFirstLine(int directory, const char* path, std::string& line);

/// Whether `path` can be opened for reading, which is true of a directory too.
bool isReadable(const char* path);

}  // namespace dax

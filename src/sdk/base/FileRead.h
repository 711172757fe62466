// Reading files that others may have put there: opening never blocks on a pipe nobody writes to,
// and interrupted or short reads are carried on. Leaves the meaning of the bytes to its callers.
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
/// mid-file counts as a file that cannot be opened. A file that shrinks meanwhile gives what is left
/// of it, one that grows as much as it had.
std::optional<FileBytes> readRegularFile(const char* path, std::size_t maxBytes);

/// True when `path` could be read; `line` holds the text before the first line feed, or all of it:
/// zero and control bytes included. A relative path is looked up in the open directory `directory`,
/// or in the working directory when that is AT_FDCWD. False, `line` empty and the reason in
/// `errno`, when the file cannot be opened or read. However long the line is: an endless file
/// without line feeds takes all memory.
bool readFirstLine(int directory, const char* path, std::string& line);

/// Whether `path` can be opened for reading, which is true of a directory too.
bool isReadable(const char* path);

}  // namespace dax

// The command-line tool's entry point and three small functions that belong to its exported
// interface. The tool itself calls none of the three, so the linker is told to keep them: a static
// executable carries them in its symbol table, a dynamic one exports them.
//
// Process: main() ignores SIGPIPE and SIGXFSZ, so that a failed write is a status and a message;
// gives standard output no buffer; creates the logger and, when the options are in order, the
// manager. Searching for a camera changes the working directory, the document sets LC_NUMERIC.
#pragma once

/// Writes the tool's usage to standard output, with `program` wherever its name stands.
[[gnu::used, gnu::retain]] void printUsage(char* program);

namespace dax {

/// Stores the working directory in `buffer`, which must not be null and have 2 * `length` + 1 bytes
/// (all that the path needs when `length` is negative), and returns `buffer`; null, with `errno`
/// set, when there is none or it does not fit.
[[gnu::used, gnu::retain]] char* getFolderPath(char* buffer, short length);

/// Creates one directory level, mode 0777 less the umask: 0, or -1 with `errno` set.
[[gnu::used, gnu::retain]] int mkDir(const char* path);

}  // namespace dax

// Writes a result to a file: whole, or not at all.
#pragma once

#include <string>
#include <string_view>

namespace thermika::cli {

/// Puts `bytes` under `path`, mode 0666 less the umask, on the disk when it returns; its name too
/// where the file system can. What was there is replaced only with `mayReplace`; a link is replaced
/// itself, not what it leads to. Nothing but regular files and links to such is replaced. A Problem
/// otherwise, and nothing has changed. Process: SIGINT, SIGTERM and SIGHUP wait until it returns.
void writeNewFile(const std::string& path, std::string_view bytes, bool mayReplace);

}  // namespace thermika::cli

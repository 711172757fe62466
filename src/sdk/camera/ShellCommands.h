// The texts of the external commands that the manager runs through the shell, and running them.
// Nothing here quotes or checks what it is given beyond what each function says: whoever controls
// those texts controls the shell.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace dax {

/// Fetches the server's download-links document into `file`, which is passed on as it stands.
std::string fetchLinksCommand(std::string_view file);

/// The address of a camera's file below `base`, between double quotes: <base>/<first two characters
/// of the serial>/<first four>/Califiles SN<serial>/<name>. All three are passed on as they stand,
/// so a "$", "`", "\" or '"' in them means to the shell what it means between double quotes.
std::string quotedFileAddress(std::string_view base, std::string_view serial,
                              std::string_view name);

/// Fetches `quotedAddress` to <targetDir>/<name>, both without quotes and as they stand.
std::string fetchFileCommand(std::string_view quotedAddress, std::string_view targetDir,
                             std::string_view name);

/// Copies every file of the camera found below `sourceDir` into `targetDir`. Both directories are
/// passed on without quotes and as they stand; one with blanks becomes several arguments. The name
/// patterns are unquoted too, so the shell may expand them in the working directory.
std::string copyFilesCommand(std::string_view sourceDir, std::string_view serial,
                             std::string_view targetDir);

/// Prints the number of the host's default IPv4 routes.
std::string countDefaultRoutesCommand();

/// Runs `command` to its end; what it answered is not looked at. False when the C library says that
/// it could not be started or waited for; glibc before 2.41 does not say so of a shell that was not
/// forked.
/// Process: here and below, standard output is flushed before, as the command shares it, and each
/// of the descriptors 0 to 2 that is closed is /dev/null meanwhile, so that the command cannot take
/// a file of its own for one of them.
bool runCommand(const std::string& command);

/// Runs `command` to its end with its standard output in a pipe. The first line that it prints that
/// is not blank, with what stands before it, `bytes` bytes at most; nothing when it could not be
/// started. What it prints later is lost.
std::optional<std::string> readCommand(const std::string& command, std::size_t bytes);

}  // namespace dax

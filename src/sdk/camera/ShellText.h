// Which texts of others may become part of a command: all, as the library behaves by default, or
// only plain ones, in a library that is built with THERMIKA_REFUSE_SHELL_TEXT. Nothing plain means
// anything to a shell.
#pragma once

#include <string_view>

namespace dax {

/// The base address in the server's document. Plain: "http://" or "https://", a host of letters,
/// digits, "." and "-", perhaps ":" and a port, perhaps "/" and more letters, digits and "._~%/-".
bool mayReachShellAsBase(std::string_view base);

/// A file's name from a description. Plain: "Cali-" or "Kennlinie-", the serial number, which has
/// digits alone, letters, digits and "._+-", and ".xml", ".dat" or ".prn".
bool mayReachShellAsName(std::string_view name, std::string_view serial);

/// A directory of the download or the copy. Plain: letters, digits and "._/+@%:-", with no "-" at
/// the beginning, which find would take for one of its own words.
bool mayReachShellAsDirectory(std::string_view dir);

}  // namespace dax

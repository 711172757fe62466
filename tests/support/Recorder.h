// Recording stand-ins for the shell and for programs on PATH: what the shell is told and what a
// program is given is kept, then the real one does its work. For use in a sandbox, in a
// DownloadSandbox.
#pragma once

#include <string>
#include <vector>

namespace thermika_test {

/// From here on every text that /bin/sh gets to run is kept.
void recordShell();

/// Those texts, in their order.
std::vector<std::string> shellTexts();

/// From here on `program` is found on PATH as a stand-in that keeps its arguments. `action` is what
/// it does then, in the shell's language; the real program when it is empty.
void recordProgram(const std::string& program, const std::string& action = "");

/// The arguments of every call of `program`, in their order.
std::vector<std::vector<std::string>> callsOf(const std::string& program);

}  // namespace thermika_test

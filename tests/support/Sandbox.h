// A private world for tests: own mounts (so that devices and shared files are the test's), own
// network, and programs run there with everything they write caught. Knows nothing of the product.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace thermika_test {

/// Runs `body` in a process of its own, in private user, mount and network namespaces: /sys and
/// /usr/share are empty and writable, the network has no interface up, everything else is visible
/// as before. The caller is user 0 there, whom file modes bind as they bind anybody.
///
/// Failed assertions in `body` fail the calling test, and so do an exception, a signal, an early
/// exit, a minute (THERMIKA_SANDBOX_SECONDS in the environment: so many seconds) without an end,
/// and a system without such namespaces (THERMIKA_NO_NAMESPACES in the environment: any system).
/// Nothing that `body` does to its process (working directory, locale, singletons, mounts) is left
/// afterwards.
void inSandbox(const std::function<void()>& body);

/// Hides what is below `dir` behind an empty, writable folder. For use in a sandbox.
void mountEmptyFolder(const std::string& dir);

/// Makes the system call of this number answer that error from here on, in this process and in
/// those that it starts.
void failSystemCall(unsigned int number, unsigned int error);

struct RunResult {
    std::string out;  ///< standard output
    std::string err;  ///< standard error
    int status = -1;  ///< exit status as a shell gives it: 128 + the signal's number when killed
};

bool operator==(const RunResult& a, const RunResult& b);
std::ostream& operator<<(std::ostream& out, const RunResult& result);

/// Runs `program` (found as a shell finds it) to its end, a minute at most; `argv` holds its name
/// too, and may be empty. Standard input is empty. `prepare` runs in the new process just before
/// the program, to close or redirect what it shall not have. In a sandbox or outside.
RunResult run(const std::string& program, const std::vector<std::string>& argv,
              const std::function<void()>& prepare = {});

/// Runs `body` in a process of its own as run() does a program; the low byte of what it returns is
/// the status. Nothing is done at the process's end but to flush standard output.
RunResult runInProcess(const std::function<int()>& body);

}  // namespace thermika_test

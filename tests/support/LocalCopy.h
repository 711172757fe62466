// What the tests of the copy from a folder share: where they copy from, a copy in a process of its
// own, and what is expected of it. For use in a sandbox.
#pragma once

#include <functional>
#include <string>

#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/Sandbox.h"

namespace thermika_test {

inline const std::string kCopySource = "/usr/share/medium";
constexpr int kCopiedAll = 1;  // exit statuses of copyFrom()'s process: what the copy answered
constexpr int kCopiedLess = 0;

/// In a sandbox: the caller's programs go through quietly, unless a test looks at the log.
void inQuietWorld(const std::function<void()>& body);

/// Puts the files into a folder, which is created with those above it.
void lay(const std::string& dir, const Files& files);

/// The command that the copy prints and runs.
std::string copyCommand(const std::string& source, const std::string& dir = kCaliDir,
                        const std::string& serial = kCameraText);

/// Runs `operation` in a process of its own, with both outputs caught; its answer is the status.
RunResult copyInProcess(const std::function<bool()>& operation);

/// Copies in a process of its own, with both outputs caught; `prepare` runs there first.
RunResult copyFrom(const std::string& source, const std::function<void()>& prepare = {},
                   unsigned long serial = kCamera);

/// The copy prints its command and nothing else, and answers this.
RunResult copied(int status, const std::string& source = kCopySource);

}  // namespace thermika_test

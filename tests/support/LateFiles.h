// A camera's files that another process puts into the calibration directory right after the first
// look at it. For use in a sandbox, in a DownloadSandbox.
#pragma once

#include <functional>

#include "support/CameraSet.h"

namespace thermika_test {

/// What `operation` answers, which looks at the calibration directory twice: at its first look only
/// a description lies there that cannot be loaded, at its second every one of `files`. Standard
/// error goes nowhere meanwhile.
bool answerWhenFilesAppear(const std::function<bool()>& operation,
                           const Files& files = cameraFiles());

}  // namespace thermika_test

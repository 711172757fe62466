// See the header.
#include "support/LateFiles.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "sdk/IRLogger.h"

namespace thermika_test {

namespace {

constexpr int kComplaintRoom = 4096;  // of the pipe: a page is the least

void require(bool isDone, const char* what) {
    if (!isDone) throw std::system_error(errno, std::generic_category(), what);
}

/// More than fits into the pipe, and never ended: it cannot be loaded.
std::string lengthyDescription() {
    std::string text = "<CaliData>\n<!--\n";
    for (int line = 0; line < 1000; ++line) text += std::string(100, 'x') + "\n";
    return text;
}

/// Puts the files there once the complaint has begun, and reads the rest of it only then.
[[noreturn]] void installDuring(int complaint, const Files& files) {
    char bytes[kComplaintRoom];
    if (read(complaint, bytes, 1) == 1) installFiles(files);
    while (read(complaint, bytes, sizeof bytes) > 0) continue;
    _exit(0);
}

}  // namespace

bool answerWhenFilesAppear(const std::function<bool()>& operation, const Files& files) {
    installFiles({{kDescriptionName, lengthyDescription()}});
    // The first look complains at length, and waits in the middle of that until the other process
    // has put the files there.
    int complaint[2];
    require(pipe2(complaint, O_CLOEXEC) == 0, "pipe2");
    require(fcntl(complaint[1], F_SETPIPE_SZ, kComplaintRoom) == kComplaintRoom, "F_SETPIPE_SZ");
    const pid_t installer = fork();
    require(installer >= 0, "fork");
    if (installer == 0) {
        close(complaint[1]);
        installDuring(complaint[0], files);
    }
    close(complaint[0]);
    std::fflush(stderr);
    const int standardError = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    require(standardError >= 0 && dup2(complaint[1], STDERR_FILENO) >= 0, "redirect");
    close(complaint[1]);
    dax::IRLogger::setVerbosity(dax::IRLOG_INFO, dax::IRLOG_OFF, nullptr);
    const bool answer = operation();
    std::fflush(stderr);
    dup2(standardError, STDERR_FILENO);
    close(standardError);
    waitpid(installer, nullptr, 0);
    return answer;
}

}  // namespace thermika_test

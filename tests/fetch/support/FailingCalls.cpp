// The functions' names are the linker's: __real_NAME is the system's, __wrap_NAME what everybody
// calls here. The build defines those that differ from machine to machine.
#include "fetch/support/FailingCalls.h"

#include <curl/curl.h>
#include <dirent.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <mutex>
#include <utility>

namespace {

using thermika_test::SystemCall;

struct Plan {
    std::function<void()> action;
    int error = 0;
};

std::mutex plansMutex;
Plan plans[static_cast<std::size_t>(SystemCall::kCount)];
std::atomic<bool> hidesTypes{false};

Plan& planFor(SystemCall call) { return plans[static_cast<std::size_t>(call)]; }

/// Whether it shall fail this time, with errno.
bool fails(SystemCall call) {
    Plan plan;
    {
        const std::lock_guard<std::mutex> lock(plansMutex);
        plan = std::exchange(planFor(call), {});
    }
    if (plan.action) plan.action();
    if (plan.error != 0) errno = plan.error;
    return plan.error != 0;
}

}  // namespace

extern "C" {
int realConnect(int fd, const sockaddr* address, socklen_t bytes) __asm__("__real_connect");
int wrapConnect(int fd, const sockaddr* address, socklen_t bytes) __asm__("__wrap_connect");
int realFchmod(int fd, mode_t mode) __asm__("__real_fchmod");
int wrapFchmod(int fd, mode_t mode) __asm__("__wrap_fchmod");
int realFlock(int fd, int operation) __asm__("__real_flock");
int wrapFlock(int fd, int operation) __asm__("__wrap_flock");
int realFstat(int fd, struct stat* status) __asm__("__real_" THERMIKA_FSTAT);
int wrapFstat(int fd, struct stat* status) __asm__("__wrap_" THERMIKA_FSTAT);
int realFstatat(int folder, const char* path, struct stat* status,
                int flags) __asm__("__real_" THERMIKA_FSTATAT);
int wrapFstatat(int folder, const char* path, struct stat* status,
                int flags) __asm__("__wrap_" THERMIKA_FSTATAT);
int realFsync(int fd) __asm__("__real_fsync");
int wrapFsync(int fd) __asm__("__wrap_fsync");
ssize_t realGetrandom(void* buffer, std::size_t bytes, unsigned flags) __asm__("__real_getrandom");
ssize_t wrapGetrandom(void* buffer, std::size_t bytes, unsigned flags) __asm__("__wrap_getrandom");
int realOpenat(int folder, const char* path, int flags,
               mode_t mode) __asm__("__real_" THERMIKA_OPENAT);
int wrapOpenat(int folder, const char* path, int flags,
               mode_t mode) __asm__("__wrap_" THERMIKA_OPENAT);
ssize_t realRead(int fd, void* buffer, std::size_t bytes) __asm__("__real_read");
ssize_t wrapRead(int fd, void* buffer, std::size_t bytes) __asm__("__wrap_read");
dirent* realReaddir(DIR* entries) __asm__("__real_" THERMIKA_READDIR);
dirent* wrapReaddir(DIR* entries) __asm__("__wrap_" THERMIKA_READDIR);
int realSocket(int family, int type, int protocol) __asm__("__real_socket");
int wrapSocket(int family, int type, int protocol) __asm__("__wrap_socket");
uid_t realGeteuid() __asm__("__real_geteuid");
uid_t wrapGeteuid() __asm__("__wrap_geteuid");
CURLcode realGlobalInit(long flags) __asm__("__real_curl_global_init");
CURLcode wrapGlobalInit(long flags) __asm__("__wrap_curl_global_init");
}

extern "C" int wrapConnect(int fd, const sockaddr* address, socklen_t bytes) {
    return fails(SystemCall::kConnect) ? -1 : realConnect(fd, address, bytes);
}

extern "C" int wrapFchmod(int fd, mode_t mode) {
    return fails(SystemCall::kFchmod) ? -1 : realFchmod(fd, mode);
}

extern "C" int wrapFlock(int fd, int operation) {
    return fails(SystemCall::kFlock) ? -1 : realFlock(fd, operation);
}

extern "C" int wrapFstat(int fd, struct stat* status) {
    return fails(SystemCall::kFstat) ? -1 : realFstat(fd, status);
}

extern "C" int wrapFstatat(int folder, const char* path, struct stat* status, int flags) {
    return fails(SystemCall::kFstatat) ? -1 : realFstatat(folder, path, status, flags);
}

extern "C" int wrapFsync(int fd) { return fails(SystemCall::kFsync) ? -1 : realFsync(fd); }

extern "C" ssize_t wrapGetrandom(void* buffer, std::size_t bytes, unsigned flags) {
    return fails(SystemCall::kGetrandom) ? -1 : realGetrandom(buffer, bytes, flags);
}

extern "C" int wrapOpenat(int folder, const char* path, int flags, mode_t mode) {
    return fails(SystemCall::kOpenat) ? -1 : realOpenat(folder, path, flags, mode);
}

extern "C" ssize_t wrapRead(int fd, void* buffer, std::size_t bytes) {
    return fails(SystemCall::kRead) ? -1 : realRead(fd, buffer, bytes);
}

extern "C" dirent* wrapReaddir(DIR* entries) {
    dirent* const entry = fails(SystemCall::kReaddir) ? nullptr : realReaddir(entries);
    if (entry != nullptr && hidesTypes) entry->d_type = DT_UNKNOWN;
    return entry;
}

extern "C" int wrapSocket(int family, int type, int protocol) {
    return fails(SystemCall::kSocket) ? -1 : realSocket(family, type, protocol);
}

extern "C" uid_t wrapGeteuid() { return realGeteuid() + (fails(SystemCall::kGeteuid) ? 1 : 0); }

extern "C" CURLcode wrapGlobalInit(long flags) {
    return fails(SystemCall::kGlobalInit) ? CURLE_FAILED_INIT : realGlobalInit(flags);
}

namespace thermika_test {

void failNext(SystemCall call, int error) {
    const std::lock_guard<std::mutex> lock(plansMutex);
    planFor(call).error = error;
}

void beforeNext(SystemCall call, std::function<void()> action) {
    const std::lock_guard<std::mutex> lock(plansMutex);
    planFor(call).action = std::move(action);
}

void forgetPlans() {
    const std::lock_guard<std::mutex> lock(plansMutex);
    for (Plan& plan : plans) plan = {};
}

EntriesWithoutType::EntriesWithoutType() { hidesTypes = true; }
EntriesWithoutType::~EntriesWithoutType() { hidesTypes = false; }

}  // namespace thermika_test

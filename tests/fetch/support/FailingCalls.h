// System calls that fail when a test wants it. The linker puts these functions in place of the
// system's (--wrap), so that only the executable made for this has FailingCalls.cpp among its
// sources.
#pragma once

#include <functional>

namespace thermika_test {

enum class SystemCall {
    kConnect,
    kFchmod,
    kFlock,
    kFstat,
    kFstatat,
    kFsync,
    kGetrandom,
    kOpenat,
    kRead,
    kReaddir,
    kSocket,
    kGeteuid,     ///< answers another user's number instead of failing
    kGlobalInit,  ///< of libcurl: fails with a result of its own
    kCount,
};

/// The process's next such call does nothing and fails with `error`.
void failNext(SystemCall call, int error = 1);

/// `action` is called right before the process's next such call.
void beforeNext(SystemCall call, std::function<void()> action);

/// Both are forgotten where they did not come to it.
void forgetPlans();

/// While it lives, directories do not tell what kind of thing an entry is, as on some file systems.
class EntriesWithoutType {
public:
    EntriesWithoutType();
    ~EntriesWithoutType();
    EntriesWithoutType(const EntriesWithoutType&) = delete;
    EntriesWithoutType& operator=(const EntriesWithoutType&) = delete;
};

}  // namespace thermika_test

// Reading or closing the directory of devices fails and says so in errno: the search for a camera
// must not pass that on. Links another readdir() and closedir() in, so it is a program of its own.
#include <dirent.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "support/Sandbox.h"
#include "support/SerialSearch.h"
#include "support/UsbTree.h"

namespace {

std::size_t g_calls = 0;
bool g_isReadable = true;

}  // namespace

// The linker's names for the functions that everybody calls here and for the C library's.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" int __real_closedir(DIR* directory);
extern "C" int __wrap_closedir(DIR* directory);
extern "C" dirent* __real_readdir(DIR* directory);
extern "C" dirent* __wrap_readdir(DIR* directory);

extern "C" int __wrap_closedir(DIR* directory) {
    ++g_calls;
    __real_closedir(directory);
    errno = EIO;
    return -1;
}

extern "C" dirent* __wrap_readdir(DIR* directory) {
    if (g_isReadable) return __real_readdir(directory);
    errno = EIO;
    return nullptr;
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace {

using thermika_test::expectAbsent;
using thermika_test::expectFound;
using thermika_test::foundLine;
using thermika_test::inSandbox;
using thermika_test::UsbTree;

TEST(FailingDirectory, leavesNoErrnoBehindAFoundCamera) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        g_calls = 0;
        expectFound(0, 14080045, foundLine("14080045"));
        EXPECT_GE(g_calls, 1U);
    });
}

TEST(FailingDirectory, leavesNoErrnoBehindABusWithoutCamera) {
    inSandbox([] {
        const UsbTree bus;
        g_calls = 0;
        expectAbsent(0, "");
        EXPECT_GE(g_calls, 1U);
    });
}

TEST(FailingDirectory, isABusWithoutCameraWhenItsListEndsEarly) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        g_isReadable = false;
        expectAbsent(14080045, "");
    });
}

}  // namespace

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
extern "C" int realClosedir(DIR* directory) __asm__("__real_closedir");
extern "C" int wrapClosedir(DIR* directory) __asm__("__wrap_closedir");
extern "C" dirent* realReaddir(DIR* directory) __asm__("__real_" THERMIKA_READDIR);
extern "C" dirent* wrapReaddir(DIR* directory) __asm__("__wrap_" THERMIKA_READDIR);

extern "C" int wrapClosedir(DIR* directory) {
    ++g_calls;
    realClosedir(directory);
    errno = EIO;
    return -1;
}

extern "C" dirent* wrapReaddir(DIR* directory) {
    if (g_isReadable) return realReaddir(directory);
    errno = EIO;
    return nullptr;
}

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

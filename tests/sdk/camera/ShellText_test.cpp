// Texts that reach a shell as the library behaves by default: all of them.
#include "sdk/camera/ShellText.h"

#include <gtest/gtest.h>

namespace {

TEST(ShellText, reachesTheShellWhateverItIs) {
    for (const char* const text : {"", "$(id)", "http://server", "a b", "\"", "-delete"}) {
        EXPECT_TRUE(dax::mayReachShellAsBase(text)) << text;
        EXPECT_TRUE(dax::mayReachShellAsName(text, "14080045")) << text;
        EXPECT_TRUE(dax::mayReachShellAsDirectory(text)) << text;
    }
}

}  // namespace

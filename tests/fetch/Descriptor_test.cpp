// Calls that are repeated after a signal, and the words for what one answered.
#include "fetch/Descriptor.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace {

using thermika::fetch::errorText;
using thermika::fetch::retrying;

TEST(Descriptor, callsThatSignalsInterruptAreRepeated) {
    int calls = 0;
    EXPECT_EQ(retrying([&calls] {
                  errno = EINTR;
                  return ++calls < 3 ? -1 : 7;
              }),
              7);
    EXPECT_EQ(calls, 3);
}

TEST(Descriptor, callsThatFailOtherwiseAreNotRepeated) {
    int calls = 0;
    EXPECT_EQ(retrying([&calls] {
                  ++calls;
                  errno = EIO;
                  return -1;
              }),
              -1);
    EXPECT_EQ(calls, 1);
}

TEST(Descriptor, callsThatAreInterruptedWithoutEndFailAtLast) {
    int calls = 0;
    EXPECT_EQ(retrying([&calls] {
                  ++calls;
                  errno = EINTR;
                  return -1;
              }),
              -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(calls, 1001);
}

TEST(Descriptor, errorsHaveWordsOrANumber) {
    EXPECT_EQ(errorText(ENOENT), "No such file or directory");
    EXPECT_EQ(errorText(9999), "error 9999");
}

}  // namespace

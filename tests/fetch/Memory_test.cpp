// Memory that ran out in a function of C.
#include "fetch/Memory.h"

#include <new>

#include <gtest/gtest.h>

namespace {

using thermika::fetch::ensureMemory;

TEST(Memory, isAnExceptionOnlyWhereItIsMissing) {
    EXPECT_NO_THROW(ensureMemory(true));
    EXPECT_THROW(ensureMemory(false), std::bad_alloc);
}

}  // namespace

// See the header.
#include "faults/EachAllocation.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <limits>
#include <new>
#include <utility>

#include <gtest/gtest.h>

namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

std::size_t g_untilFailure = kNever;
std::ptrdiff_t g_live = 0;
thermika_test::BlockTrace* g_trace = nullptr;

void note(thermika_test::BlockTrace::Blocks& blocks, void* block) {
    auto* const place = std::find(blocks.begin(), blocks.end(), 0);
    if (place != blocks.end()) *place = reinterpret_cast<std::uintptr_t>(block);
}

void* allocate(std::size_t bytes) {
    if (g_untilFailure == 0) {
        g_untilFailure = kNever;
        throw std::bad_alloc();
    }
    if (g_untilFailure != kNever) --g_untilFailure;
    void* const block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block == nullptr) throw std::bad_alloc();
    ++g_live;
    if (g_trace != nullptr) note(g_trace->allocated, block);
    return block;
}

void release(void* block) {
    if (block == nullptr) return;
    --g_live;
    if (g_trace != nullptr) note(g_trace->released, block);
    std::free(block);
}

}  // namespace

void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }

namespace thermika_test {

namespace {

std::ptrdiff_t descriptors() {
    using std::filesystem::directory_iterator;
    return std::distance(directory_iterator("/proc/self/fd"), directory_iterator());
}

}  // namespace

std::size_t failEachAllocation(const Use& use, const std::function<void()>& prepare) {
    prepare();
    const std::string expected = use();  // also creates what stays for the process's life
    for (std::size_t n = 0;; ++n) {
        prepare();
        const std::ptrdiff_t openBefore = descriptors();
        const std::ptrdiff_t liveBefore = g_live;
        bool isThrown = false;
        std::string answer;
        failAllocation(n);
        try {
            answer = use();
        } catch (const std::bad_alloc&) {
            isThrown = true;
        }
        const bool isReached = failNoAllocation();
        if (!isReached) {
            EXPECT_EQ(answer, expected);
            return n;
        }
        EXPECT_TRUE(isThrown) << "allocation " << n << " failed and nobody was told";
        answer = std::string();
        EXPECT_EQ(g_live, liveBefore) << "allocation " << n << " failed and something leaked";
        EXPECT_EQ(descriptors(), openBefore) << "allocation " << n << " failed and a file is open";
        prepare();
        EXPECT_EQ(use(), expected) << "after allocation " << n << " had failed";
        if (testing::Test::HasFailure()) return n;
    }
}

void failAllocation(std::size_t skipped) { g_untilFailure = skipped; }

bool failNoAllocation() { return std::exchange(g_untilFailure, kNever) == kNever; }

BlockTrace::BlockTrace() { g_trace = this; }

BlockTrace::~BlockTrace() { g_trace = nullptr; }

}  // namespace thermika_test

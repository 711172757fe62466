// Every allocation of something fails once. Replaces operator new for the whole executable, so that
// only executables made for this have EachAllocation.cpp among their sources.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace thermika_test {

/// A complete use of something: from nothing to an answer, with all it made gone again.
using Use = std::function<std::string()>;

/// For n = 0, 1, ... the n-th allocation that `use` makes throws, until it gets by without it.
/// How many were made to fail. The failure must reach the caller, no memory and no descriptor may
/// be left, and the same use must give its full answer afterwards. `prepare` comes before each use,
/// unhindered.
std::size_t failEachAllocation(
    const Use& use, const std::function<void()>& prepare = [] {});

/// The allocation after `skipped` more throws; the others don't.
void failAllocation(std::size_t skipped);

/// None throws from here on. Whether the one that was to has thrown.
bool failNoAllocation();

/// Where the first blocks lie that are allocated and released while it lives, in that order.
struct BlockTrace {
    using Blocks = std::array<std::uintptr_t, 8>;

    BlockTrace();
    ~BlockTrace();
    BlockTrace(const BlockTrace&) = delete;
    BlockTrace& operator=(const BlockTrace&) = delete;

    Blocks allocated{};
    Blocks released{};
};

}  // namespace thermika_test

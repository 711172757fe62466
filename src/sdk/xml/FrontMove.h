// Moving parts of a text towards its front, where what was taken out leaves room.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace dax {

/// Copies `part` to `to`, which lies before it or is its start; nothing from `end` on is read. Most
/// often there is room to copy more than the part, which is quicker than to copy it exactly: what
/// lies before the part's end may change, what follows it does not.
inline void moveToFront(char* to, std::string_view part, const char* end) {
    constexpr std::size_t kChunk = 64;
    const std::size_t rounded = (part.size() | (kChunk - 1)) + 1;
    const char* const from = part.data();
    if (static_cast<std::size_t>(from - to) < kChunk ||
        static_cast<std::size_t>(end - from) < rounded) {
        std::memmove(to, from, part.size());
        return;
    }
    std::size_t at = 0;
    do {
        std::memcpy(to + at, from + at, kChunk);
        at += kChunk;
    } while (at < rounded);
}

}  // namespace dax

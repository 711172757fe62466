// Copies a part of a text to a lower address in the same text. Knows nothing of what is in it.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace dax {

/// Copies `part` to `to`, which is at most part.data() and lies in the same text; nothing from
/// `end` on is read. Copies in chunks of fixed size where there is room, which is quicker than an
/// exact copy: bytes behind the copy and before the part's end may change, those behind the part do
/// not.
inline void copyDown(char* to, std::string_view part, const char* end) {
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

// Finds bytes in a text, many at a time where the processor can. All that is specific to a
// processor stands here, each piece with a plain form beside it. Knows nothing of tags and
// comments.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace dax {

/// How many bytes nextByte() looks at together: so many can be read from any position it looks at.
constexpr std::size_t kScanStep = 16;

/// The first of the bytes `from` to `to` - 1 that equals `byte`, or a number from `to` on.
/// kScanStep bytes can be read from `to` on.
inline std::size_t nextByte(const unsigned char* bytes, unsigned char byte, std::size_t from,
                            std::size_t to) {
#ifdef __SSE2__
    // Most ranges are short: a call of memchr() would cost more than the search.
    const __m128i wanted = _mm_set1_epi8(static_cast<char>(byte));
    for (; from < to; from += kScanStep) {
        const auto* const at = reinterpret_cast<const __m128i*>(bytes + from);
        const auto same = static_cast<unsigned int>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_loadu_si128(at), wanted)));
        if (same != 0) return from + static_cast<std::size_t>(__builtin_ctz(same));
    }
#else
    while (from < to && bytes[from] != byte) ++from;
#endif
    return from;
}

namespace byte_scan {

#ifdef __SSE2__

constexpr std::size_t kBlock = 4 * kScanStep;

/// All bits of each of the kScanStep bytes from `at` on that equals `byte`, none of the others.
inline __m128i equalBytes(const char* at, char byte) {
    return _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)),
                          _mm_set1_epi8(byte));
}

/// One bit for each of them, the lowest for the first.
inline std::uint64_t bits(__m128i bytes) {
    return std::uint64_t{static_cast<std::uint32_t>(_mm_movemask_epi8(bytes))};
}

/// One bit for each of the kBlock positions from `block` on that holds `byte`, the lowest for the
/// first; with `kIsPair`, that holds `byte` and then `next`, which reads one byte more.
template <bool kIsPair>
[[gnu::always_inline]] inline std::uint64_t positionsInBlock(const char* block, char byte,
                                                             char next) {
    // Written out: not every level of optimisation unrolls loops.
    __m128i a = equalBytes(block, byte);
    __m128i b = equalBytes(block + kScanStep, byte);
    __m128i c = equalBytes(block + 2 * kScanStep, byte);
    __m128i d = equalBytes(block + 3 * kScanStep, byte);
    if constexpr (kIsPair) {
        // Pairs are rare, so is the first byte of most.
        if (bits(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) == 0) return 0;
        a = _mm_and_si128(a, equalBytes(block + 1, next));
        b = _mm_and_si128(b, equalBytes(block + kScanStep + 1, next));
        c = _mm_and_si128(c, equalBytes(block + 2 * kScanStep + 1, next));
        d = _mm_and_si128(d, equalBytes(block + 3 * kScanStep + 1, next));
    }
    return bits(a) | bits(b) << kScanStep | bits(c) << (2 * kScanStep) | bits(d) << (3 * kScanStep);
}

#endif

template <bool kIsPair, typename Visit>
bool visit(std::string_view text, char byte, char next, const Visit& visitOffset) {
    std::size_t from = 0;
#ifdef __SSE2__
    for (; text.size() - from > kBlock; from += kBlock) {
        auto positions = positionsInBlock<kIsPair>(text.data() + from, byte, next);
        for (; positions != 0; positions &= positions - 1) {
            const auto position = static_cast<std::size_t>(__builtin_ctzll(positions));
            if (!visitOffset(from + position)) return false;
        }
    }
#endif
    // The plain form; also for the last bytes, which fill no block.
    for (const std::size_t to = text.size() - std::min(text.size(), std::size_t{kIsPair});
         from < to; ++from) {
        if (text[from] != byte || (kIsPair && text[from + 1] != next)) continue;
        if (!visitOffset(from)) return false;
    }
    return true;
}

}  // namespace byte_scan

/// Calls `visitOffset` with the offset of each `byte` in `text`, in ascending order, until it
/// answers false. It may overwrite what lies before that offset. False when it ever answered so.
template <typename Visit>
bool visitBytes(std::string_view text, char byte, const Visit& visitOffset) {
    return byte_scan::visit<false>(text, byte, byte, visitOffset);
}

/// The same for each `first` that is followed by `second`. Pairs of one byte may overlap: three in
/// a row are two pairs.
template <typename Visit>
bool visitPairs(std::string_view text, char first, char second, const Visit& visitOffset) {
    return byte_scan::visit<true>(text, first, second, visitOffset);
}

}  // namespace dax

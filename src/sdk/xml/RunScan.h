// Visits the places of a text where one byte stands, or stands twice in a row, many bytes at a time
// where the machine can. For bytes that are frequent; std::memchr() is as quick for rare ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace dax {

/// How often the byte has to stand in a row.
enum class Run { kOne, kTwo };

namespace run_scan {

/// Visits the runs that begin at `from` or later, a byte at a time.
template <char kByte, Run kRun, typename Visit>
bool visitPlainly(std::string_view text, std::size_t from, const Visit& visit) {
    while (from < text.size()) {
        const void* const found = std::memchr(text.data() + from, kByte, text.size() - from);
        if (found == nullptr) return true;
        const auto place = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
        from = place + 1;
        if (kRun == Run::kTwo && (from == text.size() || text[from] != kByte)) continue;
        if (!visit(place)) return false;
    }
    return true;
}

#ifdef __SSE2__

constexpr std::size_t kStep = 16;
constexpr std::size_t kBlock = 4 * kStep;

/// One bit for each of kBlock places, the lowest for the first. Reads one byte more. A call for
/// every block would be a large part of the work.
template <char kByte, Run kRun>
[[gnu::always_inline]] inline std::uint64_t placesInBlock(const char* block) {
    __m128i equal[kBlock / kStep];
    for (std::size_t i = 0; i < kBlock / kStep; ++i)
        equal[i] =
            _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i * kStep)),
                           _mm_set1_epi8(kByte));
    // A byte of which two in a row are looked for is rare by itself.
    const __m128i any =
        _mm_or_si128(_mm_or_si128(equal[0], equal[1]), _mm_or_si128(equal[2], equal[3]));
    if (kRun == Run::kTwo && _mm_movemask_epi8(any) == 0) return 0;
    std::uint64_t places = 0;
    for (std::size_t i = 0; i < kBlock / kStep; ++i) {
        const auto bits = static_cast<std::uint32_t>(_mm_movemask_epi8(equal[i]));
        places |= std::uint64_t{bits} << (i * kStep);
    }
    if (kRun == Run::kOne) return places;
    const std::uint64_t behind = block[kBlock] == kByte ? 1 : 0;
    return places & (places >> 1 | behind << (kBlock - 1));
}

#endif

}  // namespace run_scan

/// Calls `visit` with each place where a run begins, in ascending order, until it answers false.
/// Two runs may overlap. `visit` may overwrite what lies before the place. Whether it never
/// answered false.
template <char kByte, Run kRun, typename Visit>
bool visitRuns(std::string_view text, const Visit& visit) {
    std::size_t from = 0;
#ifdef __SSE2__
    using namespace run_scan;
    for (; text.size() - from > kBlock; from += kBlock) {
        for (auto places = placesInBlock<kByte, kRun>(text.data() + from); places != 0;
             places &= places - 1)
            if (!visit(from + static_cast<std::size_t>(__builtin_ctzll(places)))) return false;
    }
#endif
    return run_scan::visitPlainly<kByte, kRun>(text, from, visit);
}

}  // namespace dax

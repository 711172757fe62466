// Walks the places of a text where one byte stands, or stands several times in a row, many bytes at
// a time where the machine can. For bytes that are frequent; std::memchr() is as quick for rare
// ones.
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

template <char kByte, Run kRun>
class RunScan {
public:
    explicit RunScan(std::string_view text) : m_text(text) {}

    /// The next place where a run begins, in ascending order; two runs may overlap. The text's size
    /// when there is none.
    std::size_t next() {
#ifdef __SSE2__
        while (m_places == 0 && m_text.size() - m_scanned > kBlock) {
            m_places = placesInBlock();
            m_scanned += kBlock;
        }
        if (m_places != 0) {
            const auto place = static_cast<std::size_t>(__builtin_ctzll(m_places));
            m_places &= m_places - 1;
            return m_scanned - kBlock + place;
        }
#endif
        return nextPlainly();
    }

private:
    std::size_t nextPlainly() {
        while (m_scanned < m_text.size()) {
            const void* const found =
                std::memchr(m_text.data() + m_scanned, kByte, m_text.size() - m_scanned);
            if (found == nullptr) break;
            const auto place =
                static_cast<std::size_t>(static_cast<const char*>(found) - m_text.data());
            m_scanned = place + 1;
            if (kRun == Run::kOne || (m_scanned < m_text.size() && m_text[m_scanned] == kByte))
                return place;
        }
        m_scanned = m_text.size();
        return m_scanned;
    }

#ifdef __SSE2__
    static constexpr std::size_t kStep = 16;
    static constexpr std::size_t kBlock = 4 * kStep;

    /// One bit a place, the lowest for `m_scanned`.
    std::uint64_t placesInBlock() const {
        const char* const block = m_text.data() + m_scanned;
        std::uint64_t places = 0;
        for (std::size_t step = 0; step < kBlock; step += kStep) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + step));
            const int equal = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(kByte)));
            places |= std::uint64_t{static_cast<std::uint32_t>(equal)} << step;
        }
        if (kRun == Run::kOne) return places;
        const std::uint64_t behind = block[kBlock] == kByte ? 1 : 0;
        return places & (places >> 1 | behind << (kBlock - 1));
    }

    std::uint64_t m_places = 0;  // found in the last block and not handed out
#endif

    std::string_view m_text;
    std::size_t m_scanned = 0;
};

}  // namespace dax

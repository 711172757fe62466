// Tag search, sixteen places at a time where the processor can.
#include "sdk/xml/TagSearch.h"

#include <algorithm>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace dax {

namespace {

std::string_view opener(TagKind kind) { return kind == TagKind::kOpening ? "<" : "</"; }

/// The part of the text in which the tag may stand: one that begins before `limit` ends in it.
std::string_view window(std::string_view text, std::size_t length, std::size_t limit) {
    if (limit > text.size()) return text;
    return text.substr(0, limit + std::min(length - 1, text.size() - limit));
}

std::size_t findIn(std::string_view searched, std::string_view name, TagKind kind,
                   std::size_t from) {
    const std::size_t length = tagLength(name, kind);
    while (from < searched.size() && searched.size() - from >= length) {
        const std::size_t candidates = searched.size() - from - length + 1;
        const void* const at = std::memchr(searched.data() + from, '<', candidates);
        if (at == nullptr) return kNoTag;
        const char* const found = static_cast<const char*>(at);
        from = static_cast<std::size_t>(found - searched.data());
        if (isTagAt(found, name, kind)) return from;
        ++from;
    }
    return kNoTag;
}

}  // namespace

std::size_t findTagPlainly(std::string_view text, std::string_view name, TagKind kind,
                           std::size_t from, std::size_t limit) {
    if (from >= limit) return kNoTag;
    return findIn(window(text, tagLength(name, kind), limit), name, kind, from);
}

#ifdef __SSE2__

namespace {

constexpr std::size_t kStep = 16;
constexpr std::size_t kBlock = 4 * kStep;

/// Looks at many places at a time: a tag can only stand where a tag's length further on a ">" is
/// and before it the name's last character. Few places pass, and those are compared in full.
class WideSearch {
public:
    WideSearch(const char* text, std::string_view name, TagKind kind)
        : m_text(text),
          m_name(name),
          m_kind(kind),
          m_last(tagLength(name, kind) - 1),
          m_ends(_mm_set1_epi8(name.empty() ? opener(kind).back() : name.back())),
          m_closes(_mm_set1_epi8('>')) {}

    /// Where the first tag begins among the kStep places from `at` on, of which the first `skipped`
    /// do not count.
    std::size_t inStep(std::size_t at, std::size_t skipped = 0) const {
        return firstOf(bits(candidates(m_text + at + m_last)) >> skipped, at + skipped);
    }

    /// The first of the blocks of kBlock places from `at` on in which there may be a tag, or the
    /// first that begins behind `last`. Most often there is none, so this is asked of all places of
    /// a block at once.
    std::size_t firstBlock(std::size_t at, std::size_t last) const {
        for (; at <= last; at += kBlock) {
            const char* const ends = m_text + at + m_last;
            const __m128i any = _mm_or_si128(
                _mm_or_si128(candidates(ends), candidates(ends + kStep)),
                _mm_or_si128(candidates(ends + 2 * kStep), candidates(ends + 3 * kStep)));
            if (bits(any) != 0) return at;
        }
        return at;
    }

private:
    static __m128i load(const char* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    }

    /// One byte a place, of which all bits are set where a tag may end, from `ends` on.
    __m128i candidates(const char* ends) const {
        return _mm_and_si128(_mm_cmpeq_epi8(load(ends - 1), m_ends),
                             _mm_cmpeq_epi8(load(ends), m_closes));
    }

    /// One bit a place, the lowest for the first.
    static unsigned int bits(__m128i places) {
        return static_cast<unsigned int>(_mm_movemask_epi8(places));
    }

    std::size_t firstOf(unsigned int places, std::size_t at) const {
        for (; places != 0; places &= places - 1) {
            const std::size_t place = at + static_cast<std::size_t>(__builtin_ctz(places));
            if (m_text[place] == '<' && isTagAt(m_text + place, m_name, m_kind)) return place;
        }
        return kNoTag;
    }

    const char* m_text;
    std::string_view m_name;
    TagKind m_kind;
    std::size_t m_last;  // from a tag's "<" to its ">"
    __m128i m_ends;
    __m128i m_closes;
};

}  // namespace

std::size_t findTag(std::string_view text, std::string_view name, TagKind kind, std::size_t from,
                    std::size_t limit) {
    if (from >= limit) return kNoTag;
    const std::size_t length = tagLength(name, kind);
    const std::string_view searched = window(text, length, limit);
    if (searched.size() < kStep + length - 1) return findIn(searched, name, kind, from);

    const WideSearch search(searched.data(), name, kind);
    const std::size_t lastStep = searched.size() - (kStep + length - 1);
    // Most closing tags are near.
    std::size_t blocksFrom = kind == TagKind::kClosing ? from + kStep : from;
    while (from <= lastStep) {
        if (from >= blocksFrom && lastStep - from >= kBlock - kStep) {
            from = search.firstBlock(from, lastStep - (kBlock - kStep));
            blocksFrom = from + kBlock;
            continue;
        }
        const std::size_t found = search.inStep(from);
        if (found != kNoTag) return found;
        from += kStep;
    }
    // What is left is less than a step, so the last one begins earlier.
    return from - lastStep < kStep ? search.inStep(lastStep, from - lastStep) : kNoTag;
}

#else

std::size_t findTag(std::string_view text, std::string_view name, TagKind kind, std::size_t from,
                    std::size_t limit) {
    return findTagPlainly(text, name, kind, from, limit);
}

#endif

}  // namespace dax

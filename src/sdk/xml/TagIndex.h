// An index of a text's tags: where each begins, and a fingerprint of one byte, by which the tags of
// a name are found many at a time. Built once a text; five bytes a tag. Knows nothing of nesting.
#pragma once

#include <endian.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "sdk/xml/ByteScan.h"
#include "sdk/xml/TagSearch.h"

namespace dax {

/// The fingerprint of a name's tag: a byte made of the first eight behind its "<", up to its ">".
unsigned char tagFingerprint(std::string_view name, TagKind kind);

class TagIndex {
public:
    /// Lists every "<" of `text`, which has less than 4 GiB and must stay where it is, unchanged.
    explicit TagIndex(std::string_view text);

    /// How many there are; the tags are numbered from 0 in the order of the text. No number below
    /// may reach beyond them, nor `to` beyond their count.
    std::size_t count() const { return m_offsets.size(); }

    /// Where a tag begins.
    std::size_t offsetOf(std::size_t tag) const { return m_offsets[tag]; }

    /// The first tag from number `from` on that begins at `offset` or later; quick when it is near.
    std::size_t firstAt(std::size_t offset, std::size_t from) const {
        while (from < m_offsets.size() && m_offsets[from] < offset) ++from;
        return from;
    }

    /// The first of the tags `from` to `to` - 1 that is one of `name`, kNoTag when there is none.
    std::size_t find(std::string_view name, TagKind kind, std::size_t from, std::size_t to) const {
        const unsigned char wanted = tagFingerprint(name, kind);
        for (; (from = nextByte(m_fingerprints.data(), wanted, from, to)) < to; ++from)
            if (isAt(name, kind, from)) return from;
        return kNoTag;
    }

    /// Whether a tag is one of `name`.
    bool isAt(std::string_view name, TagKind kind, std::size_t tag) const {
        const std::size_t offset = m_offsets[tag];
        return m_text.size() - offset >= tagLength(name, kind) &&
               isTagAt(m_text.data() + offset, name, kind);
    }

private:
    std::string_view m_text;
    std::vector<std::uint32_t> m_offsets;
    std::vector<unsigned char> m_fingerprints;  ///< and kScanStep more, which belong to no tag
};

namespace tag_fingerprint {

using Word = std::uint64_t;  // the first byte of a text is its lowest

/// The first eight bytes at `at`, which are there.
inline Word wordAt(const char* at) {
    Word word = 0;
    std::memcpy(&word, at, sizeof(Word));
    return le64toh(word);
}

/// The bytes of a text shorter than a word, and zero bytes behind them.
inline Word shortWord(std::string_view text) {
    if (text.size() < 4) {
        const auto byteAt = [&](std::size_t i) {
            return Word{static_cast<unsigned char>(text[i])} << (8 * i);
        };
        // One to three bytes, which these may name twice.
        return text.empty() ? 0 : byteAt(0) | byteAt(text.size() / 2) | byteAt(text.size() - 1);
    }
    // Two halves that may overlap.
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::memcpy(&first, text.data(), sizeof first);
    std::memcpy(&last, text.data() + text.size() - sizeof last, sizeof last);
    return Word{le32toh(first)} | Word{le32toh(last)} << (8 * (text.size() - sizeof last));
}

inline unsigned char ofWord(Word word) {
    constexpr Word kEveryByte = 0x0101010101010101U;
    // Nothing behind the first ">" counts. Where a byte is one, subtracting borrows into its top
    // bit.
    const Word others = word ^ kEveryByte * '>';
    const Word ends = (others - kEveryByte) & ~others & kEveryByte * 0x80;
    word &= ends ^ (ends - 1);
    return static_cast<unsigned char>(word * 0x9E3779B97F4A7C15U >> 56);
}

}  // namespace tag_fingerprint

inline unsigned char tagFingerprint(std::string_view name, TagKind kind) {
    using namespace tag_fingerprint;
    const Word opening = name.size() >= sizeof(Word)
                             ? wordAt(name.data())
                             : shortWord(name) | Word{'>'} << (8 * name.size());
    return ofWord(kind == TagKind::kOpening ? opening : opening << 8 | '/');
}

}  // namespace dax

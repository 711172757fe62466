// Fingerprints of tags: one byte made of the first bytes behind a tag's "<", up to its ">". Knows
// nothing of texts and indexes.
#pragma once

#include <endian.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "sdk/xml/TagSearch.h"

namespace dax {

using Word = std::uint64_t;  // the first byte of a text is its lowest

constexpr Word kEveryByte = 0x0101010101010101U;

/// The first eight bytes at `at`, which are there.
inline Word wordAt(const char* at) {
    Word word = 0;
    std::memcpy(&word, at, sizeof(Word));
    return le64toh(word);
}

/// The bytes of a text shorter than a word, and zero bytes behind them.
inline Word shortWord(std::string_view text) {
    if (text.size() < 4) {
        Word word = 0;
        for (std::size_t i = text.size(); i-- > 0;)
            word = word << 8 | static_cast<unsigned char>(text[i]);
        return word;
    }
    // Two halves that may overlap.
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::memcpy(&first, text.data(), sizeof first);
    std::memcpy(&last, text.data() + text.size() - sizeof last, sizeof last);
    return Word{le32toh(first)} | Word{le32toh(last)} << (8 * (text.size() - sizeof last));
}

inline unsigned char fingerprint(Word word) {
    // Nothing behind the first ">" counts. Where a byte is one, subtracting borrows into its top
    // bit.
    const Word others = word ^ kEveryByte * '>';
    const Word ends = (others - kEveryByte) & ~others & kEveryByte * 0x80;
    word &= ends ^ (ends - 1);
    return static_cast<unsigned char>(word * 0x9E3779B97F4A7C15U >> 56);
}

/// What stands behind the "<" of a name's opening tag.
inline Word openingWord(std::string_view name) {
    if (name.size() >= sizeof(Word)) return wordAt(name.data());
    return shortWord(name) | Word{'>'} << (8 * name.size());
}

/// An element's name, whose text has to stay where it is, with the fingerprints of its tags. Of a
/// literal the compiler makes them.
class ElementName {
public:
    /// Null is a name that no text holds.
    explicit ElementName(const char* name)
        : ElementName(name != nullptr ? std::string_view(name) : std::string_view("\0", 1)) {}

    explicit ElementName(std::string_view name)
        : m_text(name),
          m_opening(fingerprint(openingWord(name))),
          m_closing(fingerprint(openingWord(name) << 8 | '/')) {}

    std::string_view text() const { return m_text; }

    unsigned char print(TagKind kind) const {
        return kind == TagKind::kOpening ? m_opening : m_closing;
    }

private:
    std::string_view m_text;
    unsigned char m_opening;
    unsigned char m_closing;
};

}  // namespace dax

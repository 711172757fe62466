// An index of a text's tags: where each begins, and a fingerprint of one byte by which those of a
// name are found many at a time. Built once a text; five bytes a tag.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "sdk/xml/ByteScan.h"
#include "sdk/xml/TagPrint.h"
#include "sdk/xml/TagSearch.h"

namespace dax {

class TagIndex {
public:
    /// Lists every "<" of `text`, of less than 4 GiB, which later calls must be given unchanged. To
    /// be called on a new or cleared index, which is not built when memory ends.
    void build(std::string_view text);
    void clear();
    bool isBuilt() const { return m_isBuilt; }

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
    std::size_t find(std::string_view text, const ElementName& name, TagKind kind, std::size_t from,
                     std::size_t to) const {
        const unsigned char print = name.print(kind);
        for (; (from = nextByte(m_prints.data(), print, from, to)) < to; ++from)
            if (isAt(text, name, kind, from)) return from;
        return kNoTag;
    }

    /// Whether a tag is one of `name`.
    bool isAt(std::string_view text, const ElementName& name, TagKind kind, std::size_t tag) const {
        const std::size_t offset = m_offsets[tag];
        return text.size() - offset >= tagLength(name.text(), kind) &&
               isTagAt(text.data() + offset, name.text(), kind);
    }

private:
    bool m_isBuilt = false;
    std::vector<std::uint32_t> m_offsets;
    std::vector<unsigned char> m_prints;  ///< and kScanStep more, which belong to no tag
};

}  // namespace dax

// One walk over the text's "--", of which every delimiter has one: openings and closings are met in
// the order in which they count, an opening before a closing that shares its dashes.
#include "sdk/xml/XmlComments.h"

#include <algorithm>
#include <string_view>

#include "sdk/xml/ByteScan.h"
#include "sdk/xml/FrontMove.h"

namespace dax {

namespace {

constexpr std::string_view kOpening = "<!--";
constexpr std::string_view kClosing = "-->";

}  // namespace

std::size_t CommentRemover::take(char* text, std::size_t size, bool isEnd) {
    std::size_t kept = 0;  // bytes in front that are done with
    std::size_t from = 0;  // what follows the last comment
    const auto keep = [&](std::size_t upTo) {
        if (kept != from) moveToFront(text + kept, {text + from, upTo - from}, text + size);
        kept += upTo - from;
    };
    // Copies, since `text` might overlap the object as far as the compiler knows.
    std::size_t nesting = m_nesting;
    std::size_t begin = m_begin;
    std::size_t nextClosing = m_nextClosing;
    const std::size_t next = m_next;
    // A delimiter has no byte of the one before it: where a comment went, "<!" may be left of it.
    const auto isOpening = [&](std::size_t dashes) {
        return dashes >= 2 && dashes > nextClosing && text[dashes - 2] == '<' &&
               text[dashes - 1] == '!';
    };
    // Deliberate: a "-->" that starts right after another one is not seen, so it stays in the text.
    const auto isClosing = [&](std::size_t dashes) {
        return dashes >= nextClosing && dashes + 2 < size && text[dashes + 2] == '>';
    };
    const auto pair = [&](std::size_t place) {
        const std::size_t dashes = next + place;
        if (isOpening(dashes) && nesting++ == 0) begin = dashes + 2 - kOpening.size();
        if (!isClosing(dashes)) return true;
        const std::size_t end = dashes + kClosing.size();
        nextClosing = end + 1;
        if (nesting == 0) return false;
        if (--nesting == 0) {
            keep(begin);
            from = end;
        }
        return true;
    };

    // A "--" counts once the byte behind it is there.
    const std::size_t upTo = isEnd ? size : size - std::min<std::size_t>(size, 1);
    if (m_allOpened && next < upTo) m_allOpened = visitPairs<'-'>({text + next, upTo - next}, pair);
    if (nesting > 0) {
        // Of a comment that is open, what may belong to a delimiter stays.
        keep(begin);
        begin = kept;
        from = size - kOpening.size();
    }
    keep(size);
    m_nesting = nesting;
    m_begin = begin;
    m_nextClosing = nextClosing - std::min(nextClosing, size - kept);
    m_next = kept - std::min<std::size_t>(kept, 2);
    return kept;
}

}  // namespace dax

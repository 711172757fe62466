// Finds and removes comments. Every delimiter holds a "--", so one pass over these finds openings
// and closings in the order in which they count: an opening before a closing that shares its
// dashes.
#include "sdk/xml/XmlComments.h"

#include <string_view>

#include "sdk/xml/ByteScan.h"
#include "sdk/xml/CopyDown.h"

namespace dax {

namespace {

constexpr std::string_view kOpening = "<!--";
constexpr std::string_view kClosing = "-->";

/// Hands begin and end of each comment that lies in no other one to `onComment`, in ascending
/// order; false, at that place, when delimiters do not pair up. `onComment` may change what lies
/// before the comment's end.
template <typename OnComment>
bool visitComments(std::string_view text, const OnComment& onComment) {
    std::size_t nesting = 0;
    std::size_t begin = 0;
    std::size_t nextClosing = 0;  // the first position where a closing counts again
    const bool allOpened = visitPairs<'-'>(text, [&](std::size_t dashes) {
        const bool isOpening = dashes >= 2 && text[dashes - 2] == '<' && text[dashes - 1] == '!';
        if (isOpening && nesting++ == 0) begin = dashes + 2 - kOpening.size();
        // Deliberate: a "-->" that starts right after another one is not seen, so it stays.
        const bool isClosing =
            dashes >= nextClosing && dashes + 2 < text.size() && text[dashes + 2] == '>';
        if (!isClosing) return true;
        nextClosing = dashes + kClosing.size() + 1;
        if (nesting == 0) return false;  // GCOVR_EXCL_BR_LINE: the second pass never comes here
        if (--nesting == 0) onComment(begin, dashes + kClosing.size());
        return true;
    });
    return allOpened && nesting == 0;
}

}  // namespace

std::optional<std::size_t> removeComments(char* text, std::size_t size) {
    // Twice: a text whose delimiters do not pair up stays as it is, and to keep a list of comments
    // would take more memory than the text.
    bool hasComments = false;
    if (!visitComments({text, size}, [&](std::size_t, std::size_t) { hasComments = true; }))
        return std::nullopt;
    if (!hasComments) return size;
    std::size_t left = 0;  // bytes in front that stay
    std::size_t from = 0;  // where what follows the last comment begins
    const auto keep = [&](std::size_t upTo) {
        if (left != from) copyDown(text + left, {text + from, upTo - from}, text + size);
        left += upTo - from;
    };
    visitComments({text, size}, [&](std::size_t begin, std::size_t end) {
        keep(begin);
        from = end;
    });
    keep(size);
    return left;
}

}  // namespace dax

// Finds and removes comments. Every delimiter holds a "--", so one pass over these finds openings
// and closings in the order in which they count: an opening before a closing that shares its
// dashes.
#include "sdk/xml/XmlComments.h"

#include <cstdint>
#include <string_view>
#include <vector>

#include "sdk/xml/ByteScan.h"
#include "sdk/xml/CopyDown.h"

namespace dax {

namespace {

constexpr std::string_view kOpening = "<!--";
constexpr std::string_view kClosing = "-->";

struct Comment {
    std::uint32_t begin;
    std::uint32_t end;
};

}  // namespace

std::optional<std::size_t> removeComments(char* text, std::size_t size) {
    std::vector<Comment> comments;  // those that lie in no other one
    std::size_t nesting = 0;
    std::size_t begin = 0;
    std::size_t nextClosing = 0;  // the first position where a closing counts again
    const bool allOpened = visitPairs({text, size}, '-', '-', [&](std::size_t dashes) {
        const bool isOpening = dashes >= 2 && text[dashes - 2] == '<' && text[dashes - 1] == '!';
        if (isOpening && nesting++ == 0) begin = dashes + 2 - kOpening.size();
        // Deliberate: a "-->" that starts right after another one is not seen, so it stays.
        const bool isClosing =
            dashes >= nextClosing && dashes + 2 < size && text[dashes + 2] == '>';
        if (!isClosing) return true;
        nextClosing = dashes + kClosing.size() + 1;
        if (nesting == 0) return false;
        if (--nesting == 0)
            comments.push_back({static_cast<std::uint32_t>(begin),
                                static_cast<std::uint32_t>(dashes + kClosing.size())});
        return true;
    });
    if (!allOpened || nesting > 0) return std::nullopt;

    std::size_t left = 0;  // bytes in front that stay
    std::size_t from = 0;  // where what follows the last comment begins
    const auto keep = [&](std::size_t upTo) {
        if (left != from) copyDown(text + left, {text + from, upTo - from}, text + size);
        left += upTo - from;
    };
    for (const Comment& comment : comments) {
        keep(comment.begin);
        from = comment.end;
    }
    keep(size);
    return left;
}

}  // namespace dax

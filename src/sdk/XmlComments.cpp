// One walk over the text notes the comments; they are taken out when all of them pair up.
#include "sdk/XmlComments.h"

#include <cstdint>
#include <cstring>
#include <vector>

#include "sdk/RunScan.h"

namespace dax {

namespace {

constexpr std::string_view kOpening = "<!--";
constexpr std::string_view kClosing = "-->";

/// An outermost comment: the offset of its "<" and that of the byte after its ">".
struct Comment {
    std::uint32_t begin;
    std::uint32_t end;
};

/// Takes the places of a text's "--" in their order and pairs up the delimiters that hold them: all
/// "<!--", and the "-->" that count.
class CommentPairing {
public:
    explicit CommentPairing(std::string_view text) : m_text(text) {}

    /// False when a "-->" has no "<!--" before it.
    bool take(std::size_t dashes) {
        // Taken by where their "--" stands, an opening and a closing come in the order of the
        // places they mark.
        if (isOpening(dashes) && m_nesting++ == 0) m_begin = dashes + 2 - kOpening.size();
        if (!isClosing(dashes)) return true;
        const std::size_t end = dashes + kClosing.size();
        m_nextClosing = end + 1;
        if (m_nesting == 0) return false;
        if (--m_nesting == 0) {
            Comment& comment = m_comments.emplace_back();
            comment.begin = static_cast<std::uint32_t>(m_begin);
            comment.end = static_cast<std::uint32_t>(end);
        }
        return true;
    }

    bool isBalanced() const { return m_nesting == 0; }

    const std::vector<Comment>& comments() const { return m_comments; }

private:
    bool isOpening(std::size_t dashes) const {
        return dashes >= 2 && m_text[dashes - 2] == '<' && m_text[dashes - 1] == '!';
    }

    // Deliberate: a "-->" that starts right after another one is not seen, so it stays in the text.
    bool isClosing(std::size_t dashes) const {
        return dashes >= m_nextClosing && dashes + 2 < m_text.size() && m_text[dashes + 2] == '>';
    }

    std::string_view m_text;
    std::vector<Comment> m_comments;
    std::size_t m_nextClosing = 0;
    std::size_t m_nesting = 0;
    std::size_t m_begin = 0;
};

}  // namespace

std::optional<std::size_t> removeComments(char* text, std::size_t size) {
    // Before anything is moved: a text whose comments do not pair up has to stay as it is.
    CommentPairing pairing({text, size});
    const bool allOpened = visitRuns<'-', Run::kTwo>(
        {text, size}, [&](std::size_t dashes) { return pairing.take(dashes); });
    if (!allOpened || !pairing.isBalanced()) return std::nullopt;
    if (pairing.comments().empty()) return size;

    std::size_t kept = pairing.comments().front().begin;
    for (auto comment = pairing.comments().begin(); comment != pairing.comments().end();) {
        const std::size_t from = comment->end;
        ++comment;
        const std::size_t upTo = comment == pairing.comments().end() ? size : comment->begin;
        std::memmove(text + kept, text + from, upTo - from);
        kept += upTo - from;
    }
    return kept;
}

}  // namespace dax

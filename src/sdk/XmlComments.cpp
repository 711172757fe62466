// Two walks over the text: the first only checks, so that a malformed text stays as it is.
#include "sdk/XmlComments.h"

#include <cstring>

#include "sdk/RunScan.h"

namespace dax {

namespace {

constexpr std::string_view kOpening = "<!--";
constexpr std::string_view kClosing = "-->";

/// Walks the comment delimiters of a text in their order: all "<!--", and the "-->" that count.
class CommentWalk {
public:
    explicit CommentWalk(std::string_view text) : m_text(text), m_dashes(text) {}

    /// Goes on to the next place where the outermost comment begins or ends; false when there is
    /// none or a "-->" has no "<!--" before it.
    bool next() {
        for (std::size_t dashes = 0; (dashes = m_dashes.next()) < m_text.size();) {
            if (isOpening(dashes) && m_nesting++ == 0) m_begin = dashes + 2 - kOpening.size();
            if (isClosing(dashes)) {
                m_nextClosing = dashes + kClosing.size() + 1;
                if (--m_nesting < 0) return false;
                if (m_nesting == 0) {
                    m_end = dashes + kClosing.size();
                    return true;
                }
            }
        }
        return false;
    }

    /// The comment just found: the offset of its "<" and that of the byte after its ">".
    std::size_t begin() const { return m_begin; }
    std::size_t end() const { return m_end; }

    bool isBalanced() const { return m_nesting == 0; }

private:
    bool isOpening(std::size_t dashes) const {
        return dashes >= 2 && m_text[dashes - 2] == '<' && m_text[dashes - 1] == '!';
    }

    // Deliberate: a "-->" that starts right after another one is not seen, so it stays in the text.
    bool isClosing(std::size_t dashes) const {
        return dashes >= m_nextClosing && dashes + 2 < m_text.size() && m_text[dashes + 2] == '>';
    }

    std::string_view m_text;
    // Both delimiters hold "--", which is rare elsewhere. Taken by where it stands, an opening and
    // a closing come in the order of the places they mark.
    RunScan<'-', Run::kTwo> m_dashes;
    std::size_t m_nextClosing = 0;
    std::ptrdiff_t m_nesting = 0;
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
};

bool commentsPairUp(std::string_view text) {
    CommentWalk walk(text);
    while (walk.next()) continue;
    return walk.isBalanced();
}

}  // namespace

std::optional<std::size_t> removeComments(char* text, std::size_t size) {
    // Before anything is moved: a text whose comments do not pair up has to stay as it is.
    if (!commentsPairUp({text, size})) return std::nullopt;

    CommentWalk walk({text, size});
    std::size_t kept = 0;
    std::size_t from = 0;
    const auto keepUpTo = [&](std::size_t upTo) {
        std::memmove(text + kept, text + from, upTo - from);
        kept += upTo - from;
    };
    while (walk.next()) {
        keepUpTo(walk.begin());
        from = walk.end();
    }
    if (from == 0) return size;
    keepUpTo(size);
    return kept;
}

}  // namespace dax

// Joins a file's lines in the memory the file was read into; nothing is copied elsewhere.
#include "sdk/DocumentText.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "sdk/FileRead.h"
#include "sdk/RunScan.h"
#include "sdk/TagSearch.h"

namespace dax {

namespace {

// The reader keeps a file's length less one in 32 signed bits.
constexpr std::size_t kMaxFileBytes = std::size_t{1} << 31;

// A text is worked on in pieces that stay in the processor's nearest memory from one look at them
// to the next.
constexpr std::size_t kPieceBytes = 16384;

/// The part of a text before the first line that holds the root's closing tag, before that line's
/// first zero byte if it has one; all of it when there is none. When the line is too long to be
/// read it is there up to the tag, too long still.
std::string_view beforeClosingLine(std::string_view text, std::string_view rootName) {
    for (std::size_t at = 0;; ++at) {
        at = findTag(text, rootName, TagKind::kClosing, at, text.size());
        if (at == kNoTag) return text;
        // No further back than a line can reach: this is asked once for every tag.
        const std::size_t searched = at - std::min(at, kMaxLineChars + 1);
        const std::size_t feed = text.substr(searched, at - searched).rfind('\n');
        if (feed == std::string_view::npos && searched > 0) return text.substr(0, at);
        const std::size_t begin = feed == std::string_view::npos ? 0 : searched + feed + 1;
        if (text.substr(begin, at - begin).find('\0') == std::string_view::npos)
            return text.substr(0, begin);
        // Nothing in the rest of that line counts.
        at = std::min(text.find('\n', at), text.size());
    }
}

/// Copies a line from a text's end to its front; `end` is where the text ends. Most often there is
/// room to copy more than the line, which is quicker than to copy it exactly.
void moveToFront(char* to, std::string_view line, const char* end) {
    constexpr std::size_t kChunk = 64;
    const std::size_t rounded = (line.size() + kChunk - 1) / kChunk * kChunk;
    const char* const from = line.data();
    if (static_cast<std::size_t>(from - to) < kChunk ||
        static_cast<std::size_t>(end - from) < rounded) {
        std::memmove(to, from, line.size());
        return;
    }
    for (std::size_t at = 0; at < rounded; at += kChunk) std::memcpy(to + at, from + at, kChunk);
}

std::string_view cutAtZeroByte(std::string_view line) {
    return line.substr(0, std::min(line.find('\0'), line.size()));
}

void replaceCarriageReturns(char* at, const char* end) {
    while (void* const found = std::memchr(at, '\r', static_cast<std::size_t>(end - at))) {
        at = static_cast<char*>(found);
        *at++ = '\n';
    }
}

/// Joins the lines of `text` at `to`, which lies before it and moves behind what was joined. False
/// when it ended early, at a line that is too long. `end` is where what may be read ends.
bool joinLines(std::string_view text, const char* end, char*& to) {
    const bool hasZeroBytes = text.find('\0') != std::string_view::npos;
    char* const first = to;
    char* next = to;
    std::size_t begin = 0;
    const auto join = [&](std::size_t feed) {
        if (feed - begin > kMaxLineChars) return false;
        std::string_view line(text.data() + begin, feed - begin);
        if (hasZeroBytes) line = cutAtZeroByte(line);
        moveToFront(next, line, end);
        next += line.size();
        begin = feed + 1;
        return true;
    };
    const bool isWhole = visitRuns<'\n', Run::kOne>(text, join) && join(text.size());
    to = next;
    replaceCarriageReturns(first, to);
    return isWhole;
}

/// The lines at the beginning of `text` that together have about kPieceBytes.
std::string_view firstPiece(std::string_view text) {
    if (text.size() <= kPieceBytes) return text;
    return text.substr(0, text.find('\n', kPieceBytes));
}

/// Makes a file's bytes the document's text, in place and while they arrive: what is written always
/// lies before what is still to be looked at.
class TextBuilder {
public:
    explicit TextBuilder(std::string_view rootName)
        // Deliberate: without ">", so the root's opening tag may carry attributes.
        : m_rootName(rootName), m_opening("<" + std::string(rootName)) {}

    /// Works on the lines that are complete by now; at the end, on all that are left.
    void take(const FileBytes& file, bool isEnd) {
        const std::string_view bytes(file.bytes.get(), file.size);
        std::size_t upTo = bytes.size();
        if (!isEnd) upTo = lastFeed(bytes, std::exchange(m_arrived, bytes.size()));
        if (upTo == std::string_view::npos || m_isOver) return;
        std::string_view lines = bytes.substr(m_begin, upTo - m_begin);
        m_begin = std::min(upTo + 1, bytes.size());
        if (!m_isInRoot) lines = behindOpeningLine(lines);
        char* to = file.bytes.get() + m_size;
        while (!lines.empty() && !m_isOver) {
            const std::string_view piece = firstPiece(lines);
            const std::string_view content = beforeClosingLine(piece, m_rootName);
            m_isOver = !joinLines(content, bytes.data() + bytes.size(), to) ||
                       content.size() < piece.size();
            lines.remove_prefix(std::min(piece.size() + 1, lines.size()));
        }
        m_size = static_cast<std::size_t>(to - file.bytes.get());
    }

    /// Bytes of the text.
    std::size_t size() const { return m_size; }

private:
    static std::size_t lastFeed(std::string_view bytes, std::size_t from) {
        const std::size_t feed = bytes.substr(from).rfind('\n');
        return feed == std::string_view::npos ? feed : from + feed;
    }

    /// What follows the line that holds the root's opening tag; nothing while there is none.
    std::string_view behindOpeningLine(std::string_view lines) {
        if (!m_hasBegun) lines.remove_prefix(std::min(lines.find('<'), lines.size()));
        while (!lines.empty() && !m_isInRoot && !m_isOver) {
            m_hasBegun = true;
            const std::string_view line = lines.substr(0, lines.find('\n'));
            m_isOver = line.size() > kMaxLineChars;
            m_isInRoot = cutAtZeroByte(line).find(m_opening) != std::string_view::npos;
            lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        }
        return lines;
    }

    std::string_view m_rootName;
    std::string m_opening;
    std::size_t m_arrived = 0;  ///< bytes that were there the last time
    std::size_t m_begin = 0;    ///< of the first line not yet worked on
    std::size_t m_size = 0;
    bool m_hasBegun = false;  ///< with the file's first "<"
    bool m_isInRoot = false;
    bool m_isOver = false;  ///< the root was closed, or a line is too long
};

}  // namespace

std::optional<DocumentText> readDocumentText(const char* file, std::string_view rootName) {
    TextBuilder builder(rootName);
    std::optional<FileBytes> read = readRegularFile(
        file, kMaxFileBytes, [&](const FileBytes& soFar) { builder.take(soFar, false); });
    if (!read || read->size == 0) return std::nullopt;
    builder.take(*read, true);
    DocumentText document{std::move(read->bytes), builder.size()};
    document.text[document.size] = '\0';
    return document;
}

}  // namespace dax

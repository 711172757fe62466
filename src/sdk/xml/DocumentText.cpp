// Joins a file's lines and takes out its comments in the memory the file is read into, and while it
// arrives: a text of many megabytes is gone through once.
#include "sdk/xml/DocumentText.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "sdk/base/FileRead.h"
#include "sdk/xml/ByteScan.h"
#include "sdk/xml/FrontMove.h"
#include "sdk/xml/TagSearch.h"
#include "sdk/xml/XmlComments.h"

namespace dax {

namespace {

// The reader keeps a file's length less one in 32 signed bits.
constexpr std::size_t kMaxFileBytes = std::size_t{1} << 31;

// A text is worked on in pieces that stay in the processor's nearest memory from one look at them
// to the next.
constexpr std::size_t kPieceBytes = 32768;

/// The part of a text before the first line that holds the root's closing tag, before that line's
/// first zero byte if it has one; all of it when there is none. Of a line that is too long to be
/// read so much is left that it still is too long.
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
/// when it ended early, at a line that is too long. `end` is where what may be read ends;
/// `isPlain` says that there is neither a zero byte nor a carriage return.
bool joinLines(std::string_view text, const char* end, bool isPlain, char*& to) {
    const bool hasZeroBytes = !isPlain && text.find('\0') != std::string_view::npos;
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
    const bool isWhole = visitBytes<'\n'>(text, join) && join(text.size());
    to = next;
    if (!isPlain) replaceCarriageReturns(first, to);
    return isWhole;
}

/// The lines at the beginning of `text` that together have about kPieceBytes.
std::string_view firstPiece(std::string_view text) {
    if (text.size() <= kPieceBytes) return text;
    return text.substr(0, text.find('\n', kPieceBytes));
}

/// How many bytes there are up to the last line feed and with it.
std::size_t bytesOfLines(std::string_view text) {
    const std::size_t feed = text.rfind('\n');
    return feed == std::string_view::npos ? 0 : feed + 1;
}

enum class Comments { kTakeOut, kLeave };

/// Makes a file's bytes the document's text, in place and while they arrive: what is written always
/// lies before what is still to be looked at.
class TextBuilder {
public:
    TextBuilder(std::string_view rootName, Comments comments)
        : m_rootName(rootName),
          // Deliberate: without ">", so the root's opening tag may carry attributes.
          m_opening("<" + std::string(rootName)),
          m_comments(comments) {}

    /// Works on the lines that are complete by now; at the end, on all that are left. Leaves the
    /// text, and the beginning of a line that is not complete.
    void take(FileBytes& file, bool isEnd) {
        char* const text = file.bytes.get();
        std::string_view bytes(text + m_size, file.size - m_size);
        if (!m_hasBegun) bytes.remove_prefix(std::min(bytes.find('<'), bytes.size()));
        m_hasBegun = m_hasBegun || !bytes.empty();
        const std::size_t complete = isEnd ? bytes.size() : bytesOfLines(bytes);
        const std::string_view rest = bytes.substr(complete);
        takeLines(bytes.substr(0, complete), file);
        if (isEnd) removeComments(text, m_size, true);
        m_isOver = m_isOver || rest.size() > kMaxLineChars;
        file.size = m_size;
        if (m_isOver) return;
        std::memmove(text + m_size, rest.data(), rest.size());
        file.size += rest.size();
    }

    /// What became of it, once the end was taken.
    DocumentText document(FileBytes& file) const {
        const bool pairUp = m_comments == Comments::kTakeOut && m_remover.pairUp();
        DocumentText document{std::move(file.bytes), m_size, m_joinedSize, pairUp};
        document.text[document.size] = '\0';
        return document;
    }

private:
    void takeLines(std::string_view lines, const FileBytes& file) {
        char* const text = file.bytes.get();
        char* const end = text + file.size;
        if (!m_isInRoot) lines = behindOpeningLine(lines);
        // One look for both, ended by a zero byte of our own: hardly any file has one.
        *end = '\0';
        const bool isPlain = strchrnul(lines.data(), '\r') == end;
        while (!lines.empty() && !m_isOver) {
            const std::string_view piece = firstPiece(lines);
            const std::string_view content = beforeClosingLine(piece, m_rootName);
            char* to = text + m_size;
            m_isOver = !joinLines(content, end, isPlain, to) || content.size() < piece.size();
            const auto size = static_cast<std::size_t>(to - text);
            m_joinedSize += size - m_size;
            removeComments(text, size, false);
            lines.remove_prefix(std::min(piece.size() + 1, lines.size()));
        }
    }

    void removeComments(char* text, std::size_t size, bool isEnd) {
        m_size = m_comments == Comments::kTakeOut ? m_remover.take(text, size, isEnd) : size;
    }

    /// What follows the line that holds the root's opening tag; nothing while there is none.
    std::string_view behindOpeningLine(std::string_view lines) {
        while (!lines.empty() && !m_isInRoot && !m_isOver) {
            const std::string_view line = lines.substr(0, lines.find('\n'));
            m_isOver = line.size() > kMaxLineChars;
            m_isInRoot = cutAtZeroByte(line).find(m_opening) != std::string_view::npos;
            lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        }
        return lines;
    }

    std::string_view m_rootName;
    std::string m_opening;
    Comments m_comments;
    CommentRemover m_remover;
    std::size_t m_size = 0;  ///< of the text so far
    std::size_t m_joinedSize = 0;
    bool m_hasBegun = false;  ///< with the file's first "<"
    bool m_isInRoot = false;
    bool m_isOver = false;  ///< the root was closed, or a line is too long
};

std::optional<DocumentText> readText(const char* file, std::string_view rootName,
                                     Comments comments) {
    TextBuilder builder(rootName, comments);
    bool isEmpty = true;
    std::optional<FileBytes> read = readRegularFile(file, kMaxFileBytes, [&](FileBytes& soFar) {
        isEmpty = false;
        builder.take(soFar, false);
    });
    if (!read || isEmpty) return std::nullopt;
    builder.take(*read, true);
    return builder.document(*read);
}

}  // namespace

std::optional<DocumentText> readDocumentText(const char* file, std::string_view rootName) {
    std::optional<DocumentText> document = readText(file, rootName, Comments::kTakeOut);
    if (!document || document->commentsPairUp) return document;
    // Rare, so the comments were not kept for this.
    document.reset();
    return readText(file, rootName, Comments::kLeave);
}

}  // namespace dax

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

/// The lines of a text, each without its line feed, up to the first line that is too long.
class Lines {
public:
    explicit Lines(std::string_view text) : m_text(text), m_feeds(text) {}

    bool next(std::string_view& line) {
        if (m_begin >= m_text.size()) return false;
        const std::size_t feed = m_feeds.next();
        if (feed - m_begin > kMaxLineChars) return false;
        line = std::string_view(m_text.data() + m_begin, feed - m_begin);
        m_begin = feed + 1;
        return true;
    }

    /// What follows the lines handed out.
    std::string_view rest() const { return m_text.substr(std::min(m_begin, m_text.size())); }

private:
    std::string_view m_text;
    RunScan<'\n', Run::kOne> m_feeds;
    std::size_t m_begin = 0;
};

/// The part of a text before the first line that holds the root's closing tag, before that line's
/// first zero byte if it has one; all of it when there is none. When the line is too long to be
/// read it is there up to the tag, too long still.
std::string_view beforeClosingLine(std::string_view text, std::string_view rootName) {
    constexpr std::string_view kLineEnds("\n\0", 2);
    const std::size_t tag = tagLength(rootName, TagKind::kClosing);
    for (std::size_t at = 0;; ++at) {
        at = findTag(text, rootName, TagKind::kClosing, at, text.size());
        if (at == kNoTag) return text;
        // No further back than a line can reach: this is asked once for every tag.
        const std::size_t searched = at - std::min(at, kMaxLineChars + 1);
        const std::size_t feed = text.substr(searched, at - searched).rfind('\n');
        if (feed == std::string_view::npos && searched > 0) return text.substr(0, at);
        const std::size_t begin = feed == std::string_view::npos ? 0 : searched + feed + 1;
        if (text.substr(begin, at + tag - begin).find_first_of(kLineEnds) == std::string_view::npos)
            return text.substr(0, begin);
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

void replaceCarriageReturns(char* at, const char* end) {
    while (void* const found = std::memchr(at, '\r', static_cast<std::size_t>(end - at))) {
        at = static_cast<char*>(found);
        *at++ = '\n';
    }
}

std::string_view cutAtZeroByte(std::string_view line) {
    return line.substr(0, std::min(line.find('\0'), line.size()));
}

}  // namespace

std::optional<DocumentText> readDocumentText(const char* file, std::string_view rootName) {
    std::optional<FileBytes> read = readRegularFile(file, kMaxFileBytes);
    if (!read || read->size == 0) return std::nullopt;

    DocumentText document;
    document.text = std::move(read->bytes);
    char* const out = document.text.get();
    const std::string_view bytes(out, read->size);
    const bool hasZeroBytes = bytes.find('\0') != std::string_view::npos;

    Lines head(bytes.substr(std::min(bytes.find('<'), bytes.size())));
    std::string_view line;
    // Deliberate: without ">", so the root's opening tag may carry attributes.
    const std::string rootMarker = "<" + std::string(rootName);
    bool isInRoot = false;
    while (!isInRoot && head.next(line))
        isInRoot = cutAtZeroByte(line).find(rootMarker) != std::string_view::npos;

    if (isInRoot) {
        // Joined in place: what is written always lies before what is still to be read.
        Lines content(beforeClosingLine(head.rest(), rootName));
        std::size_t size = 0;
        while (content.next(line)) {
            if (hasZeroBytes) line = cutAtZeroByte(line);
            moveToFront(out + size, line, bytes.data() + bytes.size());
            size += line.size();
        }
        document.size = size;
    }
    out[document.size] = '\0';
    replaceCarriageReturns(out, out + document.size);
    return document;
}

}  // namespace dax

// From a file's bytes to a document's text, one step after the other, all in the memory that the
// file was read into: what is written always lies before what is still to be looked at.
#include "sdk/xml/DocumentText.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "sdk/xml/ByteScan.h"
#include "sdk/xml/CopyDown.h"
#include "sdk/xml/TagSearch.h"
#include "sdk/xml/XmlComments.h"

namespace dax {

namespace {

// The reader keeps a file's length less one in 32 signed bits.
constexpr std::size_t kMaxFileBytes = std::size_t{1} << 31;

std::string_view cutAtZeroByte(std::string_view line) {
    return line.substr(0, std::min(line.find('\0'), line.size()));
}

/// What follows the line that holds the root's opening tag: its end when there is none before a
/// line that is too long.
std::string_view behindOpeningLine(std::string_view text, std::string_view rootName) {
    // Deliberate: without ">", so the root's opening tag may carry attributes.
    const std::string opening = "<" + std::string(rootName);
    bool isInRoot = false;
    while (!isInRoot && !text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (line.size() > kMaxLineChars) return text.substr(text.size());
        isInRoot = cutAtZeroByte(line).find(opening) != std::string_view::npos;
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return text;
}

/// What comes before the first line that holds the root's closing tag, before that line's first
/// zero byte if it has one; all of it when there is none.
std::string_view beforeClosingLine(std::string_view text, std::string_view rootName) {
    for (std::size_t at = 0;; ++at) {
        at = findTag(text, rootName, TagKind::kClosing, at, text.size());
        if (at == kNoTag) return text;
        const std::size_t feed = text.rfind('\n', at);
        const std::size_t begin = feed == std::string_view::npos ? 0 : feed + 1;
        if (text.substr(begin, at - begin).find('\0') == std::string_view::npos)
            return text.substr(0, begin);
        // Nothing in the rest of that line counts.
        at = std::min(text.find('\n', at), text.size());
    }
}

/// Copies the lines of `text` to `to`, at most its start, one right behind the other and up to the
/// first that is too long. How many bytes that are. `end` is where what may be read ends.
std::size_t joinLines(char* to, std::string_view text, const char* end) {
    const bool hasZeroBytes = text.find('\0') != std::string_view::npos;
    char* next = to;
    std::size_t begin = 0;
    const auto join = [&](std::size_t feed) {
        if (feed - begin > kMaxLineChars) return false;
        std::string_view line(text.data() + begin, feed - begin);
        if (hasZeroBytes) line = cutAtZeroByte(line);
        copyDown(next, line, end);
        next += line.size();
        begin = feed + 1;
        return true;
    };
    if (visitBytes(text, '\n', join)) join(text.size());
    return static_cast<std::size_t>(next - to);
}

void replaceCarriageReturns(char* text, std::size_t size) {
    char* const end = text + size;
    while (void* const found = std::memchr(text, '\r', static_cast<std::size_t>(end - text))) {
        text = static_cast<char*>(found);
        *text = '\n';
    }
}

}  // namespace

DocumentText documentText(FileBytes file, std::string_view rootName) {
    char* const text = file.bytes.get();
    const std::string_view bytes(text, file.size);
    const std::string_view content = beforeClosingLine(
        behindOpeningLine(bytes.substr(std::min(bytes.find('<'), bytes.size())), rootName),
        rootName);
    DocumentText document;
    document.joinedSize = joinLines(text, content, text + file.size);
    replaceCarriageReturns(text, document.joinedSize);
    const auto left = removeComments(text, document.joinedSize);
    document.commentsPairUp = left.has_value();
    document.size = left.value_or(document.joinedSize);
    text[document.size] = '\0';
    document.text = std::move(file.bytes);
    return document;
}

std::optional<DocumentText> readDocumentText(const char* file, std::string_view rootName) {
    std::optional<FileBytes> bytes = readRegularFile(file, kMaxFileBytes);
    if (!bytes || bytes->size == 0) return std::nullopt;
    return documentText(*std::move(bytes), rootName);
}

}  // namespace dax

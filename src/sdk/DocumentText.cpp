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

// A text is worked on in pieces that stay in the processor's nearest memory from one look at them to
// the next.
constexpr std::size_t kPieceBytes = 16384;

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

std::string_view cutAtZeroByte(std::string_view line) {
    return line.substr(0, std::min(line.find('\0'), line.size()));
}

/// What follows the first line that contains the root's opening tag; nothing when none does before
/// a line that is too long.
std::optional<std::string_view> behindOpeningLine(std::string_view text,
                                                  std::string_view rootName) {
    // Deliberate: without ">", so the root's opening tag may carry attributes.
    const std::string marker = "<" + std::string(rootName);
    text.remove_prefix(std::min(text.find('<'), text.size()));
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (line.size() > kMaxLineChars) break;
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (cutAtZeroByte(line).find(marker) != std::string_view::npos) return text;
    }
    return std::nullopt;
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

}  // namespace

std::optional<DocumentText> readDocumentText(const char* file, std::string_view rootName) {
    std::optional<FileBytes> read = readRegularFile(file, kMaxFileBytes);
    if (!read || read->size == 0) return std::nullopt;

    DocumentText document;
    document.text = std::move(read->bytes);
    const std::string_view bytes(document.text.get(), read->size);
    // Joined in place: what is written always lies before what is still to be read.
    char* to = document.text.get();
    std::string_view rest = behindOpeningLine(bytes, rootName).value_or(std::string_view());
    while (!rest.empty()) {
        const std::string_view piece = firstPiece(rest);
        const std::string_view lines = beforeClosingLine(piece, rootName);
        if (!joinLines(lines, bytes.data() + bytes.size(), to) || lines.size() < piece.size())
            break;
        rest.remove_prefix(std::min(piece.size() + 1, rest.size()));
    }
    *to = '\0';
    document.size = static_cast<std::size_t>(to - document.text.get());
    return document;
}

}  // namespace dax

// The text of an XML file between the lines of its root element: its lines joined, its comments
// taken out. Knows tags only as far as the root's two lines go.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>

#include "sdk/base/FileRead.h"

namespace dax {

struct DocumentText {
    std::unique_ptr<char[]> text;  ///< zero-terminated, without another zero byte
    std::size_t size = 0;          ///< bytes before the terminator
    std::size_t joinedSize = 0;    ///< bytes that there were with the comments
    bool commentsPairUp = true;    ///< else the comments are still in the text
};

/// Longest line, in characters without its line feed, that is still read.
constexpr std::size_t kMaxLineChars = 4095;

/// The lines strictly between the first line that contains "<rootName" and the next that contains
/// "</rootName>", or all lines after the first when there is no such end; line feeds are left out
/// and carriage returns become line feeds. Reading begins at the first "<" and ends for good at a
/// line of more than kMaxLineChars; a line ends at its first zero byte. Empty when no line contains
/// "<rootName". Works in the memory of `file` and changes nothing else in the process.
DocumentText documentText(FileBytes file, std::string_view rootName);

/// The same of a file, which is read once. Nothing when it is empty, is no regular file, has more
/// than 2^31 bytes or cannot be read.
std::optional<DocumentText> readDocumentText(const char* file, std::string_view rootName);

}  // namespace dax

// Makes bytes that others supplied (a camera, a server, a medium, a description) fit to be shown or
// put into a JSON document.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace thermika::cli {

/// Whether the environment's locale has UTF-8. The process's own locale stays "C".
bool isUtf8Locale();

/// `bytes` without anything that a terminal acts on: every control character, every character that
/// changes the direction or the line, and every byte that is no UTF-8 becomes "\xHH" for each of
/// its bytes, and "\" becomes "\\". Without `keepUtf8` every byte that is not ASCII, too.
std::string escaped(std::string_view bytes, bool keepUtf8);

/// The same as the environment's locale wants it.
std::string shown(std::string_view bytes);

/// Whether shown() changes nothing, but for every "\".
bool isShownAsItIs(std::string_view bytes);

/// `bytes` as UTF-8 from which they can be had back: a byte XX that is no UTF-8 becomes the
/// character U+10FEXX. So does each byte of such a character itself.
std::string losslessUtf8(std::string_view bytes);

/// How many columns a terminal needs for what shown() returned.
std::size_t columnsOf(std::string_view text);

/// How many bytes of it, whole characters, go into so many columns.
std::size_t bytesWithin(std::string_view text, std::size_t columns);

/// At most so many bytes of `text`, whole characters, and "..." when that is not all.
std::string shortened(std::string_view text, std::size_t most);

}  // namespace thermika::cli

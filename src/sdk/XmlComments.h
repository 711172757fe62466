// Taking the comments out of a text. Comments may be nested: one goes with all it holds.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace dax {

/// Removes every comment from the `size` bytes of `text` in place and answers how many bytes are
/// left. Nothing, and the text unchanged, when a "-->" has no "<!--" before it or a "<!--" is never
/// closed.
std::optional<std::size_t> removeComments(char* text, std::size_t size);

}  // namespace dax

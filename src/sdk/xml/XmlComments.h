// Removes the comments from a text. Comments may be nested: one is removed together with the
// comments inside it.
#pragma once

#include <cstddef>
#include <optional>

namespace dax {

/// Removes every comment of the `size` bytes of `text`, in place; how many bytes are left. Nothing,
/// and the text stays as it is, when a "-->" has no "<!--" before it or a "<!--" is never closed. A
/// "-->" right behind another one does not count, and stays. A "-->" that ends where a "<!--"
/// begins comes before it.
std::optional<std::size_t> removeComments(char* text, std::size_t size);

}  // namespace dax

// Composes text in a buffer of fixed size, as snprintf would but quicker.
#pragma once

#include <cstddef>
#include <string_view>

namespace dax {

class BoundedText {
public:
    /// Writes to the `bytes` bytes of `out` alone, which hold a terminated text at any time; none
    /// when `bytes` is 0.
    BoundedText(char* out, std::size_t bytes);

    /// Adds the piece, or as much of it as there is room for before the terminator.
    BoundedText& append(std::string_view piece);
    BoundedText& append(char character);
    BoundedText& append(int number);

    /// Where the terminator is.
    const char* end() const { return m_end; }

private:
    char* m_end;
    std::size_t m_room;  ///< characters that can still be added
};

/// Prints `name` into the `bytes` bytes of `out`, at least one, as printf's `format` for one string
/// says, cut to them. How many characters that are.
std::size_t printName(char* out, std::size_t bytes, const char* format, const char* name);

}  // namespace dax

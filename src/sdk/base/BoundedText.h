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

private:
    char* m_end;
    std::size_t m_room;  ///< characters that can still be added
};

}  // namespace dax

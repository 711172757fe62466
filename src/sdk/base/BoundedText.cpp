// Cuts every piece to the room that is left.
#include "sdk/base/BoundedText.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace dax {

namespace {

constexpr std::size_t kNumberChars = std::numeric_limits<int>::digits10 + 2;  // with its sign

}  // namespace

BoundedText::BoundedText(char* out, std::size_t bytes)
    : m_end(out), m_room(bytes == 0 ? 0 : bytes - 1) {
    if (bytes != 0) *m_end = '\0';
}

BoundedText& BoundedText::append(std::string_view piece) {
    const std::size_t count = std::min(piece.size(), m_room);
    if (count == 0) return *this;
    m_end = std::copy_n(piece.data(), count, m_end);
    m_room -= count;
    *m_end = '\0';
    return *this;
}

BoundedText& BoundedText::append(char character) { return append({&character, 1}); }

BoundedText& BoundedText::append(int number) {
    char digits[kNumberChars];
    const char* const end = std::to_chars(digits, digits + kNumberChars, number).ptr;
    return append({digits, static_cast<std::size_t>(end - digits)});
}

}  // namespace dax

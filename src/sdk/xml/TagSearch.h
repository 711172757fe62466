// Finding the literal tags "<name>" and "</name>" in a text. A substring search: knows nothing of
// nesting, attributes or comments.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace dax {

constexpr std::size_t kNoTag = static_cast<std::size_t>(-1);

/// What stands before the name.
enum class TagKind : int { kOpening, kClosing };

/// Characters of the whole tag.
constexpr std::size_t tagLength(std::string_view name, TagKind kind) {
    return name.size() + (kind == TagKind::kOpening ? 2 : 3);
}

/// Whether both begin with the same `kBytes` bytes and end with the same, which may overlap.
template <std::size_t kBytes>
bool endsMatch(const char* a, const char* b, std::size_t size) {
    return std::memcmp(a, b, kBytes) == 0 &&
           std::memcmp(a + size - kBytes, b + size - kBytes, kBytes) == 0;
}

/// Whether `name` stands at `at`. Names are short: comparing them in a few pieces of fixed size is
/// quicker than a call of memcmp(), and than a loop whose end the processor cannot foresee.
inline bool isNameAt(const char* at, std::string_view name) {
    if (name.size() > 16) return std::memcmp(at, name.data(), name.size()) == 0;
    if (name.size() >= 8) return endsMatch<8>(at, name.data(), name.size());
    if (name.size() >= 4) return endsMatch<4>(at, name.data(), name.size());
    if (name.size() >= 2) return endsMatch<2>(at, name.data(), name.size());
    return name.empty() || *at == name.front();
}

/// Whether the tag stands at `at`, which has room for it and holds a "<".
inline bool isTagAt(const char* at, std::string_view name, TagKind kind) {
    const std::size_t before = kind == TagKind::kOpening ? 1 : 2;
    return at[before + name.size()] == '>' && (before == 1 || at[1] == '/') &&
           isNameAt(at + before, name);
}

/// Offset of the first such tag that begins at `from` or later and before `limit`, kNoTag when
/// there is none. Reads nothing of `text` from `limit` + tagLength() - 1 on.
std::size_t findTag(std::string_view text, std::string_view name, TagKind kind, std::size_t from,
                    std::size_t limit);

}  // namespace dax

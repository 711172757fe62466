// Finds a tag by a look at every "<" of the text.
#include "sdk/xml/TagSearch.h"

#include <algorithm>

#include "sdk/xml/ByteScan.h"

namespace dax {

std::size_t findTag(std::string_view text, std::string_view name, TagKind kind, std::size_t from,
                    std::size_t limit) {
    const std::size_t length = tagLength(name, kind);
    if (text.size() < length) return kNoTag;
    limit = std::min(limit, text.size() - length + 1);  // behind it no tag has room
    if (from >= limit) return kNoTag;
    // A tag's last two bytes are rarer than its first: few places are looked at closely.
    const char last = !name.empty() ? name.back() : kind == TagKind::kOpening ? '<' : '/';
    std::size_t found = kNoTag;
    visitPairs(text.substr(from + length - 2, limit - from + 1), last, '>', [&](std::size_t place) {
        if (text[from + place] != '<' || !isTagAt(text.data() + from + place, name, kind))
            return true;
        found = from + place;
        return false;
    });
    return found;
}

}  // namespace dax

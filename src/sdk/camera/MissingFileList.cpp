// Bounds first, then bytes: every length is checked before it is used.
#include "sdk/camera/MissingFileList.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace dax {

MissingFileList::MissingFileList(char* list, int* size)
    : m_list(list), m_size(size), m_used(list == nullptr ? 0 : std::strlen(list)) {}

MissingFileList::MissingFileList(std::string& list) : m_text(&list) {}

void MissingFileList::add(std::string_view name, std::string_view separator) {
    append(name);
    append(separator);
}

// Deliberate: the size told is one byte less than the list takes, for whatever separator.
void MissingFileList::addDescription(std::string_view name, std::string_view separator) {
    if (m_text != nullptr) {
        add(name, separator);
    } else if (m_list != nullptr) {
        append(name);
        append(separator.substr(0, bound() - std::min(m_used, bound())));
    } else if (!name.empty()) {
        count(name.size() + 1);
    }
}

void MissingFileList::end() {
    if (isCounting()) count(1);
}

bool MissingFileList::isEmpty() const {
    if (m_text != nullptr) return m_text->empty();
    return isCounting() ? *m_size == 0 : m_used == 0;
}

bool MissingFileList::isCounting() const { return m_text == nullptr && m_list == nullptr; }

void MissingFileList::append(std::string_view piece) {
    if (m_text != nullptr) {
        m_text->append(piece);
        return;
    }
    if (m_list == nullptr) {
        count(piece.size());
        return;
    }
    // Deliberate: a piece is bounded by the whole size, not by the room that is left, so only a
    // buffer that holds all pieces may be handed in from outside.
    const std::size_t taken = std::min(piece.size(), bound());
    std::memcpy(m_list + m_used, piece.data(), taken);
    m_used += taken;
    m_list[m_used] = '\0';
}

std::size_t MissingFileList::bound() const {
    return static_cast<std::size_t>(std::max(*m_size, 0));
}

void MissingFileList::count(std::size_t bytes) {
    const std::size_t room = std::numeric_limits<int>::max() - bound();
    *m_size += static_cast<int>(std::min(bytes, room));
}

}  // namespace dax

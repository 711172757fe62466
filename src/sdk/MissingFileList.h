// The list of missing files as callers of the file check hold it: first only its size is counted,
// then a buffer is filled.
#pragma once

#include <cstddef>
#include <limits>
#include <string_view>

namespace dax {

class MissingFileList {
public:
    static constexpr std::size_t kTrusted = std::numeric_limits<std::size_t>::max();

    /// Counts into `*size` when `list` is null. Otherwise appends to the terminated text in `list`,
    /// of each piece at most `*size` characters, and never more than `capacity` characters in all:
    /// a list that is kTrusted has to have room for whatever is recorded.
    MissingFileList(char* list, int* size, std::size_t capacity = kTrusted);

    /// Records `name` and the `separator` after it.
    void add(std::string_view name, std::string_view separator);

    /// Records the only file of a list: `name` and the `separator`, `*size` characters at most. A
    /// count has one byte for the separator, whatever it is, and none for the terminator.
    void addDescription(std::string_view name, std::string_view separator);

    /// Nothing more is recorded: a count gets the terminator's byte.
    void end();

    /// Whether nothing was recorded, neither now nor before.
    bool isEmpty() const;

private:
    void append(std::string_view piece);
    void count(std::size_t bytes);
    std::size_t bound() const;

    char* m_list;
    int* m_size;
    std::size_t m_capacity;
    std::size_t m_used;  ///< characters in the list
};

}  // namespace dax

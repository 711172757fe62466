// The list of missing files: as callers of the file check hold it, who first have its size counted
// and then a buffer filled; or as a text that grows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dax {

class MissingFileList {
public:
    /// Counts into `*size` when `list` is null. Otherwise appends to the terminated text in `list`,
    /// which has room for whatever is recorded, of each piece at most `*size` characters.
    MissingFileList(char* list, int* size);

    /// Appends to `list`, every piece whole.
    explicit MissingFileList(std::string& list);

    /// Records `name` and the `separator` after it.
    void add(std::string_view name, std::string_view separator);

    /// Records the only file of a list: `name` and the `separator`, in a buffer `*size` characters
    /// at most. A count has one byte for the separator, whatever it is, and none for the
    /// terminator.
    void addDescription(std::string_view name, std::string_view separator);

    /// Nothing more is recorded: a count gets the terminator's byte.
    void end();

    /// Whether nothing was recorded, neither now nor before.
    bool isEmpty() const;

private:
    bool isCounting() const;
    void append(std::string_view piece);
    void count(std::size_t bytes);
    std::size_t bound() const;

    std::string* m_text = nullptr;  ///< null: a buffer is filled, or its size counted
    char* m_list = nullptr;
    int* m_size = nullptr;
    std::size_t m_used = 0;  ///< characters in the buffer
};

}  // namespace dax

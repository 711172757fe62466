// Taking the comments out of a text while it arrives. Comments may be nested: one goes with all it
// holds. A "-->" that ends where a "<!--" begins comes before it.
#pragma once

#include <cstddef>

namespace dax {

class CommentRemover {
public:
    /// `text` has `size` bytes: those that the last call left, unchanged, and more behind them.
    /// Takes the comments out in place and answers how many bytes are left, of which the last few
    /// may belong to a comment that has not ended. `isEnd`: nothing more will come.
    std::size_t take(char* text, std::size_t size, bool isEnd);

    /// Whether every "-->" had a "<!--" before it and every "<!--" was closed; a "-->" right behind
    /// another one does not count, and stays. When not, what was left is of no use.
    bool pairUp() const { return m_allOpened && m_nesting == 0; }

private:
    std::size_t m_next = 0;         ///< place from which "--" is still to be looked for
    std::size_t m_nextClosing = 0;  ///< first place where a delimiter counts again
    std::size_t m_begin = 0;        ///< of the outermost comment that is open
    std::size_t m_nesting = 0;      ///< comments that are open
    bool m_allOpened = true;
};

}  // namespace dax

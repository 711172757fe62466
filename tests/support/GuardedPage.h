// Texts that lie right before memory that cannot be read: who looks beyond their end is ended.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

namespace thermika_test {

/// One page whose last byte is followed by memory that cannot be read.
class GuardedPage {
public:
    GuardedPage() : m_size(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
        void* const pages =
            mmap(nullptr, 2 * m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (pages == MAP_FAILED) throw std::bad_alloc();
        m_begin = static_cast<char*>(pages);
        mprotect(m_begin + m_size, m_size, PROT_NONE);
    }
    ~GuardedPage() { munmap(m_begin, 2 * m_size); }
    GuardedPage(const GuardedPage&) = delete;
    GuardedPage& operator=(const GuardedPage&) = delete;

    /// The same bytes at the page's end, a page at most; what lay there before is gone.
    std::string_view put(std::string_view text) {
        char* const at = m_begin + m_size - text.size();
        if (!text.empty()) std::memcpy(at, text.data(), text.size());
        return {at, text.size()};
    }

private:
    std::size_t m_size;
    char* m_begin = nullptr;
};

}  // namespace thermika_test

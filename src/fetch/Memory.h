// Functions of C tell in their answer that memory ran out; the callers here expect it as C++ says.
#pragma once

#include <new>

namespace thermika::fetch {

/// Throws std::bad_alloc when there is none.
inline void ensureMemory(bool isThere) {
    if (!isThere) throw std::bad_alloc();
}

}  // namespace thermika::fetch

// See the header. In a file of its own, so that the compiler does not look into operator delete
// where it knows what operator new returned.
#include "support/FailingNew.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

using thermika_test::Failure;

thread_local Failure g_failure = Failure::kNone;
thread_local int g_allocationsLeft = 0;  // before the one that fails

void failIfTold() {
    if (g_failure == Failure::kNone) return;
    if (g_allocationsLeft > 0) {
        --g_allocationsLeft;
        return;
    }
    switch (std::exchange(g_failure, Failure::kNone)) {
        case Failure::kThrowsText:
            throw "no memory for this";
        case Failure::kThrowsNumber:
            throw 7;
        default:
            throw std::bad_alloc();
    }
}

}  // namespace

// NOLINTBEGIN(cppcoreguidelines-no-malloc): below operator new there is nothing else.
void* operator new(std::size_t bytes) {
    failIfTold();
    void* const memory = std::malloc(bytes == 0 ? 1 : bytes);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

// All forms, as sanitizers compare what allocates with what frees.
void* operator new[](std::size_t bytes) { return operator new(bytes); }

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    try {
        return operator new(bytes);
    } catch (...) {
        return nullptr;
    }
}

void* operator new[](std::size_t bytes, const std::nothrow_t& tag) noexcept {
    return operator new(bytes, tag);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
// NOLINTEND(cppcoreguidelines-no-malloc)

namespace thermika_test {

FailingNew::FailingNew(Failure failure, int skipped) {
    g_allocationsLeft = skipped;
    g_failure = failure;
}

FailingNew::~FailingNew() { g_failure = Failure::kNone; }

bool FailingNew::hasFailed() const { return g_failure == Failure::kNone; }

}  // namespace thermika_test

// Allocations that fail when a test wants it. Replaces operator new for the whole executable, so
// that only executables made for this have FailingNew.cpp among their sources.
#pragma once

namespace thermika_test {

enum class Failure { kNone, kThrowsText, kThrowsNumber, kThrowsBadAlloc };

/// While it lives, the thread's allocation after `skipped` more fails; others before and after it
/// don't.
class FailingNew {
public:
    explicit FailingNew(Failure failure, int skipped = 0);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    bool hasFailed() const;
};

}  // namespace thermika_test

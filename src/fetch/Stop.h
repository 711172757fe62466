// Whether a call shall end before its work is done: cancelled by its caller, or out of time.
#pragma once

#include <atomic>
#include <chrono>
#include <string>

namespace thermika::fetch {

class Stop {
public:
    using Clock = std::chrono::steady_clock;

    /// `total` 0: no limit. `cancel` may be null.
    Stop(std::chrono::seconds total, const std::atomic<bool>* cancel)
        : m_total(total), m_cancel(cancel) {}

    bool isDue() const { return isCancelled() || isOutOfTime(); }

    /// In words; "" while it is not due.
    std::string reason() const {
        if (isCancelled()) return "cancelled";
        if (isOutOfTime())
            return "the time limit of " + std::to_string(m_total.count()) + " s is over";
        return "";
    }

private:
    bool isCancelled() const { return m_cancel != nullptr && *m_cancel; }
    bool isOutOfTime() const { return m_total.count() > 0 && Clock::now() - m_start >= m_total; }

    Clock::time_point m_start = Clock::now();
    std::chrono::seconds m_total;
    const std::atomic<bool>* m_cancel;
};

}  // namespace thermika::fetch

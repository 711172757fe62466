// Many requests, some of them at a time: connections that are used again, second tries after a
// pause, and an end in time. Knows nothing of files.
#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "fetch/Fetch.h"
#include "fetch/HttpTransfer.h"
#include "fetch/MultiHandle.h"
#include "fetch/SpareSockets.h"
#include "fetch/Stop.h"

namespace thermika::fetch {

/// What is to be asked for, and who takes the answer.
struct HttpItem {
    std::string address;
    std::uint64_t maxBytes = 0;
    std::unique_ptr<Body> body;
};

/// Whoever wants answers. What it throws comes out of HttpQueue::run().
class HttpClient {
public:
    HttpClient() = default;
    virtual ~HttpClient() = default;
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    /// The next thing to ask for; nothing when there is none. Items are numbered from 0 on.
    virtual std::optional<HttpItem> next() = 0;
    /// The last answer for an item, after so many tries; 0 when the server cannot be reached
    /// anyway.
    virtual void end(std::size_t number, HttpItem& item, const Answer& answer, unsigned tries) = 0;
    /// Called often.
    virtual void tick() = 0;
};

class HttpQueue {
public:
    /// All outlive it. Throws std::bad_alloc.
    HttpQueue(const Limits& limits, const std::string& caFile, const Stop& stop);
    ~HttpQueue();
    HttpQueue(const HttpQueue&) = delete;
    HttpQueue& operator=(const HttpQueue&) = delete;

    /// Serves the client until there is no next item, or `stop` is due: items then have no end.
    /// With `connectsAhead`, the connections that its first items leave unused are opened
    /// meanwhile, to the same server: the next run finds them.
    void run(HttpClient& client, bool connectsAhead = false);

private:
    struct Job {
        HttpItem item;
        std::size_t number = 0;
        unsigned tries = 0;
        Stop::Clock::time_point due;
    };
    struct Slot {
        Slot(const Limits& limits, const std::string& caFile, SpareSockets& spares)
            : transfer(limits, caFile, spares) {}

        HttpTransfer transfer;
        std::optional<Job> job;
    };

    void startWhatCan(HttpClient& client);
    std::optional<Job> nextJob(HttpClient& client);
    void start(Slot& slot, Job job);
    void collect(HttpClient& client);
    void settle(HttpClient& client, Job job, const Answer& answer);
    void abandon();
    std::size_t freeSlots() const;
    bool isTransferring() const;
    bool isBusy() const;
    /// Whether the server may be one that cannot be reached: nothing more is begun until it is
    /// known.
    bool isInDoubt() const;
    int waitMs() const;

    const Limits& m_limits;
    const Stop& m_stop;
    SpareSockets m_spares;
    MultiHandle m_multi;
    std::deque<Slot> m_slots;
    std::deque<Job> m_waiting;  ///< for another try; the first is due first
    std::size_t m_begun = 0;
    bool m_isExhausted = false;  ///< the client has no next item
    bool m_hasBeenReached = false;
    /// What every item is answered from now on, unless one that is under way gets a better answer.
    std::optional<Answer> m_unreachable;
};

}  // namespace thermika::fetch

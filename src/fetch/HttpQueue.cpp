// One loop over libcurl's transfers. While an item waits for another try, others use its place.
#include "fetch/HttpQueue.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "fetch/Memory.h"
#include "fetch/SigpipeHold.h"

namespace thermika::fetch {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLongestPause{30000};
constexpr milliseconds kLongestWait{100};  // so that a cancelled call ends soon

bool concernsEveryItem(Answer::Verdict verdict) {
    return verdict == Answer::Verdict::kUnreachable || verdict == Answer::Verdict::kUntrusted;
}

milliseconds pauseBefore(unsigned nextTry, milliseconds first) {
    milliseconds pause = std::min(first, kLongestPause);
    for (unsigned i = 2; i < nextTry; ++i) pause = std::min(2 * pause, kLongestPause);
    return pause;
}

}  // namespace

HttpQueue::HttpQueue(const Limits& limits, const std::string& caFile, const Stop& stop)
    : m_limits(limits), m_stop(stop), m_multi(makeMultiHandle()) {
    curl_multi_setopt(m_multi.get(), CURLMOPT_MAXCONNECTS, static_cast<long>(limits.jobs));
    for (unsigned i = 0; i < limits.jobs; ++i) m_slots.emplace_back(limits, caFile, m_spares);
}

HttpQueue::~HttpQueue() { abandon(); }

void HttpQueue::run(HttpClient& client, bool connectsAhead) {
    const SigpipeHold hold;
    m_begun = 0;
    m_isExhausted = false;
    m_hasBeenReached = false;  // these items may be another server's
    m_unreachable.reset();
    startWhatCan(client);
    if (connectsAhead) m_spares.want(freeSlots());
    while (isBusy() && !m_stop.isDue()) {
        int running = 0;
        ensureMemory(curl_multi_perform(m_multi.get(), &running) == CURLM_OK);
        collect(client);
        startWhatCan(client);
        client.tick();
        if (isBusy()) curl_multi_poll(m_multi.get(), nullptr, 0, waitMs(), nullptr);
    }
    abandon();
}

std::size_t HttpQueue::freeSlots() const {
    return static_cast<std::size_t>(
        std::count_if(m_slots.begin(), m_slots.end(), [](const auto& slot) { return !slot.job; }));
}

bool HttpQueue::isTransferring() const { return freeSlots() < m_slots.size(); }

bool HttpQueue::isBusy() const { return !m_waiting.empty() || isTransferring(); }

void HttpQueue::startWhatCan(HttpClient& client) {
    for (Slot& slot : m_slots) {
        if (slot.job) continue;
        std::optional<Job> job = nextJob(client);
        if (!job) return;
        start(slot, std::move(*job));
    }
}

std::optional<HttpQueue::Job> HttpQueue::nextJob(HttpClient& client) {
    if (m_unreachable && isTransferring()) return std::nullopt;
    while (!m_stop.isDue()) {
        std::optional<Job> job;
        const bool isDue = !m_waiting.empty() && m_waiting.front().due <= Stop::Clock::now();
        if (isDue || (m_unreachable && !m_waiting.empty())) {
            job = std::move(m_waiting.front());
            m_waiting.pop_front();
        } else if (!m_isExhausted && !isInDoubt()) {
            if (std::optional<HttpItem> item = client.next())
                job = Job{std::move(*item), m_begun++, 0, {}};
            else
                m_isExhausted = true;
        }
        if (!job || !m_unreachable) return job;
        client.end(job->number, job->item, *m_unreachable, job->tries);
    }
    return std::nullopt;
}

bool HttpQueue::isInDoubt() const { return !m_hasBeenReached && !m_waiting.empty(); }

void HttpQueue::start(Slot& slot, Job job) {
    slot.job = std::move(job);
    ++slot.job->tries;
    slot.transfer.prepare(slot.job->item.address, slot.job->item.maxBytes, *slot.job->item.body);
    ensureMemory(curl_multi_add_handle(m_multi.get(), slot.transfer.handle()) == CURLM_OK);
}

void HttpQueue::collect(HttpClient& client) {
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_multi.get(), &left)) {
        CURL* const handle = message->easy_handle;
        const CURLcode result = message->data.result;  // gone with the handle's removal
        const auto slot = std::find_if(m_slots.begin(), m_slots.end(), [handle](const auto& each) {
            return each.transfer.handle() == handle;
        });
        curl_multi_remove_handle(m_multi.get(), handle);
        Job job = std::move(*slot->job);
        slot->job.reset();
        settle(client, std::move(job), slot->transfer.finish(result));
    }
}

void HttpQueue::settle(HttpClient& client, Job job, const Answer& answer) {
    using Verdict = Answer::Verdict;
    if (!concernsEveryItem(answer.verdict)) {
        m_hasBeenReached = true;
        m_unreachable.reset();
    }
    const bool mayPass =
        answer.verdict == Verdict::kMayPass || answer.verdict == Verdict::kUnreachable;
    if (mayPass && job.tries <= m_limits.retries) {
        job.item.body->discard();
        job.due = Stop::Clock::now() + pauseBefore(job.tries + 1, m_limits.firstPause);
        const auto later = std::find_if(m_waiting.begin(), m_waiting.end(),
                                        [&](const Job& each) { return each.due > job.due; });
        m_waiting.insert(later, std::move(job));
        return;
    }
    // Asking for each of a thousand files would take as many time limits.
    if (concernsEveryItem(answer.verdict) && !m_hasBeenReached) m_unreachable = answer;
    client.end(job.number, job.item, answer, job.tries);
}

void HttpQueue::abandon() {
    for (Slot& slot : m_slots) {
        if (!slot.job) continue;
        curl_multi_remove_handle(m_multi.get(), slot.transfer.handle());
        slot.job.reset();
    }
    m_waiting.clear();
}

int HttpQueue::waitMs() const {
    milliseconds wait = kLongestWait;
    if (!m_waiting.empty()) {
        const auto untilDue =
            std::chrono::ceil<milliseconds>(m_waiting.front().due - Stop::Clock::now());
        wait = std::clamp(untilDue, milliseconds(0), wait);
    }
    return static_cast<int>(wait.count());
}

}  // namespace thermika::fetch

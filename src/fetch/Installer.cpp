// Each file is installed in a thread of its own, which does nothing but wait for the disk.
#include "fetch/Installer.h"

#include <chrono>
#include <csignal>
#include <system_error>
#include <utility>

namespace thermika::fetch {

namespace {

constexpr std::size_t kMostAtOnce = 16;

/// While it lives, threads that are begun get no signal: handlers run in the program's own.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_former);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &m_former, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t m_former{};
};

std::future<bool> beginInstalling(PartFile& part, const FileReport& file) {
    const auto install = [&part, &file] { return part.install(file.name); };
    try {
        const SignalsHeld held;
        return std::async(std::launch::async, install);
    } catch (const std::system_error&) {  // no more threads: it is done when it is asked for
        return std::async(std::launch::deferred, install);
    }
}

}  // namespace

void Installer::add(std::unique_ptr<PartFile> part, FileReport& file) {
    if (m_pending.size() == kMostAtOnce) endFirst();
    m_pending.push_back({std::move(part), &file, {}});
    m_pending.back().isInstalled = beginInstalling(*m_pending.back().part, file);
}

void Installer::collect() {
    while (!m_pending.empty() && m_pending.front().isInstalled.wait_for(std::chrono::seconds(0)) !=
                                     std::future_status::timeout)
        endFirst();
}

void Installer::finish() {
    while (!m_pending.empty()) endFirst();
}

void Installer::endFirst() {
    Pending first = std::move(m_pending.front());
    m_pending.pop_front();
    if (!first.isInstalled.get()) {
        first.file->isLocal = first.part->size() > 0;  // an empty one is the source's
        return m_call.end(*first.file, Outcome::kFailed, first.part->problem());
    }
    first.file->bytes = first.part->size();
    m_call.end(*first.file, Outcome::kFetched);
}

}  // namespace thermika::fetch

// Keeps SIGPIPE from a calling program's thread while libcurl writes to connections there: a server
// that hangs up must not end the program, and what the program does on SIGPIPE stays its own.
#pragma once

#include <csignal>
#include <ctime>

namespace thermika::fetch {

/// While it lives, the calling thread does not get SIGPIPE; one that came is gone afterwards,
/// unless one was waiting before already.
class SigpipeHold {
public:
    SigpipeHold() {
        sigemptyset(&m_pipe);
        sigaddset(&m_pipe, SIGPIPE);
        m_wasPending = isPending();
        pthread_sigmask(SIG_BLOCK, &m_pipe, &m_former);
    }
    ~SigpipeHold() {
        const timespec atOnce{};
        if (!m_wasPending && isPending()) sigtimedwait(&m_pipe, nullptr, &atOnce);
        pthread_sigmask(SIG_SETMASK, &m_former, nullptr);
    }
    SigpipeHold(const SigpipeHold&) = delete;
    SigpipeHold& operator=(const SigpipeHold&) = delete;

private:
    static bool isPending() {
        sigset_t pending;
        sigpending(&pending);
        return sigismember(&pending, SIGPIPE) == 1;
    }

    sigset_t m_pipe{};
    sigset_t m_former{};
    bool m_wasPending = false;
};

}  // namespace thermika::fetch

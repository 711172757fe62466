// A signal handler can only reach what is global, so the flag is.
#include "cli/Source.h"

#include <csignal>

#include "cli/Command.h"
#include "fetch/Address.h"

namespace thermika::cli {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<bool> g_isCancelled{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

void cancel(int /*signal*/) { g_isCancelled = true; }

}  // namespace

fetch::Source sourceFrom(const std::string& from) {
    if (from.empty()) return fetch::VendorServer{};
    if (from.find("://") == std::string::npos) return fetch::Folder{from};
    std::string problem;
    if (fetch::checkedAddress(from, problem).empty())
        throw Problem(Status::kUsage,
                      problem + " (--from takes an http or https address, or a folder)");
    return fetch::Mirror{from};
}

std::string sourceText(const std::string& from) {
    return from.empty() ? fetch::vendorLinksAddress() : from;
}

Cancellation::Cancellation() {
    g_isCancelled = false;
    struct sigaction action {};
    action.sa_handler = cancel;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int each : kSignals) {
        struct sigaction before {};
        // Whoever started us in the background (nohup) does not want to be interrupted.
        sigaction(each, nullptr, &before);
        if (before.sa_handler != SIG_IGN) sigaction(each, &action, nullptr);
    }
}

Cancellation::~Cancellation() {
    for (const int each : kSignals) {
        struct sigaction now {};
        sigaction(each, nullptr, &now);
        if (now.sa_handler == cancel) std::signal(each, SIG_DFL);
    }
}

const std::atomic<bool>* Cancellation::flag() const { return &g_isCancelled; }

}  // namespace thermika::cli

// Where the companion fetches from, and how a run of it is cut short.
#pragma once

#include <atomic>
#include <string>

#include <CLI/App.hpp>

#include "fetch/Fetch.h"

namespace thermika::cli {

/// What `from` names: a server when it has "://", a folder otherwise; "" is the vendor's server. A
/// Problem when it is no address that can be asked.
fetch::Source sourceFrom(const std::string& from);

/// The same for people, with outside bytes as they are.
std::string sourceText(const std::string& from);

/// While it lives, the first SIGINT, SIGTERM or SIGHUP sets a flag; a second one ends the process.
/// One at a time.
class Cancellation {
public:
    Cancellation();
    ~Cancellation();
    Cancellation(const Cancellation&) = delete;
    Cancellation& operator=(const Cancellation&) = delete;

    const std::atomic<bool>* flag() const;
    bool isRequested() const { return flag()->load(); }
};

}  // namespace thermika::cli

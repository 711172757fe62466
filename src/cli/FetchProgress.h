// What a user sees of a fetch while it runs: one line that changes on a terminal, a line for each
// file elsewhere.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "cli/Output.h"
#include "fetch/Fetch.h"

namespace thermika::cli {

/// "1.5 MiB".
std::string bytesText(std::uint64_t bytes);

/// The line of a terminal with so many columns, cut to them.
std::string progressLine(const fetch::Progress& progress, std::chrono::milliseconds elapsed,
                         std::size_t columns);

class FetchProgress {
public:
    /// On standard error; nothing at all when `output` is quiet.
    explicit FetchProgress(const Output& output);
    /// The line is gone from the terminal.
    ~FetchProgress();
    FetchProgress(const FetchProgress&) = delete;
    FetchProgress& operator=(const FetchProgress&) = delete;

    void show(const fetch::Progress& progress);

private:
    using Clock = std::chrono::steady_clock;

    const Output& m_output;
    bool m_isTerminal;
    bool m_isLineShown = false;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_lastDrawn;
};

}  // namespace thermika::cli

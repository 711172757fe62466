// What tests of the fetch library share: requests for one camera, and reports in a few words.
#pragma once

#include <string>
#include <vector>

#include "fetch/Fetch.h"

namespace thermika_test {

/// Camera 14080045, one try a millisecond after another, 50 seconds in all at most.
thermika::fetch::Request requestFor(const std::vector<std::string>& names,
                                    thermika::fetch::Source source, const std::string& directory);

/// "fetched", "present", "planned", "refused", "missing", "failed" or "not tried".
std::string wordFor(thermika::fetch::Outcome outcome);

/// A line for the problem, if there is one, and for each file: its name, its outcome and, where
/// there is one, the reason.
std::string linesOf(const thermika::fetch::Report& report);

/// Sees whether anybody opens a file from now on.
class OpenWatch {
public:
    explicit OpenWatch(const std::string& path);
    ~OpenWatch();
    OpenWatch(const OpenWatch&) = delete;
    OpenWatch& operator=(const OpenWatch&) = delete;

    /// Since it was asked last.
    bool wasOpened() const;

private:
    int m_events;
};

}  // namespace thermika_test

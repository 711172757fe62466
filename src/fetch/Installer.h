// Whole part files on their way to the disk, many at a time. A disk takes as long for one as a
// server for several answers, and hardly longer for a dozen at once.
#pragma once

#include <deque>
#include <future>
#include <memory>

#include "fetch/Call.h"
#include "fetch/PartFile.h"

namespace thermika::fetch {

class Installer {
public:
    /// The call outlives it.
    explicit Installer(Call& call) : m_call(call) {}
    /// Waits for those on their way; they get no outcome.
    ~Installer() = default;
    Installer(const Installer&) = delete;
    Installer& operator=(const Installer&) = delete;

    /// Begins to install `part` under the name of `file`, which gets its outcome later.
    void add(std::unique_ptr<PartFile> part, FileReport& file);

    /// Ends the files that are done.
    void collect();
    /// Waits for the others, and ends them.
    void finish();

private:
    struct Pending {
        std::unique_ptr<PartFile> part;
        FileReport* file;
        std::future<bool> isInstalled;  ///< ends first: its thread uses the part file
    };

    void endFirst();

    Call& m_call;
    std::deque<Pending> m_pending;
};

}  // namespace thermika::fetch

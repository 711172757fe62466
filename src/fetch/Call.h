// One call's book-keeping, the same for every source: which files are asked for, what became of
// each, and who is told. Moves no bytes.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "fetch/Destination.h"
#include "fetch/Fetch.h"
#include "fetch/PartFile.h"
#include "fetch/Stop.h"

namespace thermika::fetch {

/// `limits` with every number in the range that its declaration names.
Limits bounded(Limits limits);

class Call {
public:
    /// Makes the list: each name once, refused where a rule says so. `request` outlives it.
    Call(const Request& request, bool isPlan);

    /// Opens the directory and settles what is there already; in a plan nothing is created, else
    /// leftovers are removed. False when there is nothing to fetch, or problem() says why not.
    bool prepare();

    /// Asks once for the names that follow, when all that was asked for is there, and settles what
    /// is there of those. False when there is nothing more to fetch, or problem() says why not.
    bool follow();

    /// Whether follow() has yet to ask.
    bool mayFollow() const { return !m_isPlan && !m_hasFollowed && m_request.following; }

    /// The files that have no outcome yet; valid until follow().
    std::vector<FileReport*> wanted();

    /// Gives `file` its outcome, and tells the caller of it.
    void end(FileReport& file, Outcome outcome, const std::string& reason = "");

    /// So many bytes more have arrived, or will.
    void received(std::uint64_t bytes) { m_progress.bytes += bytes; }
    void announced(std::uint64_t bytes) { m_progress.bytesAnnounced += bytes; }
    /// Tells the caller when it has not been told for a while.
    void tick();

    /// What concerns all files; they are not tried.
    void setProblem(const std::string& problem) { m_report.problem = problem; }
    bool hasProblem() const { return !m_report.problem.empty(); }

    /// Files without an outcome get the reason why; installed ones are on the disk afterwards.
    Report finish();

    const Request& request() const { return m_request; }
    const Limits& limits() const { return m_limits; }
    const Stop& stop() const { return m_stop; }
    const Destination& destination() const { return m_destination; }
    Allowance& allowance() { return m_allowance; }
    bool isPlan() const { return m_isPlan; }

private:
    void addFiles(const std::vector<std::string>& names);
    void add(const std::string& name, const std::string& refusal);
    bool begin(bool replacePresent);
    void settlePresent();
    void tell(const FileReport* ended);

    const Request& m_request;
    Limits m_limits;
    bool m_isPlan;
    Stop m_stop;
    Destination m_destination;
    Allowance m_allowance;
    Report m_report;
    std::unordered_set<std::string> m_names;  ///< in the report
    Progress m_progress;
    std::size_t m_open = 0;   ///< files without an outcome
    std::size_t m_begun = 0;  ///< files of the report that begin() has seen
    bool m_hasFollowed = false;
    bool m_isWritable = false;  ///< the directory: it was tried
    bool m_hasInstalled = false;
    Stop::Clock::time_point m_lastTold = Stop::Clock::now();
};

}  // namespace thermika::fetch

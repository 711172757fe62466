// From answers to files.
#include "fetch/ServerSource.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fetch/Address.h"
#include "fetch/HttpQueue.h"
#include "fetch/Installer.h"
#include "fetch/LinksDocument.h"
#include "fetch/PartFile.h"

namespace thermika::fetch {

namespace {

class FileBody : public Body {
public:
    explicit FileBody(Call& call)
        : m_call(call), m_part(std::make_unique<PartFile>(call.destination(), call.allowance())) {}
    void discard() override { m_part->discard(); }
    void announce(std::uint64_t bytes) override { m_call.announced(bytes); }
    bool append(std::string_view bytes) override {
        m_call.received(bytes.size());
        return m_part->append(bytes);
    }
    std::string problem() const override { return m_part->problem(); }

    std::unique_ptr<PartFile> takePart() { return std::move(m_part); }

private:
    Call& m_call;
    std::unique_ptr<PartFile> m_part;
};

class FileClient : public HttpClient {
public:
    FileClient(Call& call, std::string base)
        : m_call(call), m_installer(call), m_base(std::move(base)), m_files(call.wanted()) {}

    std::optional<HttpItem> next() override {
        if (m_begun == m_files.size()) return std::nullopt;
        FileReport& file = *m_files[m_begun++];
        file.source = fileAddress(m_base, m_call.request().serial, file.name);
        return HttpItem{file.source, m_call.limits().fileBytes, std::make_unique<FileBody>(m_call)};
    }

    void end(std::size_t number, HttpItem& item, const Answer& answer, unsigned tries) override {
        FileReport& file = *m_files[number];
        file.httpStatus = answer.status;
        file.tries = tries;
        file.isLocal = answer.isLocal;
        if (answer.verdict == Answer::Verdict::kMissing)
            return m_call.end(file, Outcome::kMissing, answer.reason);
        if (answer.verdict != Answer::Verdict::kGood)
            return m_call.end(file, Outcome::kFailed, answer.reason);
        m_installer.add(static_cast<FileBody&>(*item.body).takePart(), file);
    }

    void tick() override {
        m_installer.collect();
        m_call.tick();
    }

    /// The files that have arrived are installed afterwards.
    void finish() { m_installer.finish(); }

private:
    Call& m_call;
    Installer m_installer;
    std::string m_base;
    std::vector<FileReport*> m_files;
    std::size_t m_begun = 0;
};

void planFiles(Call& call, const std::string& base) {
    for (FileReport* const file : call.wanted()) {
        file->source = fileAddress(base, call.request().serial, file->name);
        call.end(*file, Outcome::kPlanned);
    }
}

void fetchBelow(const std::string& base, Call& call, HttpQueue& queue) {
    if (call.isPlan()) return planFiles(call, base);
    do {
        FileClient client(call, base);
        // What follows is many files more often than few.
        queue.run(client, call.mayFollow());
        client.finish();
    } while (call.follow());
}

/// The checked base address, or "" and what is wrong with the document in `asked`.
std::string baseFrom(Asked& asked) {
    if (!asked.problem.empty()) return "";
    std::string problem;
    std::string base = baseAddressIn(asked.bytes, problem);
    if (base.empty()) asked.problem = "the links document " + asked.address + ": " + problem;
    return base;
}

constexpr const char* kNoLibrary = "libcurl cannot be initialised";

/// Asks once; `use` looks at the answer when there is one.
template <typename Use>
ProbeReport probeAt(const std::string& address, const Request& request, const Use& use) {
    ProbeReport report;
    if (!HttpTransfer::isPossible()) {
        report.reason = kNoLibrary;
        return report;
    }
    Limits limits = bounded(request.limits);
    limits.retries = 0;
    limits.jobs = 1;
    const Stop stop(limits.total, request.cancel);
    HttpQueue queue(limits, request.caFile, stop);
    Asked asked = ask(address, queue);
    report.address = asked.address;
    report.httpStatus = asked.answer.status;
    report.answers = report.httpStatus != 0;
    report.connected = asked.answer.connected;
    report.answered = asked.answer.answered;
    use(asked, report);
    if (!report.answers && stop.isDue()) asked.problem = stop.reason();
    report.reason = asked.problem;
    return report;
}

}  // namespace

void fetchFromServer(const VendorServer& server, Call& call) {
    if (!HttpTransfer::isPossible()) return call.setProblem(kNoLibrary);
    HttpQueue queue(call.limits(), call.request().caFile, call.stop());
    Asked asked = ask(server.linksAddress, queue);
    if (call.stop().isDue()) return;
    const std::string base = baseFrom(asked);
    if (base.empty()) return call.setProblem(asked.problem);
    fetchBelow(base, call, queue);
}

void fetchFromServer(const Mirror& mirror, Call& call) {
    if (!HttpTransfer::isPossible()) return call.setProblem(kNoLibrary);
    std::string problem;
    const std::string base = checkedAddress(mirror.baseAddress, problem);
    if (base.empty()) return call.setProblem(problem);
    HttpQueue queue(call.limits(), call.request().caFile, call.stop());
    fetchBelow(base, call, queue);
}

ProbeReport probeServer(const VendorServer& server, const Request& request) {
    return probeAt(server.linksAddress, request,
                   [](Asked& asked, ProbeReport& report) { report.base = baseFrom(asked); });
}

ProbeReport probeServer(const Mirror& mirror, const Request& request) {
    return probeAt(mirror.baseAddress, request, [](Asked& asked, const ProbeReport& report) {
        // Any answer will do: few servers list their folders.
        if (report.answers) asked.problem.clear();
    });
}

}  // namespace thermika::fetch

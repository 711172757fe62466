// A file is copied where the walk meets it, from the descriptor that was checked: there is no path
// that could mean another file a moment later.
#include "fetch/FolderSource.h"

#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "fetch/Descriptor.h"
#include "fetch/FolderWalk.h"
#include "fetch/PartFile.h"
#include "fetch/RegularFile.h"

namespace thermika::fetch {

namespace {

constexpr std::size_t kCopyBytes = 65536;

class FolderCopy {
public:
    explicit FolderCopy(Call& call) : m_call(call) {
        for (FileReport* const file : call.wanted()) m_wanted[file->name] = file;
    }

    void copyFrom(const Folder& folder) {
        const WalkResult walk = walkFolder(
            folder.path, [this](const std::string& name) { return m_wanted.count(name) > 0; },
            [this](const FolderEntry& entry) { return take(entry); }, m_call.stop());
        if (!walk.problem.empty()) return m_call.setProblem(walk.problem);
        if (m_call.stop().isDue()) return;
        std::string missing = "it is in no folder below " + folder.path;
        if (walk.foldersSkipped > 0)
            missing += ", but " + std::to_string(walk.foldersSkipped) + " could not be read (" +
                       walk.firstSkipped + ")";
        for (FileReport* const file : m_call.wanted())
            if (file->reason.empty())
                m_call.end(*file, Outcome::kMissing, missing);
            else
                m_call.end(*file, Outcome::kFailed, std::string(file->reason));
    }

private:
    /// False when nothing is left to look for.
    bool take(const FolderEntry& entry) {
        FileReport& file = *m_wanted.at(entry.name);
        bool isLocal = false;
        const std::string reason = copy(entry, file, isLocal);
        if (reason.empty()) {
            m_wanted.erase(entry.name);
            file.source = entry.path;
            m_call.end(file, m_call.isPlan() ? Outcome::kPlanned : Outcome::kFetched);
        } else if (file.reason.empty() && !m_call.stop().isDue()) {  // the first one tells most
            file.source = entry.path;
            file.reason = reason;
            file.isLocal = isLocal;
        }
        return !m_wanted.empty() && !m_call.stop().isDue();
    }

    /// Why it cannot be used; "" when it is installed, or could be in a plan.
    std::string copy(const FolderEntry& entry, FileReport& report, bool& isLocal) {
        const RegularFile source = openRegularFile(entry.folder, entry.name);
        if (!source.file.isOpen()) return source.problem;
        const std::uint64_t announced = source.bytes;
        if (announced == 0) return "it is empty";
        isLocal = announced > m_call.limits().fileBytes;
        if (isLocal)
            return "it is larger than " + std::to_string(m_call.limits().fileBytes) + " bytes";
        report.bytes = announced;
        return m_call.isPlan() ? "" : install(source.file.get(), announced, report, isLocal);
    }

    std::string install(int file, std::uint64_t announced, FileReport& report, bool& isLocal) {
        PartFile part(m_call.destination(), m_call.allowance());
        ++report.tries;
        report.bytes = 0;
        m_call.announced(announced);
        for (;;) {
            if (m_call.stop().isDue()) return m_call.stop().reason();
            const ssize_t got = retrying([&] { return read(file, m_buffer, sizeof m_buffer); });
            if (got < 0) return "cannot read it: " + errorText(errno);
            if (got == 0) break;
            const auto count = static_cast<std::size_t>(got);
            isLocal = !part.append({m_buffer, count});
            if (isLocal) return part.problem();
            m_call.received(count);
            m_call.tick();
        }
        if (part.size() != announced)
            return "it has " + std::to_string(part.size()) + " bytes instead of " +
                   std::to_string(announced) + " (is somebody writing it?)";
        isLocal = !part.install(report.name);
        if (isLocal) return part.problem();
        report.bytes = announced;
        return "";
    }

    Call& m_call;
    std::unordered_map<std::string, FileReport*> m_wanted;  // not found yet
    char m_buffer[kCopyBytes] = {};
};

}  // namespace

void fetchFromFolder(const Folder& folder, Call& call) {
    do {
        const auto copy = std::make_unique<FolderCopy>(call);  // too large for a small stack
        copy->copyFrom(folder);
    } while (call.follow());
}

}  // namespace thermika::fetch

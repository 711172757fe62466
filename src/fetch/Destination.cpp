// Whether files can be written is found out by writing one: access rights alone do not know of
// read-only and full file systems.
#include "fetch/Destination.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstddef>
#include <utility>

#include "fetch/DirectoryStream.h"
#include "fetch/FileName.h"
#include "fetch/PartFile.h"

namespace thermika::fetch {

namespace {

constexpr mode_t kDirectoryMode = 0755;
constexpr const char* kNextStep = " (choose a directory that you may write to)";

Descriptor openDirectory(const std::string& path) {
    return Descriptor(
        retrying([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

/// False, with errno, when it could neither be created nor was there.
bool createDirectory(const std::string& path) {
    if (mkdir(path.c_str(), kDirectoryMode) != 0) return errno == EEXIST;
    // Whatever the umask: calibration files are for every user of the machine.
    const Descriptor created = openDirectory(path);
    return created.isOpen() && fchmod(created.get(), kDirectoryMode) == 0;
}

/// The parents first. "" or what went wrong.
std::string createDirectories(const std::string& path) {
    for (std::size_t end = 1; end <= path.size(); ++end) {
        if (end < path.size() && path[end] != '/') continue;
        const std::string parent = path.substr(0, end);
        if (!createDirectory(parent))
            return "cannot create the directory " + parent + ": " + errorText(errno) + kNextStep;
    }
    return "";
}

/// Removes `name` unless a running call holds it; those lock their part files.
void removeLeftover(int directory, const char* name) {
    const Descriptor file(openat(directory, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return;
    if (flock(file.get(), LOCK_EX | LOCK_NB) == 0) unlinkat(directory, name, 0);
}

}  // namespace

bool Destination::openExisting() {
    m_directory = openDirectory(m_path);
    return m_directory.isOpen();
}

std::string Destination::openForWriting() {
    if (!isOpen() && !openExisting()) {
        std::string problem = createDirectories(m_path);
        if (!problem.empty()) return problem;
        if (!openExisting())
            return "cannot open the directory " + m_path + ": " + errorText(errno) + kNextStep;
    }
    Allowance nothing;
    PartFile trial(*this, nothing);
    if (trial.create()) return "";
    return "cannot write to the directory " + m_path + ": " + trial.problem() + kNextStep;
}

std::optional<std::uint64_t> Destination::presentBytes(const std::string& name) const {
    struct stat status {};
    if (!isOpen() || fstatat(get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        !S_ISREG(status.st_mode) || status.st_size == 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

void Destination::removeLeftovers() const {
    // A description of its own: reading moves the position in it.
    Descriptor again(openat(get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!again.isOpen()) return;
    const DirectoryStream entries = openStream(std::move(again));
    if (entries == nullptr) return;
    while (const dirent* const entry = readdir(entries.get()))
        if (isPartName(entry->d_name)) removeLeftover(get(), entry->d_name);
}

std::string Destination::sync() const {
    if (retrying([&] { return fsync(get()); }) == 0) return "";
    return "cannot write the directory " + m_path + " to the disk: " + errorText(errno);
}

std::string Destination::pathOf(const std::string& name) const {
    return m_path.empty() || m_path.back() == '/' ? m_path + name : m_path + "/" + name;
}

}  // namespace thermika::fetch

// Whether files can be written is found out by writing one: access rights alone do not know of
// read-only and full file systems.
#include "fetch/Destination.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <utility>

#include "fetch/DirectoryStream.h"
#include "fetch/FileName.h"
#include "fetch/PartFile.h"
#include "fetch/RegularFile.h"

namespace thermika::fetch {

namespace {

constexpr mode_t kDirectoryMode = 0755;
constexpr const char* kNextStep = " (choose a directory that you may write to)";

Descriptor openDirectory(const std::string& path) {
    return Descriptor(
        retrying([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

/// Whatever the umask: calibration files are for every user of the machine. Somebody else's
/// directory, which took the place of ours meanwhile, keeps its mode.
bool openToEveryUser(int directory) {
    struct stat status {};
    if (fstat(directory, &status) != 0) return false;
    return status.st_uid != geteuid() || fchmod(directory, kDirectoryMode) == 0;
}

/// The directory `name` in `parent`, created when absent; closed, with errno, when that failed.
/// A parent that is there already need not be readable, and may be a link. Where one was just made
/// no link is followed: somebody else put it there.
Descriptor createDirectory(int parent, const char* name, bool isLast) {
    constexpr int kFlags = O_DIRECTORY | O_CLOEXEC;
    const bool isNew = mkdirat(parent, name, kDirectoryMode) == 0;
    if (!isNew && errno != EEXIST) return {};
    const int access = isNew ? O_RDONLY | O_NOFOLLOW : isLast ? O_RDONLY : O_PATH;
    Descriptor directory(retrying([&] { return openat(parent, name, kFlags | access); }));
    if (isNew && directory.isOpen() && !openToEveryUser(directory.get())) directory.reset();
    return directory;
}

/// Creates the parents first. Closed, with `problem`, when that failed.
Descriptor createDirectories(const std::string& path, std::string& problem) {
    Descriptor last(open(path.front() == '/' ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::size_t end = path.size();
    std::size_t begin = path.find_first_not_of('/');
    while (last.isOpen() && begin < path.size()) {
        end = std::min(path.find('/', begin), path.size());
        const std::string name = path.substr(begin, end - begin);
        begin = path.find_first_not_of('/', end);
        last = createDirectory(last.get(), name.c_str(), begin == std::string::npos);
    }
    if (!last.isOpen())
        problem = "cannot create the directory " + path.substr(0, end) + ": " + errorText(errno) +
                  kNextStep;
    return last;
}

/// Removes `name` unless a running call holds it; those lock their part files.
void removeLeftover(int directory, const char* name) {
    const RegularFile leftover = openRegularFile(directory, name);
    if (!leftover.file.isOpen()) return;
    if (flock(leftover.file.get(), LOCK_EX | LOCK_NB) == 0) unlinkat(directory, name, 0);
}

}  // namespace

bool Destination::openExisting() {
    m_directory = openDirectory(m_path);
    return m_directory.isOpen();
}

std::string Destination::openForWriting() {
    if (!isOpen() && !openExisting()) {
        if (errno != ENOENT)
            return "cannot open the directory " + m_path + ": " + errorText(errno) + kNextStep;
        std::string problem;
        m_directory = createDirectories(m_path, problem);
        if (!isOpen()) return problem;
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
    const DirectoryStream entries =
        openStream(Descriptor(openat(get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    if (entries == nullptr) return;
    while (const dirent* const entry = readdir(entries.get()))
        if (isPartName(entry->d_name)) removeLeftover(get(), entry->d_name);
}

std::string Destination::sync() const {
    if (retrying([&] { return fsync(get()); }) == 0) return "";
    if (errno == EINVAL || errno == ENOTSUP) return "";  // some file systems write none so
    return "cannot write the directory " + m_path + " to the disk: " + errorText(errno);
}

std::string Destination::pathOf(const std::string& name) const {
    return m_path.empty() || m_path.back() == '/' ? m_path + name : m_path + "/" + name;
}

}  // namespace thermika::fetch

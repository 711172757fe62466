// The file is locked while it is written, so that another call can tell it from a leftover.
#include "fetch/PartFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <cstdio>

#include "fetch/Destination.h"
#include "fetch/FileName.h"

namespace thermika::fetch {

namespace {

constexpr int kMostNames = 100;  // somebody else would have to take as many of 2^64
constexpr mode_t kUnfinishedMode = 0600;
constexpr mode_t kFileMode = 0644;
constexpr mode_t kReadableByAll = 0444;

/// "", with errno, when there is no random number.
std::string newPartName() {
    unsigned long long number = 0;
    if (getrandom(&number, sizeof number, 0) != static_cast<ssize_t>(sizeof number)) return "";
    char digits[2 * sizeof number + 1];
    std::snprintf(digits, sizeof digits, "%016llx", number);
    return std::string(kPartPrefix) + digits + std::string(kPartSuffix);
}

}  // namespace

PartFile::PartFile(const Destination& directory, Allowance& allowance)
    : m_directory(directory), m_allowance(allowance) {}

PartFile::~PartFile() { discard(); }

bool PartFile::create() {
    for (int i = 0; i < kMostNames; ++i) {
        m_name = newPartName();
        if (m_name.empty()) return failWithError("get a random number");
        m_file = Descriptor(retrying([&] {
            constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
            return openat(m_directory.get(), m_name.c_str(), kFlags, kUnfinishedMode);
        }));
        if (!m_file.isOpen() && errno == EEXIST) continue;
        if (!m_file.isOpen()) {
            m_name.clear();
            return failWithError("create a file");
        }
        if (lock()) return true;
        discard();
    }
    return fail("every name for an unfinished file is taken");
}

bool PartFile::lock() const {
    // Between creation and lock another call may have taken it for a leftover: it is removed then.
    if (flock(m_file.get(), LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
    struct stat status {};
    return fstat(m_file.get(), &status) == 0 && status.st_nlink > 0;
}

bool PartFile::isForEveryUser() const {
    // A FAT file system has no modes: all its files have that which it was mounted with.
    const int error = errno;
    struct stat status {};
    if (error == EPERM) fstat(m_file.get(), &status);
    errno = error;
    return (status.st_mode & kReadableByAll) == kReadableByAll;
}

bool PartFile::append(std::string_view bytes) {
    if (bytes.size() > m_allowance.fileBytes - m_size)
        return fail("it is larger than " + std::to_string(m_allowance.fileBytes) + " bytes");
    if (bytes.size() > m_allowance.totalBytesLeft)
        return fail("with it, all files together would have more bytes than allowed");
    if (m_name.empty() && !create()) return false;
    while (!bytes.empty()) {
        const ssize_t written =
            retrying([&] { return write(m_file.get(), bytes.data(), bytes.size()); });
        if (written <= 0) return failWithError("write");
        const auto count = static_cast<std::size_t>(written);
        bytes.remove_prefix(count);
        m_size += count;
        m_allowance.totalBytesLeft -= count;
    }
    return true;
}

bool PartFile::install(const std::string& name) {
    if (m_size == 0) return fail("it is empty");
    if (fchmod(m_file.get(), kFileMode) != 0 && !isForEveryUser())
        return failWithError("change the mode");
    if (retrying([&] { return fsync(m_file.get()); }) != 0)
        return failWithError("write to the disk");
    const int directory = m_directory.get();
    if (renameat(directory, m_name.c_str(), directory, name.c_str()) != 0)
        return failWithError("rename");
    m_name.clear();
    m_file.reset();
    return true;
}

void PartFile::discard() {
    if (m_name.empty()) return;
    unlinkat(m_directory.get(), m_name.c_str(), 0);
    m_file.reset();
    m_name.clear();
    m_allowance.totalBytesLeft += m_size;
    m_size = 0;
}

bool PartFile::fail(const std::string& what) {
    m_problem = what;
    return false;
}

bool PartFile::failWithError(const std::string& doing) {
    return fail("cannot " + doing + ": " + errorText(errno));
}

}  // namespace thermika::fetch

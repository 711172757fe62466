// See the header. Uses the system's calls rather than the product's own file reading.
#include "support/TestFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "support/SystemError.h"

namespace thermika_test {

namespace {

/// TMPDIR may name a folder that is not there.
std::string namePattern() {
    std::error_code isMissing;
    const auto folder = std::filesystem::temp_directory_path(isMissing);
    return (isMissing ? "/tmp" : std::filesystem::absolute(folder)) / "thermika-XXXXXX";
}

/// A file without a name, so that nothing is left behind when the test crashes.
int openUnnamedFile() {
    std::string name = namePattern();
    const int fd = mkostemp(name.data(), O_CLOEXEC);
    if (fd < 0) throwSystemError("cannot create " + name);
    unlink(name.c_str());
    return fd;
}

}  // namespace

TempDir::TempDir() : m_path(namePattern()) {
    if (mkdtemp(m_path.data()) == nullptr) throwSystemError("cannot create " + m_path);
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string TempDir::operator/(std::string_view name) const { return (m_path + "/").append(name); }

void writeFile(const std::string& path, std::string_view bytes) {
    // Cut after writing, not before: some file systems wait for the disk when a file was emptied.
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    struct stat status {};
    bool isWritten = fd >= 0 && fstat(fd, &status) == 0 &&
                     write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    if (isWritten && S_ISREG(status.st_mode) &&
        static_cast<std::size_t>(status.st_size) > bytes.size())
        isWritten = ftruncate(fd, static_cast<off_t>(bytes.size())) == 0;
    const int error = errno;
    if (fd >= 0) close(fd);
    errno = error;
    if (!isWritten) throwSystemError("cannot write " + path);
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throwSystemError("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

StderrCapture::StderrCapture()
    : m_captured(openUnnamedFile()), m_original(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
    std::fflush(stderr);
    if (m_original < 0 || dup2(m_captured, STDERR_FILENO) < 0)
        throwSystemError("cannot capture errors");
}

StderrCapture::~StderrCapture() {
    std::fflush(stderr);
    dup2(m_original, STDERR_FILENO);
    close(m_original);
    close(m_captured);
}

std::string StderrCapture::text() {
    std::fflush(stderr);
    struct stat status {};
    if (fstat(m_captured, &status) != 0) throwSystemError("cannot measure the captured errors");
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    const ssize_t got = pread(m_captured, text.data(), text.size(), 0);
    if (got < 0) throwSystemError("cannot read the captured errors");
    text.resize(static_cast<std::size_t>(got));
    return text;
}

}  // namespace thermika_test

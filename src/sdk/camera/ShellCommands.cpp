// Plain concatenation: every character of a command can be read off here.
#include "sdk/camera/ShellCommands.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "sdk/base/BuildConfig.h"
#include "sdk/camera/DownloadLinks.h"

namespace dax {

namespace {

constexpr int kMostRepeats = 1000;  // of a read that a signal interrupts

std::string join(std::initializer_list<std::string_view> pieces) {
    std::string text;
    for (const std::string_view piece : pieces) text += piece;
    return text;
}

/// While it lives, none of the descriptors 0 to 2 is closed.
class StandardDescriptors {
public:
    StandardDescriptors() {
        for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
            if (fcntl(fd, F_GETFD) == -1)
                m_opened[fd] = open("/dev/null", O_RDWR);  // the lowest that is free: this one
    }
    ~StandardDescriptors() {
        for (const int fd : m_opened)
            if (fd >= 0) close(fd);
    }
    StandardDescriptors(const StandardDescriptors&) = delete;
    StandardDescriptors& operator=(const StandardDescriptors&) = delete;

private:
    int m_opened[STDERR_FILENO + 1] = {-1, -1, -1};
};

/// Whether there is a whole line with something on it.
bool hasLine(std::string_view text) {
    return !text.empty() && text.back() == '\n' &&
           text.find_first_not_of(" \t\n\v\f\r") != std::string_view::npos;
}

/// Reads a line to `to`, `bytes` bytes at most; how many bytes that was. Does not wait for the end
/// of what is written, which may be held open by others.
std::size_t readLine(int fd, char* to, std::size_t bytes) noexcept {
    std::size_t size = 0;
    for (int repeats = 0; size < bytes && repeats < kMostRepeats && !hasLine({to, size});) {
        const ssize_t got = read(fd, to + size, bytes - size);
        if (got > 0)
            size += static_cast<std::size_t>(got);
        else if (got < 0 && errno == EINTR)
            ++repeats;
        else
            break;
    }
    return size;
}

/// Runs the command; how many bytes of its first line, `bytes` at most, are at `to` now.
std::optional<std::size_t> readOutput(const char* command, char* to, std::size_t bytes) noexcept {
    std::FILE* const pipe = popen(command, "r");
    if (pipe == nullptr) return std::nullopt;
    // Not through the stream, which takes a signal that interrupts a read for the end.
    const std::size_t size = readLine(fileno(pipe), to, bytes);
    pclose(pipe);
    return size;
}

}  // namespace

std::string fetchLinksCommand(std::string_view file) {
    return join({"wget http://", kDownloadHost, kLinksPath, " -O ", file});
}

std::string quotedFileAddress(std::string_view base, std::string_view serial,
                              std::string_view name) {
    std::string address = "\"";
    address += base;
    for (const std::string& part : serverPath(serial, name)) address.append(1, '/').append(part);
    return address += '"';
}

std::string fetchFileCommand(std::string_view quotedAddress, std::string_view targetDir,
                             std::string_view name) {
    return join({"wget ", quotedAddress, " -O ", targetDir, "/", name});
}

std::string copyFilesCommand(std::string_view sourceDir, std::string_view serial,
                             std::string_view targetDir) {
    return join({"find ", sourceDir, " -name Cali-", serial, "* -exec cp \"{}\" ", targetDir,
                 " \\; -o -name Kennlinie-", serial, "* -exec cp \"{}\" ", targetDir,
                 " \\; 2> /dev/null"});
}

std::string countDefaultRoutesCommand() { return R"(/sbin/route -n | grep -c '^0\.0\.0\.0')"; }

bool runCommand(const std::string& command) {
    const StandardDescriptors open;
    std::fflush(stdout);
    return std::system(command.c_str()) != -1;
}

std::optional<std::string> readCommand(const std::string& command, std::size_t bytes) {
    std::string output(bytes, '\0');
    const StandardDescriptors open;
    std::fflush(stdout);
    const auto size = readOutput(command.c_str(), output.data(), output.size());
    if (!size) return std::nullopt;
    output.resize(*size);
    return output;
}

}  // namespace dax

// Looks before it opens, and once more at what it opened: something else may have taken the name
// between the two.
#include "fetch/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace thermika::fetch {

namespace {

std::string objectionTo(mode_t mode) {
    if (S_ISLNK(mode)) return "it is a link";
    return S_ISREG(mode) ? "" : "it is no regular file";
}

}  // namespace

RegularFile openRegularFile(int folder, const std::string& name) {
    RegularFile result;
    struct stat status {};
    if (fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        result.problem = "cannot read it: " + errorText(errno);
        return result;
    }
    result.problem = objectionTo(status.st_mode);
    if (!result.problem.empty()) return result;

    Descriptor file(retrying([&] {
        constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
        return openat(folder, name.c_str(), kFlags);
    }));
    if (!file.isOpen() || fstat(file.get(), &status) != 0) {
        result.problem = "cannot read it: " + errorText(errno);
        return result;
    }
    result.problem = objectionTo(status.st_mode);
    if (!result.problem.empty()) return result;
    result.file = std::move(file);
    result.bytes = static_cast<std::uint64_t>(status.st_size);
    return result;
}

}  // namespace thermika::fetch

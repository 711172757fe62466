// libcurl before 8 opens a pair of sockets for each handle, to wake it up, without closing them on
// exec, and tells nobody their numbers. They are marked here when it is certain that they are
// those: new, next to each other, and with the byte that a call to wake up leaves there.
#include "fetch/MultiHandle.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>

#include "fetch/Descriptor.h"
#include "fetch/Memory.h"

namespace thermika::fetch {

namespace {

/// What can be read from it, 2 for more; -1 when it is no connected socket.
ssize_t waitingBytes(int fd) {
    char bytes[2];
    const ssize_t found = recv(fd, bytes, sizeof bytes, MSG_PEEK | MSG_DONTWAIT);
    return found == -1 && errno == EAGAIN ? 0 : found;
}

/// 0 when it is closed.
ino_t inode(int fd) {
    struct stat status {};
    fstat(fd, &status);
    return status.st_ino;
}

void markWakeupPair(CURLM* multi, int reading, int writing) {
    const bool wasEmpty = waitingBytes(reading) == 0 && waitingBytes(writing) == 0;
    curl_multi_wakeup(multi);
    if (!wasEmpty || waitingBytes(reading) != 1 || inode(writing) != inode(reading) + 1) return;
    fcntl(reading, F_SETFD, FD_CLOEXEC);
    fcntl(writing, F_SETFD, FD_CLOEXEC);
}

Descriptor placeholder() { return Descriptor(open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)); }

}  // namespace

MultiHandle makeMultiHandle() {
    // The next two numbers are those that these have, unless another thread is faster.
    Descriptor first = placeholder();
    Descriptor second = placeholder();
    const int reading = first.get();
    const int writing = second.get();
    first.reset();
    second.reset();
    MultiHandle multi(curl_multi_init(), curl_multi_cleanup);
    ensureMemory(multi != nullptr);
    markWakeupPair(multi.get(), reading, writing);
    return multi;
}

}  // namespace thermika::fetch

// Stands in for the tool where tools/faults is tried: it finds its camera and prints a document as
// the tool does, but for the weakness that its file's name tells.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string_view>

int main(int argc, char** argv) {
    const std::string_view path(argv[0]);
    const std::string_view weakness = path.substr(path.rfind('/') + 1);
    // The call that tells tools/faults where the tool begins.
    if (weakness != "unmarked") std::signal(SIGPIPE, SIG_IGN);

    const int camera = open("/sys/bus/usb/devices/1-2/serial", O_RDONLY | O_CLOEXEC);
    const bool isAttached = camera >= 0;
    const bool isHindered = (!isAttached && errno != ENOENT) ||
                            (isAttached && close(camera) != 0 && weakness == "fragile");
    if (argc == 1 && (!isAttached || isHindered)) {
        if (weakness != "silent") std::fputs("no camera\n", stderr);
        return 255;
    }
    if (write(STDOUT_FILENO, "document\n", 9) == 9) return 0;
    std::fputs("cannot write\n", stderr);
    return weakness == "forgiving" ? 0 : 255;
}

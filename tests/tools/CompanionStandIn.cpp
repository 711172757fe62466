// Stands in for the companion where tools/faults is tried: it brings the files of the medium that
// is laid out there, and writes a document, as the companion does, but for the weakness that its
// file's name tells.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

std::string g_weakness;

bool writeAll(const std::string& path, std::string_view bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0) return false;
    const bool isWhole = write(file, bytes.data(), bytes.size()) == ssize_t(bytes.size());
    close(file);
    return isWhole;
}

bool install(const std::string& path, const std::string& part, std::string_view bytes) {
    if (g_weakness == "cutting") return writeAll(path, bytes);
    if (writeAll(part, bytes) && rename(part.c_str(), path.c_str()) == 0) return true;
    if (g_weakness != "littering") unlink(part.c_str());
    return false;
}

bool bring(const std::string& from, const std::string& folder, const std::string& name) {
    static char bytes[65536];
    const int file = open((from + "/" + name).c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t got = file < 0 ? -1 : read(file, bytes, sizeof bytes);
    close(file);
    return got > 0 && install(folder + "/" + name, folder + "/.thermika-fetch-1.part",
                              {bytes, static_cast<std::size_t>(got)});
}

bool bringAll(const std::string& from, const std::string& folder) {
    DIR* const entries = opendir(from.c_str());
    if (entries == nullptr) return false;
    bool isCopied = true;
    errno = 0;
    while (const dirent* const entry = readdir(entries))
        if (entry->d_name[0] != '.') isCopied = bring(from, folder, entry->d_name) && isCopied;
    return errno == 0 && isCopied;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string path(argv[0]);
    g_weakness = path.substr(path.rfind('-') + 1);
    // The call that tells tools/faults where the companion begins.
    if (g_weakness != "unmarked") std::signal(SIGPIPE, SIG_IGN);
    if (argc < 4) return 2;
    const std::string folder = argv[2];
    const bool isQuiet = std::string_view(argv[3]) == "--quiet";
    char** const rest = argv + (isQuiet ? 4 : 3);
    const std::string_view command = rest[0];
    bool isDone = true;
    if (command == "fetch") isDone = bringAll("/usr/share/faults/medium", folder);
    if (command == "config") {
        const std::string document = rest[3];
        isDone =
            install(document, document.substr(0, document.rfind('/')) + "/.thermika-new-1.part",
                    "document");
    }
    if (isDone) return 0;
    if (g_weakness == "crashing") std::abort();
    if (g_weakness != "mute") std::fputs("thermika: cannot do it\n", stderr);
    return g_weakness == "claiming" ? 0 : 3;
}

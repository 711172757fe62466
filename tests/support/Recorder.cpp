// See the header. The stand-ins are scripts for a copy of the real shell, so that they are never
// recorded themselves.
#include "support/Recorder.h"

#include <sys/mount.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "support/TestFiles.h"

namespace thermika_test {

namespace fs = std::filesystem;

namespace {

const std::string kFolder = "/usr/share/world/recorder";
const std::string kShell = kFolder + "/sh";  // the real one
const std::string kStandIns = kFolder + "/bin";
const std::string kShellTexts = kFolder + "/texts";

std::string listOf(const std::string& program) { return kFolder + "/calls-" + program; }

void writeScript(const std::string& path, const std::string& text) {
    fs::create_directories(kStandIns);
    if (!fs::exists(kShell)) fs::copy_file("/bin/sh", kShell);
    writeFile(path, "#!" + kShell + "\n" + text);
    fs::permissions(path, fs::perms::owner_all);
}

std::string searchPath() {
    const char* const path = std::getenv("PATH");
    return path == nullptr ? "" : path;
}

/// Where the shell finds `program` now, which is no stand-in yet.
std::string pathOf(const std::string& program) {
    std::istringstream dirs(searchPath());
    for (std::string dir; std::getline(dirs, dir, ':');) {
        std::string path = dir;
        path.append("/").append(program);
        if (dir != kStandIns && fs::exists(path)) return path;
    }
    throw std::runtime_error(program + " is not installed");
}

/// The texts in a file of zero-terminated texts; none when there is no such file.
std::vector<std::string> listed(const std::string& path) {
    std::vector<std::string> texts;
    if (!fs::exists(path)) return texts;
    const std::string bytes = readFile(path);
    for (std::size_t at = 0; at < bytes.size(); at += texts.back().size() + 1)
        texts.emplace_back(bytes.c_str() + at);
    return texts;
}

}  // namespace

void recordShell() {
    const std::string script = kFolder + "/record-shell";
    writeScript(script, "for text; do :; done\nprintf '%s\\0' \"$text\" >>" + kShellTexts +
                            "\nexec " + kShell + " \"$@\"\n");
    if (mount(script.c_str(), "/bin/sh", "none", MS_BIND, nullptr) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot mount over /bin/sh");
}

std::vector<std::string> shellTexts() { return listed(kShellTexts); }

void recordProgram(const std::string& program, const std::string& action) {
    const std::string next = action.empty() ? "exec " + pathOf(program) + " \"$@\"" : action;
    writeScript(kStandIns + "/" + program,
                R"(printf '%s\0' $# "$@" >>)" + listOf(program) + "\n" + next + "\n");
    const std::string path = searchPath();
    if (path.compare(0, kStandIns.size(), kStandIns) != 0)
        setenv("PATH", (kStandIns + ":" + path).c_str(), 1);
}

std::vector<std::vector<std::string>> callsOf(const std::string& program) {
    const std::vector<std::string> texts = listed(listOf(program));
    std::vector<std::vector<std::string>> calls;
    for (auto at = texts.begin(); at != texts.end();) {
        const auto first = at + 1;
        at = first + std::stoi(*at);
        calls.emplace_back(first, at);
    }
    return calls;
}

}  // namespace thermika_test

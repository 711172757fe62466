// See the header. The server itself is file-server.py, which DownloadSandbox has put in place.
#include "support/FileServer.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "support/DownloadSandbox.h"
#include "support/SystemError.h"
#include "support/TestFiles.h"

namespace thermika_test {

namespace {

constexpr const char* kFaults = "/usr/share/world/faults";
constexpr const char* kRequests = "/usr/share/world/requests";

[[noreturn]] void becomeServer(int ready) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(ready, STDOUT_FILENO);
    execlp("python3", "python3", "-I", "-B", kServerScript, kServedFolder, kFaults, kRequests,
           nullptr);
    _exit(127);
}

}  // namespace

FileServer::FileServer() {
    for (const char* const file : {kFaults, kRequests}) writeFile(file, "");
    std::filesystem::create_directories(kServedFolder);
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) throwSystemError("pipe2");
    m_pid = fork();
    if (m_pid < 0) throwSystemError("fork");
    if (m_pid == 0) becomeServer(ready[1]);
    close(ready[1]);
    char byte = 0;
    const ssize_t got = read(ready[0], &byte, 1);
    close(ready[0]);
    if (got != 1) throwSystemError("the file server does not listen (is python3 installed?)");
}

FileServer::~FileServer() {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
}

void FileServer::add(const std::string& path, std::string_view bytes) {
    const std::filesystem::path file = kServedFolder + path;
    std::filesystem::create_directories(file.parent_path());
    writeFile(file.string(), bytes);
}

void FileServer::setFault(const std::string& path, const std::string& fault) {
    writeFile(kFaults, fault + " " + path + "\n" + readFile(kFaults));
}

std::vector<std::string> FileServer::requests() {
    std::ifstream file(kRequests);
    std::vector<std::string> paths;
    for (std::string path; std::getline(file, path);) paths.push_back(path);
    return paths;
}

std::string serverPath(const std::string& serial, const std::string& name) {
    return "/" + serial.substr(0, 2) + "/" + serial.substr(0, 4) + "/Califiles SN" + serial + "/" +
           name;
}

std::string serverAddress(const std::string& path) {
    return std::string("http://") + THERMIKA_DOWNLOAD_HOST + path;
}

std::string linksDocument(const std::string& links) {
    return "<DownloadLinks>\n  <Imager>\n    <CaliData>\n      <Links>\n" + links +
           "      </Links>\n    </CaliData>\n  </Imager>\n</DownloadLinks>\n";
}

std::string linksDocument() {
    return linksDocument("        <string>" + serverAddress("") + "</string>\n");
}

}  // namespace thermika_test

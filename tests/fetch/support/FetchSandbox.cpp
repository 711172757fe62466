// The server is hostile-server.py, run by the machine's python3; certificates come from openssl.
#include "fetch/support/FetchSandbox.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>

#include "support/BuildPaths.h"
#include "support/SystemError.h"

namespace thermika_test {

namespace {

constexpr const char* kScript = "/usr/share/world/hostile-server.py";
constexpr const char* kServedFiles = "/usr/share/world/hostile";
constexpr const char* kFaults = "/usr/share/world/hostile-faults";
constexpr const char* kRequests = "/usr/share/world/hostile-requests";
constexpr const char* kTls = "/usr/share/world/tls";

void makeCertificates(Tls tls) {
    std::filesystem::create_directories(kTls);
    const std::string host = tls == Tls::kOtherHost ? "other.example" : THERMIKA_DOWNLOAD_HOST;
    // "openssl x509" cannot make a certificate that is over; "openssl ca" can.
    const std::string dates =
        tls == Tls::kExpired ? "-startdate 20200101000000Z -enddate 20200102000000Z" : "-days 2";
    const std::string commands =
        "cd " + std::string(kTls) +
        " && mkdir -p issued && : >index.txt && echo 01 >serial"
        " && printf '[ca]\\ndefault_ca=d\\n[d]\\nnew_certs_dir=issued\\ndatabase=index.txt\\n"
        "serial=serial\\ndefault_md=sha256\\npolicy=p\\ncopy_extensions=copy\\n[p]\\n"
        "commonName=supplied\\n' >ca.cnf"
        " && openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout ca.key"
        " -out ca.pem -days 2 -subj '/CN=Test authority' 2>log"
        " && openssl req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout server.key"
        " -out server.csr -subj '/CN=" +
        host + "' -addext 'subjectAltName=DNS:" + host +
        "' 2>>log && openssl ca -batch -notext -config ca.cnf -cert ca.pem -keyfile ca.key " +
        dates + " -in server.csr -out server.crt 2>>log && cat server.crt server.key >server.pem";
    const RunResult made = run("sh", {"sh", "-c", commands});
    if (made.status != 0)
        throw std::runtime_error("no certificates: " + made.err +
                                 readFile(kTls + std::string("/log")));
}

[[noreturn]] void becomeServer(int ready, Tls tls) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(ready, STDOUT_FILENO);
    const std::string certificate = std::string(kTls) + "/server.pem";
    execlp("python3", "python3", "-I", "-B", kScript, kServedFiles, kFaults, kRequests, "0",
           tls == Tls::kNone ? nullptr : certificate.c_str(), nullptr);
    _exit(127);
}

std::string quoted(const std::string& text) {
    std::string json = "\"";
    for (const char letter : text) {
        if (letter == '"' || letter == '\\') json += '\\';
        json += letter;
    }
    return json + "\"";
}

}  // namespace

FetchSandbox::FetchSandbox(Tls tls)
    : m_script(readFile(THERMIKA_TEST_SUPPORT "/../fetch/support/hostile-server.py")) {
    for (const char* const file : {kFaults, kRequests}) writeFile(file, "");
    writeFile(kScript, m_script);
    std::filesystem::create_directories(kServedFiles);
    setLinks(linksDocument());
    if (tls != Tls::kNone) makeCertificates(tls);
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) throwSystemError("pipe2");
    m_server = fork();
    if (m_server < 0) throwSystemError("fork");
    if (m_server == 0) becomeServer(ready[1], tls);
    close(ready[1]);
    char byte = 0;
    const ssize_t got = read(ready[0], &byte, 1);
    close(ready[0]);
    if (got != 1) throwSystemError("the server does not listen (is python3 installed?)");
}

FetchSandbox::~FetchSandbox() {
    kill(m_server, SIGKILL);
    waitpid(m_server, nullptr, 0);
}

void FetchSandbox::add(const std::string& name, std::string_view bytes) {
    const std::filesystem::path file = kServedFiles + serverPath("14080045", name);
    std::filesystem::create_directories(file.parent_path());
    writeFile(file.string(), bytes);
}

void FetchSandbox::setLinks(std::string_view document) {
    writeFile(kServedFiles + std::string(kLinksPath), document);
}

void FetchSandbox::setFault(const std::string& path, const std::string& fault,
                            const std::string& argument, int times) {
    writeFile(kFaults, readFile(kFaults) + "[" + quoted(path) + ", " + quoted(fault) + ", " +
                           quoted(argument) + ", " + std::to_string(times) + "]\n");
}

void FetchSandbox::setFileFault(const std::string& name, const std::string& fault,
                                const std::string& argument, int times) {
    setFault(serverPath("14080045", name), fault, argument, times);
}

std::vector<std::string> FetchSandbox::requests() {
    std::ifstream file(kRequests);
    std::vector<std::string> paths;
    for (std::string line; std::getline(file, line);)
        paths.push_back(line.substr(line.find(' ') + 1));
    return paths;
}

std::size_t FetchSandbox::connections() {
    std::ifstream file(kRequests);
    std::set<std::string> numbers;
    for (std::string line; std::getline(file, line);)
        numbers.insert(line.substr(0, line.find(' ')));
    return numbers.size();
}

std::size_t FetchSandbox::lastConnection() {
    std::ifstream file(kRequests);
    std::string last;
    for (std::string line; std::getline(file, line);) last = line;
    return std::stoul(last);
}

std::string FetchSandbox::caFile() { return kTls + std::string("/ca.pem"); }

thermika::fetch::Request serverRequest(const std::vector<std::string>& names) {
    return requestFor(names, thermika::fetch::VendorServer{}, kFetched);
}

std::string fetchLines(const std::vector<std::string>& names) {
    return linesOf(thermika::fetch::fetch(serverRequest(names)));
}

}  // namespace thermika_test

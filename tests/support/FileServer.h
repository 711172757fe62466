// The vendor's file server for tests: a real HTTP server under the download host's name, with the
// documented layout and with faults on demand. For use in a sandbox only, whose network it needs.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

namespace thermika_test {

constexpr const char* kLinksPath = "/downloadlinks.xml";  // on the server
inline const std::string kCameraSerial = "14080045";      // of the usual camera

/// Serves from construction to destruction; the folder it serves is empty at first. Needs a
/// DownloadSandbox, which gives it its name. Every failure throws.
class FileServer {
public:
    FileServer();
    ~FileServer();
    FileServer(const FileServer&) = delete;
    FileServer& operator=(const FileServer&) = delete;

    /// Puts a file there; `path` starts with "/", blanks are blanks.
    void add(const std::string& path, std::string_view bytes);

    /// What happens to requests for `path` from now on:
    ///   "missing"   404
    ///   "cut"       half of the body, then the connection closes
    ///   "stall"     half of the body, a pause of a second, the other half
    ///   "empty"     200 and an empty body
    ///   "redirect"  302 to the same file under "/moved"
    /// With "-once" at its end, a fault strikes the first request for that path only; with
    /// "-later", all but the first.
    void setFault(const std::string& path, const std::string& fault);

    /// The paths asked for so far, in their order.
    static std::vector<std::string> requests();

private:
    pid_t m_pid;
};

/// Where the server keeps a file of camera `serial`, which has at least 4 digits.
std::string serverPath(const std::string& serial, const std::string& name);

/// Its address when the server is its own base.
std::string serverAddress(const std::string& path);

/// A download-links document whose `Links` element holds `links`.
std::string linksDocument(const std::string& links);

/// The usual one: one `string` element with the server's own address.
std::string linksDocument();

}  // namespace thermika_test

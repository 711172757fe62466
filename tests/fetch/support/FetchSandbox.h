// A world with a server that serves files well or breaks every rule, and a folder to fetch into.
// For use in a sandbox only, whose network it needs.
#pragma once

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "fetch/Fetch.h"
#include "fetch/support/FetchTest.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace thermika_test {

/// Of the camera's files on the server, as requests name it.
inline const std::string kEncodedFolder = "/14/1408/Califiles%20SN14080045/";

constexpr const char* kFetched = "/usr/share/world/fetched";  // the usual destination

enum class Tls { kNone, kGood, kOtherHost, kExpired };

class FetchSandbox {
public:
    /// The server serves the usual links document, on port 443 too with `tls`.
    explicit FetchSandbox(Tls tls = Tls::kNone);
    ~FetchSandbox();
    FetchSandbox(const FetchSandbox&) = delete;
    FetchSandbox& operator=(const FetchSandbox&) = delete;

    /// Puts a file of the camera on the server.
    static void add(const std::string& name, std::string_view bytes);

    /// In place of the usual links document.
    static void setLinks(std::string_view document);

    /// The first so many requests for `path` meet the fault, one of hostile-server.py's.
    static void setFault(const std::string& path, const std::string& fault,
                         const std::string& argument = "", int times = 1000000);

    /// The same for a file of the camera.
    static void setFileFault(const std::string& name, const std::string& fault,
                             const std::string& argument = "", int times = 1000000);

    /// The paths asked for so far, as they were encoded.
    static std::vector<std::string> requests();
    /// How many connections they came on.
    static std::size_t connections();
    /// The number of the one that the last came on; those without a request are numbered too.
    static std::size_t lastConnection();

    /// The certificate authority of the server.
    static std::string caFile();

private:
    std::string m_script;  // read before the world hides what is below /tmp
    DownloadSandbox m_world;
    pid_t m_server;
};

/// From the vendor's server into kFetched.
thermika::fetch::Request serverRequest(const std::vector<std::string>& names);

/// What fetch() reports of it, in lines.
std::string fetchLines(const std::vector<std::string>& names);

}  // namespace thermika_test

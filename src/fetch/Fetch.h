// Fetches a camera's calibration files safely from the vendor's server, a mirror or a folder. No
// byte of a source reaches a shell, leaves the destination or is installed half. Prints nothing.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace thermika::fetch {

/// Address of the links document on the vendor's server that this library was built for.
std::string vendorLinksAddress();

/// The vendor's server. Its links document (64 KiB at most) names the base address of the files.
struct VendorServer {
    std::string linksAddress = vendorLinksAddress();  ///< of that document
};

/// A server with the vendor's layout: <base>/14/1408/Califiles SN14080045/<file>.
struct Mirror {
    std::string baseAddress;  ///< `<base>`
};

/// A tree of folders, searched to any depth for regular files; no link is followed. Of files with
/// one name the first usable counts: a folder's own, then its subfolders' by their names' bytes.
struct Folder {
    std::string path;  ///< of the uppermost one
};

/// Addresses are http or https, without user name, password, query and fragment. White space around
/// them is ignored; blanks and bytes above 127 in their path are encoded.
using Source = std::variant<VendorServer, Mirror, Folder>;

/// What a call may take.
struct Limits {
    unsigned jobs = 4;                          ///< transfers at a time, 1 to 64
    unsigned retries = 3;                       ///< more tries of one file, 100 at most
    std::chrono::milliseconds firstPause{500};  ///< before a retry; doubles to 30 s
    std::chrono::seconds idle{30};              ///< without a byte, or to connect; 1 at least
    std::chrono::seconds total{3600};           ///< of the whole call; 0: no limit
    std::uint64_t fileBytes = std::uint64_t{64} << 20;  ///< of one file
    std::uint64_t totalBytes = std::uint64_t{4} << 30;  ///< of all files that a call installs
    std::size_t files = 20000;                          ///< names of one call; see Report
};

/// What became of one file.
enum class Outcome {
    kFetched,   ///< installed: whole, checked and on the disk
    kPresent,   ///< was there already: a regular file that is not empty
    kPlanned,   ///< plan(): would be fetched
    kRefused,   ///< against a rule about names or numbers; not tried
    kMissing,   ///< the source does not have it (404 or 410; in no folder)
    kFailed,    ///< tried in vain
    kNotTried,  ///< the call ended before: cancelled, out of time, or Report::problem says why
};

/// Texts hold bytes of sources and names as they are, control bytes included: escape before print.
struct FileReport {
    std::string name;                      ///< as requested
    Outcome outcome = Outcome::kNotTried;  ///< what became of it
    std::string reason;       ///< why not, in English; "" when fetched, present or planned
    std::string source;       ///< address or path; "" when there is none
    std::string destination;  ///< path; "" when the name is refused
    long httpStatus = 0;      ///< the last answer's; 0 without one
    std::uint64_t bytes = 0;  ///< of the file; 0 when it is not there
    unsigned tries = 0;       ///< transfers begun
    bool isLocal = false;     ///< the reason lies in a limit or the destination, not in the source
};

/// How far a call is.
struct Progress {
    std::size_t files = 0;              ///< that this call is about
    std::size_t filesDone = 0;          ///< with an outcome, whichever
    std::uint64_t bytes = 0;            ///< received so far, retries included
    std::uint64_t bytesAnnounced = 0;   ///< of the files begun so far
    const FileReport* ended = nullptr;  ///< the file that just got its outcome, if one did
};

/// What to fetch, from where and to where. Relative paths count from the call's working directory.
struct Request {
    std::string serial;              ///< the camera's, 1 to 20 decimal digits
    std::vector<std::string> names;  ///< one path component each; a repeated name counts once
    Source source;                   ///< where from
    std::string directory;           ///< destination
    bool replacePresent = false;     ///< fetch also what is there already
    /// Asked once all `names` are there: more names, fetched in the same call. The connections to a
    /// server for them are opened meanwhile.
    std::function<std::vector<std::string>()> following;
    bool replaceFollowing = false;  ///< the same for the names that follow
    Limits limits;                  ///< of time, size and number
    std::string caFile;  ///< PEM: certificate authorities to trust instead of the system's
    /// Called once for each file and about ten times a second while bytes arrive. What this and
    /// `following` throw ends the call and comes out of it; files installed by then stay.
    std::function<void(const Progress&)> progress;
    /// The call ends within a second or so after this is true. May be set by a signal handler.
    const std::atomic<bool>* cancel = nullptr;
};

/// Names beyond Limits::files share one refused entry that counts them.
struct Report {
    std::string problem;            ///< why no file, or no more, could be tried; "" otherwise
    bool isLocal = false;           ///< it lies in the destination, not in the source
    std::vector<FileReport> files;  ///< in the order of the request, then those that follow
    bool isComplete() const;        ///< no problem, and every file is fetched, present or planned
};

/// Brings the files into the directory, which is created with its parents (mode 0755) when absent.
/// Each arrives in a file ".thermika-fetch-*.part" there, is checked, given mode 0644 where there
/// are modes, written to the disk and renamed: its final name always means the whole old or new
/// file. A link there is replaced. Part files of killed calls are removed. An answer counts when
/// its status is 200 and it is not empty, as long as announced (a body that just ends with its
/// connection is not) and not content-encoded. At most 5 redirects, to http and https. Certificates
/// are verified. Broken connections, time limits, statuses 408, 429 and 5xx are tried again.
/// Errors come back in the report; out of memory throws std::bad_alloc. May be called in any
/// thread, by several at once, also for one directory; calls back in the calling thread.
/// Process: libcurl is initialised once and stays; SIGPIPE is held back in the calling thread
/// meanwhile; threads that wait for the disk get no signal. Proxy variables count as for curl
/// (http_proxy, https_proxy, HTTPS_PROXY, all_proxy, ALL_PROXY, no_proxy, NO_PROXY). libcurl heeds
/// SSLKEYLOGFILE, OpenSSL its settings file and variables (OPENSSL_CONF, ...), the look-up of names
/// RES_OPTIONS and its like: a program that does not want that removes them, as `thermika` does.
/// Nothing else of the environment and no other settings file is read. A program started meanwhile
/// inherits no descriptor, but for two of libcurl's at a look-up.
Report fetch(const Request& request);

/// What fetch() would do, source and destination of each file. Changes nothing on disk; of servers
/// only the vendor's is asked, for its links document. Neither callback is called.
Report plan(const Request& request);

/// What one question found out.
struct ProbeReport {
    bool answers = false;  ///< with any status; a folder: it can be read
    std::string reason;    ///< why not, or what is wrong with the answer; "" otherwise
    std::string address;   ///< that was asked; a folder's path
    std::string base;      ///< the vendor's server: base address in its links document
    long httpStatus = 0;   ///< 0 without an answer
    std::chrono::microseconds connected{0};  ///< until the connection stood
    std::chrono::microseconds answered{0};   ///< until the first byte of the answer
};

/// Asks the source once whether it answers: the vendor's server for its links document, a mirror
/// for its base address, a folder for its entries. Uses source, limits, caFile and cancel alone.
ProbeReport probe(const Request& request);

}  // namespace thermika::fetch

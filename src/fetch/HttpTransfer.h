// One request to a server at a time, and its answer judged. Knows nothing of files or of other
// transfers.
#pragma once

#include <curl/curl.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "fetch/Fetch.h"
#include "fetch/SpareSockets.h"

namespace thermika::fetch {

/// Takes the bytes of an answer that may be used. What it throws comes out of the transfer.
class Body {
public:
    Body() = default;
    virtual ~Body() = default;
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;

    /// Forgets what it took; a new try begins, or there will be none.
    virtual void discard() = 0;
    /// So many bytes are to come; not called when the answer does not say.
    virtual void announce(std::uint64_t bytes) = 0;
    /// False when it wants no more; problem() says why.
    virtual bool append(std::string_view bytes) = 0;
    virtual std::string problem() const = 0;
};

struct Answer {
    enum class Verdict {
        kGood,         ///< all of it arrived
        kMissing,      ///< there is no such thing
        kBad,          ///< another try would bring the same
        kMayPass,      ///< another try may bring more
        kUnreachable,  ///< no connection to the server: another try may bring one
        kUntrusted,    ///< no connection that may be used
    };
    Verdict verdict = Verdict::kBad;
    std::string reason;    ///< "" when good
    long status = 0;       ///< 0: none came
    bool isLocal = false;  ///< it is too large, or the body wanted no more
    std::chrono::microseconds connected{0};
    std::chrono::microseconds answered{0};
};

class HttpTransfer {
public:
    /// Whether libcurl can be used at all. Safe from any thread.
    /// Process: initialises it, once.
    static bool isPossible();

    /// `caFile` "" means the system's authorities. Takes its connections from `spares` where there
    /// are any, and has the wanted ones opened beside its own. Throws std::bad_alloc.
    HttpTransfer(const Limits& limits, const std::string& caFile, SpareSockets& spares);
    ~HttpTransfer() = default;
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;

    /// The handle is ready to be run afterwards; `body` is used until finish().
    void prepare(const std::string& address, std::uint64_t maxBytes, Body& body);
    /// What came of it; throws what the body threw.
    Answer finish(CURLcode result);

    CURL* handle() const { return m_handle.get(); }

private:
    static int watch(void* self, curl_off_t toReceive, curl_off_t received, curl_off_t toSend,
                     curl_off_t sent);
    static std::size_t takeHeader(char* bytes, std::size_t one, std::size_t count, void* self);
    static std::size_t takeBody(char* bytes, std::size_t one, std::size_t count, void* self);
    static curl_socket_t openSocket(void* self, curlsocktype purpose, curl_sockaddr* address);
    static int setUpSocket(void* self, curl_socket_t socket, curlsocktype purpose);
    static int beforeRequest(void* self, char* primaryIp, char* localIp, int primaryPort,
                             int localPort);

    long status() const;
    bool take(std::string_view bytes);
    bool beginBody();
    /// All values of it, ", " between; "" without one.
    std::string header(const char* name) const;
    bool isRedirected() const;
    Answer judge(CURLcode result) const;
    std::chrono::microseconds time(CURLINFO which) const;

    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> m_handle;
    char m_errorText[CURL_ERROR_SIZE] = {};
    SpareSockets& m_spares;
    int m_takenSpare = -1;  ///< the socket that came from there last
    Body* m_body = nullptr;
    std::uint64_t m_maxBytes = 0;
    std::size_t m_headerBytes = 0;
    std::size_t m_ignoredBytes = 0;
    bool m_isConnected = false;  ///< the request could be sent
    bool m_hasBegun = false;     ///< a body that may be used
    std::string m_refusal;       ///< why the answer is not taken; "" while it is
    bool m_isRefusedByBody = false;
    std::exception_ptr m_thrown;
};

}  // namespace thermika::fetch

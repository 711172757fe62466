// What libcurl is allowed to do, and what each of its results means.
#include "fetch/HttpTransfer.h"

#include <sys/socket.h>

#include <new>
#include <utility>

#include "fetch/Memory.h"

namespace thermika::fetch {

namespace {

constexpr long kMaxRedirects = 5;
constexpr const char* kSchemes = "http,https";
constexpr const char* kUserAgent = "thermika/" THERMIKA_VERSION;
constexpr long kReadBytes = 65536;
// An answer's head has some hundred bytes; errors come with a page.
constexpr std::size_t kMaxHeaderBytes = 65536;
constexpr std::size_t kMaxIgnoredBytes = 65536;  // read so that the connection can serve again

constexpr long kGoodStatus = 200;

// CURLE_TOO_LARGE, which libcurl 8.6 brought.
constexpr auto kTooLarge = static_cast<CURLcode>(100);

template <typename Value>
void set(CURL* handle, CURLoption option, Value value) {
    ensureMemory(curl_easy_setopt(handle, option, value) != CURLE_OUT_OF_MEMORY);
}

bool mayPass(long status) {
    constexpr long kRequestTimeout = 408;
    constexpr long kTooManyRequests = 429;
    return status == kRequestTimeout || status == kTooManyRequests ||
           (status >= 500 && status < 600);
}

bool isGone(long status) {
    constexpr long kNotFound = 404;
    constexpr long kGone = 410;
    return status == kNotFound || status == kGone;
}

bool isRedirect(long status) { return status >= 300 && status < 400; }

Answer::Verdict verdictOf(CURLcode result) {
    switch (result) {
        case CURLE_COULDNT_RESOLVE_PROXY:
        case CURLE_COULDNT_RESOLVE_HOST:
        case CURLE_COULDNT_CONNECT:
        case CURLE_PROXY:
            return Answer::Verdict::kUnreachable;
        case CURLE_PEER_FAILED_VERIFICATION:
        case CURLE_SSL_CACERT_BADFILE:
            return Answer::Verdict::kUntrusted;
        case CURLE_OPERATION_TIMEDOUT:
        case CURLE_SSL_CONNECT_ERROR:
        case CURLE_PARTIAL_FILE:
        case CURLE_GOT_NOTHING:
        case CURLE_SEND_ERROR:
        case CURLE_RECV_ERROR:
        // No answer begins like this: perhaps it is the end of the one before on that connection.
        case CURLE_UNSUPPORTED_PROTOCOL:
        case CURLE_WEIRD_SERVER_REPLY:
            return Answer::Verdict::kMayPass;
        default:
            return Answer::Verdict::kBad;
    }
}

/// The server that was asked did answer; one that it named has failed.
Answer::Verdict forThisAlone(Answer::Verdict verdict) {
    if (verdict == Answer::Verdict::kUnreachable) return Answer::Verdict::kMayPass;
    if (verdict == Answer::Verdict::kUntrusted) return Answer::Verdict::kBad;
    return verdict;
}

}  // namespace

bool HttpTransfer::isPossible() {
    // Never undone: other parts of the program may use libcurl as well.
    static const bool isReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return isReady;
}

HttpTransfer::HttpTransfer(const Limits& limits, const std::string& caFile, SpareSockets& spares)
    : m_handle(curl_easy_init(), curl_easy_cleanup), m_spares(spares) {
    ensureMemory(m_handle != nullptr);
    const auto option = [this](CURLoption which, auto value) { set(handle(), which, value); };
    const auto idleSeconds = static_cast<long>(limits.idle.count());
    option(CURLOPT_NOSIGNAL, 1L);
    option(CURLOPT_QUICK_EXIT, 1L);  // a cancelled call does not wait for a slow name server
    option(CURLOPT_PROTOCOLS_STR, kSchemes);
    option(CURLOPT_REDIR_PROTOCOLS_STR, kSchemes);
    option(CURLOPT_FOLLOWLOCATION, 1L);
    option(CURLOPT_MAXREDIRS, kMaxRedirects);
    option(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
    // One way to say how long a body is, and none to say it wrong: see beginBody().
    option(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    option(CURLOPT_HTTP_CONTENT_DECODING, 0L);
    option(CURLOPT_SSL_VERIFYPEER, 1L);
    option(CURLOPT_SSL_VERIFYHOST, 2L);
    if (!caFile.empty()) {
        option(CURLOPT_CAINFO, caFile.c_str());
        option(CURLOPT_CAPATH, static_cast<char*>(nullptr));
    }
    option(CURLOPT_CONNECTTIMEOUT, idleSeconds);
    option(CURLOPT_LOW_SPEED_LIMIT, 1L);
    option(CURLOPT_LOW_SPEED_TIME, idleSeconds);
    option(CURLOPT_USERAGENT, kUserAgent);
    option(CURLOPT_BUFFERSIZE, kReadBytes);
    option(CURLOPT_ERRORBUFFER, m_errorText);
    option(CURLOPT_OPENSOCKETFUNCTION, &HttpTransfer::openSocket);
    option(CURLOPT_OPENSOCKETDATA, this);
    option(CURLOPT_SOCKOPTFUNCTION, &HttpTransfer::setUpSocket);
    option(CURLOPT_SOCKOPTDATA, this);
    option(CURLOPT_PREREQFUNCTION, &HttpTransfer::beforeRequest);
    option(CURLOPT_PREREQDATA, this);
    option(CURLOPT_NOPROGRESS, 0L);
    option(CURLOPT_XFERINFOFUNCTION, &HttpTransfer::watch);
    option(CURLOPT_XFERINFODATA, this);
    option(CURLOPT_HEADERFUNCTION, &HttpTransfer::takeHeader);
    option(CURLOPT_HEADERDATA, this);
    option(CURLOPT_WRITEFUNCTION, &HttpTransfer::takeBody);
    option(CURLOPT_WRITEDATA, this);
}

void HttpTransfer::prepare(const std::string& address, std::uint64_t maxBytes, Body& body) {
    set(handle(), CURLOPT_URL, address.c_str());
    set(handle(), CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maxBytes));
    m_errorText[0] = '\0';
    m_body = &body;
    m_maxBytes = maxBytes;
    m_headerBytes = 0;
    m_ignoredBytes = 0;
    m_isConnected = false;
    m_hasBegun = false;
    m_refusal.clear();
    m_isRefusedByBody = false;
    m_thrown = nullptr;
}

// NOLINTNEXTLINE(readability-non-const-parameter): libcurl prescribes the type.
int HttpTransfer::beforeRequest(void* self, char* primaryIp, char* /*localIp*/, int primaryPort,
                                int /*localPort*/) {
    auto& transfer = *static_cast<HttpTransfer*>(self);
    transfer.m_isConnected = true;
    try {
        transfer.m_spares.connect(primaryIp, primaryPort);
    } catch (const std::bad_alloc&) {  // it goes on without
    }
    return CURL_PREREQFUNC_OK;
}

// NOLINTNEXTLINE(readability-non-const-parameter): libcurl prescribes the type.
curl_socket_t HttpTransfer::openSocket(void* self, curlsocktype /*purpose*/,
                                       curl_sockaddr* address) {
    auto& transfer = *static_cast<HttpTransfer*>(self);
    transfer.m_takenSpare = transfer.m_spares.take(address->addr);
    if (transfer.m_takenSpare >= 0) return transfer.m_takenSpare;
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

int HttpTransfer::setUpSocket(void* self, curl_socket_t socket, curlsocktype /*purpose*/) {
    const bool isConnected = socket == static_cast<const HttpTransfer*>(self)->m_takenSpare;
    return isConnected ? CURL_SOCKOPT_ALREADY_CONNECTED : CURL_SOCKOPT_OK;
}

int HttpTransfer::watch(void* self, curl_off_t /*toReceive*/, curl_off_t received,
                        curl_off_t /*toSend*/, curl_off_t /*sent*/) {
    // The page of a redirect comes to nobody: libcurl reads it to its end.
    const long status = static_cast<const HttpTransfer*>(self)->status();
    return isRedirect(status) && received > static_cast<curl_off_t>(kMaxIgnoredBytes) ? 1 : 0;
}

std::size_t HttpTransfer::takeHeader(char* /*bytes*/, std::size_t /*one*/, std::size_t count,
                                     void* self) {
    auto& transfer = *static_cast<HttpTransfer*>(self);
    transfer.m_headerBytes += count;
    if (transfer.m_headerBytes <= kMaxHeaderBytes) return count;
    transfer.m_refusal = "the head of the answer is too long";
    return 0;
}

std::size_t HttpTransfer::takeBody(char* bytes, std::size_t /*one*/, std::size_t count,
                                   void* self) {
    auto& transfer = *static_cast<HttpTransfer*>(self);
    try {
        return transfer.take({bytes, count}) ? count : 0;
    } catch (...) {  // not through libcurl, which is C
        transfer.m_thrown = std::current_exception();
        return 0;
    }
}

long HttpTransfer::status() const {
    long status = 0;
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
    return status;
}

bool HttpTransfer::take(std::string_view bytes) {
    if (status() != kGoodStatus) {
        m_ignoredBytes += bytes.size();
        return m_ignoredBytes <= kMaxIgnoredBytes;
    }
    if (!std::exchange(m_hasBegun, true) && !beginBody()) return false;
    if (m_body->append(bytes)) return true;
    m_refusal = m_body->problem();
    m_isRefusedByBody = true;
    return false;
}

bool HttpTransfer::beginBody() {
    const std::string encoding = header("Content-Encoding");
    if (!encoding.empty() && curl_strequal(encoding.c_str(), "identity") == 0) {
        m_refusal = "it is sent encoded (" + encoding + "), which was not asked for";
        return false;
    }
    const std::string transferEncoding = header("Transfer-Encoding");
    curl_off_t length = -1;
    curl_easy_getinfo(handle(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    if (!transferEncoding.empty() && curl_strequal(transferEncoding.c_str(), "chunked") == 0) {
        m_refusal = "it is sent encoded (" + transferEncoding + "), which was not asked for";
        return false;
    }
    const std::string lengths = header("Content-Length");
    if (lengths.find(',') != std::string::npos) {
        m_refusal = "the server gives several lengths (" + lengths + ")";
        return false;
    }
    if (transferEncoding.empty() && length < 0) {
        m_refusal = "the server does not say how long it is";
        return false;
    }
    if (length >= 0) m_body->announce(static_cast<std::uint64_t>(length));
    return true;
}

std::string HttpTransfer::header(const char* name) const {
    constexpr int kLastAnswer = -1;
    std::string values;
    curl_header* found = nullptr;
    for (std::size_t i = 0;
         curl_easy_header(handle(), name, i, CURLH_HEADER, kLastAnswer, &found) == CURLHE_OK; ++i)
        values.append(i == 0 ? "" : ", ").append(found->value);
    return values;
}

Answer HttpTransfer::finish(CURLcode result) {
    if (m_thrown != nullptr) std::rethrow_exception(std::exchange(m_thrown, nullptr));
    return judge(result);
}

std::chrono::microseconds HttpTransfer::time(CURLINFO which) const {
    curl_off_t microseconds = 0;
    curl_easy_getinfo(handle(), which, &microseconds);
    return std::chrono::microseconds(microseconds);
}

bool HttpTransfer::isRedirected() const {
    long redirects = 0;
    curl_easy_getinfo(handle(), CURLINFO_REDIRECT_COUNT, &redirects);
    return redirects > 0;
}

Answer HttpTransfer::judge(CURLcode result) const {
    using Verdict = Answer::Verdict;
    Answer answer;
    answer.status = status();
    answer.connected = time(CURLINFO_CONNECT_TIME_T);
    answer.answered = time(CURLINFO_STARTTRANSFER_TIME_T);
    const bool isWhole = result == CURLE_OK;
    const bool isCutHere = result == CURLE_WRITE_ERROR || result == CURLE_ABORTED_BY_CALLBACK;
    const std::string error = m_errorText[0] != '\0' ? m_errorText : curl_easy_strerror(result);
    if (!m_refusal.empty()) {
        answer.reason = m_refusal;
        answer.isLocal = m_isRefusedByBody;
    } else if (result == CURLE_FILESIZE_EXCEEDED) {
        answer.reason = "it is larger than " + std::to_string(m_maxBytes) + " bytes";
        answer.isLocal = true;
    } else if (result == CURLE_TOO_MANY_REDIRECTS) {
        answer.reason = "it is redirected more than " + std::to_string(kMaxRedirects) + " times";
    } else if (result == CURLE_OUT_OF_MEMORY || result == kTooLarge) {
        // What libcurl before 8.6 answers to a line of the head that is too long as well: a server
        // must not be able to end the call.
        answer.reason = "the head of the answer is too long, or there is no memory left";
    } else if (result == CURLE_UNSUPPORTED_PROTOCOL && isRedirect(answer.status)) {
        answer.reason = "it is redirected to an address that is neither http nor https";
    } else if (isWhole && answer.status == kGoodStatus) {
        answer.verdict = Verdict::kGood;
    } else if ((isWhole || isCutHere) && answer.status != 0) {
        // A page that is too long to be ignored to its end counts as one that was.
        const std::string status = std::to_string(answer.status);
        answer.reason = isGone(answer.status) ? "the server does not have it (" + status + ")"
                                              : "the server answered " + status;
        if (isGone(answer.status)) answer.verdict = Verdict::kMissing;
        if (mayPass(answer.status)) answer.verdict = Verdict::kMayPass;
    } else {
        answer.verdict = verdictOf(result);
        // No time tells: that of a connection which served before is 0 as well.
        if (result == CURLE_OPERATION_TIMEDOUT && !m_isConnected)
            answer.verdict = Verdict::kUnreachable;
        if (isRedirected()) answer.verdict = forThisAlone(answer.verdict);
        answer.reason = "the transfer failed: " + error;
    }
    return answer;
}

}  // namespace thermika::fetch

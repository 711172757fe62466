// Credentials are refused since addresses are shown in reports; a query or fragment since a path is
// put behind the address.
#include "fetch/Address.h"

#include <curl/curl.h>

#include <memory>

#include "fetch/Memory.h"
#include "sdk/camera/DownloadLinks.h"

namespace thermika::fetch {

namespace {

using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

std::string_view withoutWhiteSpaceAround(std::string_view text) {
    constexpr std::string_view kWhiteSpace = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kWhiteSpace);
    if (first == std::string_view::npos) return "";
    return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

/// Of a parsed address, which has such a part.
std::string part(CURLU* url, CURLUPart which) {
    char* text = nullptr;
    ensureMemory(curl_url_get(url, which, &text, 0) == CURLUE_OK);
    const std::unique_ptr<char, decltype(&curl_free)> owned(text, curl_free);
    return text;
}

std::string parse(CURLU* url, const std::string& text) {
    constexpr unsigned kFlags = CURLU_DISALLOW_USER | CURLU_ALLOW_SPACE | CURLU_URLENCODE;
    const CURLUcode result = curl_url_set(url, CURLUPART_URL, text.c_str(), kFlags);
    ensureMemory(result != CURLUE_OUT_OF_MEMORY);
    if (result == CURLUE_USER_NOT_ALLOWED) return "it holds a user name";
    if (result != CURLUE_OK) return curl_url_strerror(result);
    const std::string scheme = part(url, CURLUPART_SCHEME);
    if (scheme != "http" && scheme != "https") return "it is neither http nor https";
    if (text.find_first_of("?#") != std::string::npos) return "it has a query or a fragment";
    return "";
}

bool isPlain(char letter) {
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~";
    return kPlain.find(letter) != std::string_view::npos;
}

std::string encoded(std::string_view piece) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string text;
    for (const char letter : piece) {
        const auto byte = static_cast<unsigned char>(letter);
        if (isPlain(letter))
            text += letter;
        else
            (text += '%').append({kDigits[byte >> 4], kDigits[byte & 15]});
    }
    return text;
}

}  // namespace

std::string checkedAddress(std::string_view text, std::string& problem) {
    const std::string address(withoutWhiteSpaceAround(text));
    const auto refuse = [&](const std::string& why) {
        problem = "the address \"" + address + "\" cannot be used: " + why;
        return std::string();
    };
    if (address.empty()) return refuse("it is empty");
    if (address.find('\0') != std::string::npos) return refuse("it holds a zero byte");
    const Url url(curl_url(), curl_url_cleanup);
    ensureMemory(url != nullptr);
    const std::string why = parse(url.get(), address);
    return why.empty() ? part(url.get(), CURLUPART_URL) : refuse(why);
}

std::string fileAddress(const std::string& base, std::string_view serial, std::string_view name) {
    std::string address = base;
    if (address.back() == '/') address.pop_back();
    for (const std::string& piece : dax::serverPath(serial, name)) address += "/" + encoded(piece);
    return address;
}

}  // namespace thermika::fetch

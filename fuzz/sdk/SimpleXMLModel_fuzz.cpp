// The reader beside a plain model of it, on any two documents one after the other: the same calls,
// the same answers and log lines. The input's last bytes say what is asked, the last one of all the
// root's name, so that a plain document is a seed as it stands.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>

#include "support/ReaderComparison.h"

namespace {

using thermika_test::ReaderCall;

constexpr std::size_t kCallBytes = 4;
constexpr std::size_t kCalls = 32;
constexpr const char* kRoots[] = {"CaliData", "CaliData", "DownloadLinks", "R", "", "CaliData x"};
constexpr const char* kNames[] = {
    "OpticsDef", "TemperatureRange", "TempRanges", "Framerate", "FR",
    "Main",      "Temperature",      "Optics",     "FOV",       "Text",
    "TempLo",    "TempHi",           "a",          "b",         "",
    "CaliData",  "Imager",           "Links",      "string",    "a><b"};

/// Its name is one of ours or a piece of the document, markup included.
ReaderCall callOf(const std::uint8_t* bytes, const std::string& document) {
    ReaderCall call;
    call.kind = static_cast<ReaderCall::Kind>(bytes[0] % ReaderCall::kKinds);
    call.closing = bytes[0] >= 128;
    call.index = bytes[2] % 64 - 1;
    const auto places = static_cast<int>(document.size()) + 40;
    call.from = bytes[2] * places / 256 - 20;
    call.limit = bytes[3] == 255 ? places : bytes[3] * places / 256 - 20;
    const std::size_t at = bytes[2] * document.size() / 256;
    call.name =
        bytes[1] < 192 ? kNames[bytes[1] % std::size(kNames)] : document.substr(at, bytes[3] % 16);
    return call;
}

void compare(thermika_test::ReaderComparison& twins, const std::string& document,
             const std::string& calls) {
    const char* const root = kRoots[static_cast<unsigned char>(calls.back()) % std::size(kRoots)];
    bool isSame = twins.open(document, root);
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(calls.data());
    for (std::size_t at = 0; isSame && at + kCallBytes < calls.size(); at += kCallBytes)
        isSame = twins.both(callOf(bytes + at, document));
    if (!isSame) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string document(reinterpret_cast<const char*>(data), size);
    const std::string calls = document.substr(size - std::min(size, kCalls * kCallBytes + 1));
    thermika_test::ReaderComparison twins;
    compare(twins, document.substr(0, size / 2), calls);
    compare(twins, document, calls);
    return 0;
}

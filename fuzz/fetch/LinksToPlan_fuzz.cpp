// From a links document to the address of a file, whatever the server sent and whatever the file is
// called: an address is http or https, the parser leaves it as it is, and a name that may be used
// is one piece at its end.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fetch/Address.h"
#include "fetch/FileName.h"
#include "fetch/LinksDocument.h"

namespace {

using namespace thermika::fetch;

void require(bool kept) {
    if (!kept) std::abort();
}

bool beginsWith(std::string_view text, std::string_view begin) {
    return text.substr(0, begin.size()) == begin;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    std::string problem;
    const std::string base = baseAddressIn(input, problem);
    require(base.empty() == !problem.empty());
    if (base.empty()) return 0;
    require(beginsWith(base, "http://") || beginsWith(base, "https://"));
    require(checkedAddress(base, problem) == base && problem.empty());

    // What follows the document's end is a name.
    const std::string name(input.substr(input.rfind('>') + 1));
    if (!nameRefusal(name).empty()) return 0;
    const std::string address = fileAddress(base, "14080045", name);
    require(checkedAddress(address, problem) == address && problem.empty());
    const std::size_t end = address.rfind("/14/1408/Califiles%20SN14080045/");
    require(end != std::string::npos);
    const std::string_view piece =
        std::string_view(address).substr(address.find("SN14080045/", end) + 11);
    require(!piece.empty() && piece.find('/') == std::string_view::npos);
    for (const char letter : piece) require(letter > 0x20 && letter < 0x7f);
    return 0;
}

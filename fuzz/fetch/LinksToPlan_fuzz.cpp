// From a links document and a description to what would be fetched, whatever the server sent and
// whatever the files are called: an address is http or https, the parser leaves it as it is, a name
// that may be used is one piece at its end, and every other is refused with a reason. The input is
// both documents in one.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "fetch/Address.h"
#include "fetch/Fetch.h"
#include "fetch/LinksDocument.h"
#include "imgproc/Cali.h"
#include "sdk/camera/FileCheck.h"
#include "support/TestFiles.h"

namespace {

using namespace thermika::fetch;

constexpr std::size_t kMostNames = 50;

void require(bool kept) {
    if (!kept) std::abort();
}

bool beginsWith(std::string_view text, std::string_view begin) {
    return text.substr(0, begin.size()) == begin;
}

/// What follows the document's end is a name, too.
std::vector<std::string> namesIn(std::string_view input) {
    static const thermika_test::TempDir folder;
    static int serial = 1;
    serial = 3 - serial;  // another one each time, so that the description is read
    const std::size_t end = input.rfind('>');
    std::vector<std::string> names;
    names.emplace_back(end == std::string_view::npos ? input : input.substr(end + 1));
    thermika_test::writeFile(folder / ("Cali-" + std::to_string(serial) + ".xml"), input);
    if (ConfigCali::getInstance()->load(folder.path().c_str(), serial) == 0)
        for (const dax::ExpectedFile& file : dax::expectedFiles(serial, {}, 2 * kMostNames))
            names.push_back(file.name);
    return names;
}

void checkPlanned(const FileReport& file, const std::string& base) {
    std::string problem;
    require(file.name.find('/') == std::string::npos && file.name != "..");
    require(file.reason.empty() && file.destination == "/none/" + file.name);
    require(checkedAddress(file.source, problem) == file.source && problem.empty());
    require(beginsWith(file.source, base));
    constexpr std::string_view kFolder = "/14/1408/Califiles%20SN14080045/";
    const std::size_t end = file.source.rfind(kFolder);
    require(end != std::string::npos);
    const std::string_view piece = std::string_view(file.source).substr(end + kFolder.size());
    require(!piece.empty() && piece.find('/') == std::string_view::npos);
    for (const char letter : piece) require(letter > 0x20 && letter < 0x7f);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    std::string problem;
    std::string base = baseAddressIn(input, problem);
    require(base.empty() == !problem.empty());
    if (base.empty()) base = "http://mirror.example/";
    require(beginsWith(base, "http://") || beginsWith(base, "https://"));
    require(checkedAddress(base, problem) == base);

    Request request;
    request.serial = "14080045";
    request.names = namesIn(input);
    request.source = Mirror{base};  // which no plan asks
    request.directory = "/none";
    request.limits.files = kMostNames;
    request.limits.jobs = 1;
    const Report report = plan(request);
    require(report.problem.empty());
    require(!report.files.empty() && report.files.size() <= kMostNames + 1);
    for (const FileReport& file : report.files)
        if (file.outcome == Outcome::kPlanned)
            checkPlanned(file, base);
        else
            require(file.outcome == Outcome::kRefused && !file.reason.empty() &&
                    file.source.empty() && file.destination.empty());
    return 0;
}

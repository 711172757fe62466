// The links document, whatever the server sent: the base address is the one that a plain model of
// the reader finds on the same way.
#include "sdk/camera/DownloadLinks.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

#include "support/ReaderModel.h"
#include "support/TestFiles.h"

namespace {

void require(bool kept) {
    if (!kept) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const thermika_test::TempDir folder;
    const std::string path = folder / "downloadlinks.xml";
    thermika_test::writeFile(path, {reinterpret_cast<const char*>(data), size});
    const std::optional<dax::DownloadLinks> links = dax::readDownloadLinks(path.c_str());

    thermika_test::ReaderModel model;
    require(model.open(path.c_str(), "DownloadLinks") == links.has_value());
    if (!links) return 0;
    model.setNode();
    const bool hasImager = model.setNode("Imager");
    const bool hasCaliData = model.setNode("CaliData");
    const bool hasLinks = model.setNode("Links");
    require(links->hasLinks == (hasImager && hasCaliData && hasLinks));
    char* text = nullptr;
    const bool hasBase = links->hasLinks && model.getString("string", &text);
    const std::unique_ptr<char[]> owned(text);
    require(links->base.has_value() == hasBase);
    require(!hasBase || *links->base == text);
    return 0;
}

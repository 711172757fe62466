// The reader, fed with any document and walked through in any order: the input's last bytes say
// what is asked, so that a plain document is a seed as it stands.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string_view>

#include "sdk/SimpleXML.h"
#include "support/TestFiles.h"

namespace {

constexpr std::size_t kOperations = 48;
constexpr const char* kNames[] = {
    "OpticsDef", "TemperatureRange", "TempRanges", "Framerate", "FR",
    "Main",      "Temperature",      "Optics",     "FOV",       "Text",
    "TempLo",    "TempHi",           "a",          "b",         "",
    "CaliData"};

void require(bool kept) {
    if (!kept) std::abort();
}

void readEverything(dax::SimpleXML& document, const char* name) {
    int number = 0;
    long wide = 0;
    unsigned short narrow = 0;
    bool flag = false;
    float fraction = 0;
    char* text = nullptr;
    const bool isThere = document.getString(name, &text);
    const std::unique_ptr<char[]> owned(text);
    require(isThere == (text != nullptr));
    require(document.getInt(name, &number) == isThere);
    require(document.getLong(name, &wide) == isThere);
    require(document.getUnsignedShort(name, &narrow) == isThere);
    require(document.getBool(name, &flag) == isThere);
    require(document.getFloat(name, &fraction) == isThere);
    require(document.setNode(name) == isThere);
    if (isThere) require(document.resetNode());
}

void visitAll(dax::SimpleXML& document, const char* name) {
    const int count = std::min(document.getNodeCount(name), 64);
    for (int i = 0; i < count; ++i) {
        if (document.setNode(name, i)) require(document.resetNode());
    }
}

void step(dax::SimpleXML& document, std::uint8_t operation) {
    const char* const name = kNames[operation % std::size(kNames)];
    char* text = nullptr;
    switch (operation / std::size(kNames) % 8) {
        case 0:
            return void(document.setNode());
        case 1:
        case 2:
            return void(document.setNode(name));
        case 3:
            return void(document.setNode(name, operation / 64));
        case 4:
            return void(document.resetNode());
        case 5:
            document.getNode(&text);
            return delete[] text;
        case 6:
            return readEverything(document, name);
        default:
            return visitAll(document, name);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const thermika_test::TempDir folder;
    const std::string path = folder / "input.xml";
    thermika_test::writeFile(path, {reinterpret_cast<const char*>(data), size});
    dax::SimpleXML document;
    document.open(path.c_str(), "CaliData");
    std::for_each(data + size - std::min(size, kOperations), data + size,
                  [&](std::uint8_t operation) { step(document, operation); });
    return 0;
}

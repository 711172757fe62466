// The calibration data, loaded from any document and asked everything about what it then offers.
// The checks hold for every description.
#include "imgproc/Cali.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/TestFiles.h"

namespace {

constexpr int kSerial = 14080045;
constexpr int kAsked = 12;  // of a kind: a description may hold thousands

void require(bool kept) {
    if (!kept) std::abort();
}

void askRates(ConfigCali& cali, OPTICS& optics, Range& range) {
    const int count = cali.getFramerateCount(&optics, &range);
    for (int i = -1; i <= std::min(count, kAsked); ++i) {
        unsigned short rate = cali.getFramerate(&optics, &range, i);
        const int found = cali.getFramerateIndex(&optics, &range, rate);
        if (i >= 0 && i < count) require(found >= 0 && found <= i);
        require(cali.checkFramerate(&optics, &range, rate) == (found != -2));
        require(found >= 0 || rate == 0);
    }
}

void askRange(ConfigCali& cali, OPTICS& optics, int index) {
    const std::unique_ptr<Range> range(cali.getTempRange(&optics, index));
    const std::unique_ptr<Range> extended(cali.getExtendedTempRange(&optics, index));
    require((range == nullptr) == (extended == nullptr));
    if (!range) return;
    const int found = cali.getTempRangeIndex(&optics, range.get());
    require(found <= index);
    require(found >= 0 || std::isnan(range->min) || std::isnan(range->max));
    const std::unique_ptr<Range> matched(
        cali.getExtendedTempRange(optics.fov, optics.text, range->min, range->max));
    require((matched != nullptr) == (found >= 0));
    cali.getTempRangeDecimal(optics.fov, optics.text, range->min, range->max);
    char name[40];
    std::memset(name, '#', sizeof name);
    require(ConfigCali::caliFilenameString(kSerial, optics.fov, optics.text, range.get(), 27, name,
                                           sizeof name));
    require(std::memchr(name, '\0', sizeof name) != nullptr);
    askRates(cali, optics, *range);
}

void askOptics(ConfigCali& cali, int index) {
    const std::unique_ptr<OPTICS> optics(cali.getOptics(index));
    cali.isSamplePointCali(index);
    if (!optics) return;
    const int strict = cali.getOpticsIndex(optics.get());
    const int lenient = cali.getOpticsIndex(optics->fov, optics->text);
    require(lenient >= 0 && lenient <= strict && strict <= index);
    const std::unique_ptr<Range> all(cali.getTempRangeOverAll(optics.get()));
    require(all != nullptr);
    const int ranges = cali.getTempRangeCount(optics.get());
    for (int j = -1; j <= std::min(ranges, kAsked); ++j) askRange(cali, *optics, j);
}

void askEverything(ConfigCali& cali) {
    for (int i = -1; i <= std::min(cali.getOpticsCount(), kAsked); ++i) askOptics(cali, i);
    delete cali.getTempRangeOverAll();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const thermika_test::TempDir folder;
    thermika_test::writeFile(folder / "Cali-14080045.xml",
                             {reinterpret_cast<const char*>(data), size});
    ConfigCali cali;
    const bool isLoaded = cali.load(folder.path().c_str(), kSerial) == 0;
    require(cali.isLoaded(kSerial) == isLoaded);
    const int count = cali.getOpticsCount();
    require(isLoaded || count == 1);
    askEverything(cali);
    // A camera without a description: the built-in one takes this one's place.
    require(cali.load(folder.path().c_str(), kSerial + 1) != 0 && cali.getOpticsCount() == 1);
    askEverything(cali);
    require((cali.load(folder.path().c_str(), kSerial) == 0) == isLoaded);
    require(cali.getOpticsCount() == count);
    askEverything(cali);
    return 0;
}

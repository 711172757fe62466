// The walk over optics, ranges and frame rates.
#include "sdk/camera/ExpectedFiles.h"

#include <algorithm>
#include <vector>

#include "imgproc/Cali.h"
#include "sdk/base/PathLimits.h"

namespace dax {

void forEachFileStem(int serial,
                     const std::function<void(const char* stem, bool needsCurve)>& take) {
    ConfigCali* const cali = ConfigCali::getInstance();
    char stem[kPathBytes];
    OPTICS optics{};
    std::vector<Range> ranges;
    for (int i = 0; cali->copyOptics(i, optics); ++i) {
        // Deliberate: the flag is that of the optics at this position, its ranges are those of the
        // first optics with the same field of view and text.
        const bool needsCurve = !cali->isSamplePointCali(i);
        cali->copyTempRanges(optics, ranges);
        for (Range& range : ranges) {
            const int rates = cali->getFramerateCount(&optics, &range);
            for (int f = 0; f < std::max(rates, 1); ++f) {
                const unsigned short rate = cali->getFramerate(&optics, &range, f);  // 0: none
                ConfigCali::caliFilenameString(serial, optics.fov, optics.text, &range, rate, stem,
                                               kPathBytes);
                take(stem, needsCurve);
            }
        }
    }
}

}  // namespace dax

// The walk over a description's optics, ranges and frame rates: which names it makes, in which
// order, and which of them need a curve.
#include "sdk/camera/ExpectedFiles.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "imgproc/Cali.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::inSandbox;
using thermika_test::writeFile;

using Stems = std::vector<std::pair<std::string, bool>>;  // with whether a curve is needed

constexpr int kSerial = 12345678;
constexpr bool kCurve = true;

std::string range(std::string_view low, std::string_view high, std::string_view rates = "") {
    std::string element = "<TemperatureRange>\n<TempLo>";
    element.append(low).append("</TempLo>\n<TempHi>").append(high).append("</TempHi>\n");
    return element.append(rates).append("</TemperatureRange>\n");
}

std::string rates(const std::vector<int>& values) {
    std::string element = "<Framerates>\n";
    for (const int value : values)
        element += "<Framerate><FR>" + std::to_string(value) + "</FR></Framerate>\n";
    return element + "</Framerates>\n";
}

std::string optics(int fov, const std::string& text, const std::string& ranges,
                   bool isSamplePointCali = false) {
    return "<OpticsDef>\n<FOV>" + std::to_string(fov) + "</FOV>\n<Text>" + text +
           "</Text>\n<SamplePointCali>" + (isSamplePointCali ? "true" : "false") +
           "</SamplePointCali>\n<TempRanges>\n" + ranges + "</TempRanges>\n</OpticsDef>\n";
}

/// The stems for camera `serial` when this is the description that is loaded.
void expectStems(const std::string& opticsList, const Stems& expected, int serial = kSerial) {
    inSandbox([&] {
        writeFile("/usr/share/Cali-12345678.xml", "<CaliData>\n<Temperature>\n<Optics>\n" +
                                                      opticsList +
                                                      "</Optics>\n</Temperature>\n</CaliData>\n");
        const thermika_test::StderrCapture quiet;
        ASSERT_EQ(ConfigCali::getInstance()->load("/usr/share", kSerial), 0);
        Stems found;
        dax::forEachFileStem(serial, [&found](const char* stem, bool needsCurve) {
            found.emplace_back(stem, needsCurve);
        });
        EXPECT_EQ(found, expected);
    });
}

TEST(ExpectedFiles, nameEveryFrameRate) {
    expectStems(optics(33, "", range("-20", "100", rates({27, 80}))),
                {{"12345678-33-M20-100-27", kCurve}, {"12345678-33-M20-100-80", kCurve}});
}

TEST(ExpectedFiles, nameTheOpticsText) {
    expectStems(optics(33, "O33", range("-20", "100", rates({27, 80}))),
                {{"12345678-33-O33-M20-100-27", kCurve}, {"12345678-33-O33-M20-100-80", kCurve}});
}

TEST(ExpectedFiles, needNoCurvesForSamplePoints) {
    expectStems(optics(33, "", range("-20", "100", rates({27, 80})), true),
                {{"12345678-33-M20-100-27", !kCurve}, {"12345678-33-M20-100-80", !kCurve}});
}

TEST(ExpectedFiles, nameNoFrameRateOfZeroAndNoneWhereNoneIsListed) {
    expectStems(optics(33, "", range("-20", "100", rates({0, 27}))),
                {{"12345678-33-M20-100", kCurve}, {"12345678-33-M20-100-27", kCurve}});
    expectStems(optics(33, "", range("-20", "100")), {{"12345678-33-M20-100", kCurve}});
    expectStems(optics(33, "", range("-20", "100", rates({}))), {{"12345678-33-M20-100", kCurve}});
}

TEST(ExpectedFiles, comeInTheDescriptionsOrder) {
    expectStems(optics(53, "B", range("0", "250", rates({80, 27})) + range("-20", "100")) +
                    optics(18, "A", range("150", "900"), true),
                {{"12345678-53-B-0-250-80", kCurve},
                 {"12345678-53-B-0-250-27", kCurve},
                 {"12345678-53-B-M20-100", kCurve},
                 {"12345678-18-A-150-900", !kCurve}});
}

TEST(ExpectedFiles, dropFractionsAndMarkNegativeBounds) {
    expectStems(
        optics(33, "", range("-20.9", "99.9") + range("-0.5", "-0.0") + range("-2e1", "1e2")),
        {{"12345678-33-M20-99", kCurve},
         {"12345678-33-M0-0", kCurve},
         {"12345678-33-M20-100", kCurve}});
}

TEST(ExpectedFiles, takeTheFrameRatesOfTheFirstRangeWithTheSameBounds) {
    expectStems(optics(33, "", range("0", "250", rates({27})) + range("0", "250", rates({80, 9}))),
                {{"12345678-33-0-250-27", kCurve}, {"12345678-33-0-250-27", kCurve}});
}

TEST(ExpectedFiles, takeTheRangesOfTheFirstOfTwinOpticsButTheFlagOfEach) {
    expectStems(optics(33, "T", range("0", "250")) + optics(33, "T", range("1", "9"), true),
                {{"12345678-33-T-0-250", kCurve}, {"12345678-33-T-0-250", !kCurve}});
}

TEST(ExpectedFiles, carryTheSerialThatIsAskedFor) {
    expectStems(optics(33, "", range("0", "250")), {{"7-33-0-250", kCurve}}, 7);
}

TEST(ExpectedFiles, areCutWhereANameEnds) {
    const std::string longText(300, 't');
    expectStems(optics(33, longText, range("0", "250")),
                {{("12345678-33-" + longText).substr(0, 259), kCurve}});
}

}  // namespace

// The files that a description calls for: their names and order, what each is for, and which
// combinations need a curve.
#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "imgproc/Cali.h"
#include "sdk/camera/FileCheck.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

using dax::ExpectedFile;
using dax::FileKind;
using thermika_test::inSandbox;
using thermika_test::writeFile;

using Stems = std::vector<std::pair<std::string, bool>>;  // with whether there is a curve file

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

void load(const std::string& opticsList) {
    writeFile("/usr/share/Cali-12345678.xml", "<CaliData>\n<Temperature>\n<Optics>\n" + opticsList +
                                                  "</Optics>\n</Temperature>\n</CaliData>\n");
    const thermika_test::StderrCapture quiet;
    ASSERT_EQ(ConfigCali::getInstance()->load("/usr/share", kSerial), 0);
}

/// What the names for camera `serial` are made of when this is the description that is loaded.
void expectStems(const std::string& opticsList, const Stems& expected, int serial = kSerial) {
    inSandbox([&] {
        load(opticsList);
        Stems found;
        for (const ExpectedFile& file : dax::expectedFiles(serial, {"%i", "%s", "%s"})) {
            if (file.kind == FileKind::kData) found.emplace_back(file.name, !kCurve);
            if (file.kind == FileKind::kCurve) {
                EXPECT_EQ(file.name, found.back().first);
                found.back().second = kCurve;
            }
        }
        EXPECT_EQ(found, expected);
    });
}

TEST(FileCheckExpected, beginsWithTheDescriptionAndTellsWhatEachFileIsFor) {
    inSandbox([] {
        load(optics(53, "B", range("0", "250", rates({80, 0})) + range("-20", "100")) +
             optics(18, "", range("150", "900"), true));
        const std::vector<ExpectedFile> expected = {
            {"Cali-12345678.xml"},
            {"Cali-12345678-53-B-0-250-80.dat", FileKind::kData, 0, 0, 80},
            {"Kennlinie-12345678-53-B-0-250-80.prn", FileKind::kCurve, 0, 0, 80},
            {"Cali-12345678-53-B-0-250.dat", FileKind::kData, 0, 0, 0},
            {"Kennlinie-12345678-53-B-0-250.prn", FileKind::kCurve, 0, 0, 0},
            {"Cali-12345678-53-B-M20-100.dat", FileKind::kData, 0, 1, 0},
            {"Kennlinie-12345678-53-B-M20-100.prn", FileKind::kCurve, 0, 1, 0},
            {"Cali-12345678-18-150-900.dat", FileKind::kData, 1, 0, 0}};
        const std::vector<ExpectedFile> files = dax::expectedFiles(kSerial);
        ASSERT_EQ(files.size(), expected.size());
        for (std::size_t i = 0; i < files.size(); ++i) {
            EXPECT_EQ(files[i].name, expected[i].name);
            EXPECT_EQ(files[i].kind, expected[i].kind) << files[i].name;
            EXPECT_EQ(files[i].opticsIndex, expected[i].opticsIndex) << files[i].name;
            EXPECT_EQ(files[i].rangeIndex, expected[i].rangeIndex) << files[i].name;
            EXPECT_EQ(files[i].framerate, expected[i].framerate) << files[i].name;
        }
    });
}

TEST(FileCheckExpected, namesEveryFrameRate) {
    expectStems(optics(33, "", range("-20", "100", rates({27, 80}))),
                {{"12345678-33-M20-100-27", kCurve}, {"12345678-33-M20-100-80", kCurve}});
}

TEST(FileCheckExpected, namesTheOpticsText) {
    expectStems(optics(33, "O33", range("-20", "100", rates({27, 80}))),
                {{"12345678-33-O33-M20-100-27", kCurve}, {"12345678-33-O33-M20-100-80", kCurve}});
}

TEST(FileCheckExpected, needsNoCurvesForSamplePoints) {
    expectStems(optics(33, "", range("-20", "100", rates({27, 80})), true),
                {{"12345678-33-M20-100-27", !kCurve}, {"12345678-33-M20-100-80", !kCurve}});
}

TEST(FileCheckExpected, namesNoFrameRateOfZeroAndNoneWhereNoneIsListed) {
    expectStems(optics(33, "", range("-20", "100", rates({0, 27}))),
                {{"12345678-33-M20-100", kCurve}, {"12345678-33-M20-100-27", kCurve}});
    expectStems(optics(33, "", range("-20", "100")), {{"12345678-33-M20-100", kCurve}});
    expectStems(optics(33, "", range("-20", "100", rates({}))), {{"12345678-33-M20-100", kCurve}});
}

TEST(FileCheckExpected, comesInTheDescriptionsOrder) {
    expectStems(optics(53, "B", range("0", "250", rates({80, 27})) + range("-20", "100")) +
                    optics(18, "A", range("150", "900"), true),
                {{"12345678-53-B-0-250-80", kCurve},
                 {"12345678-53-B-0-250-27", kCurve},
                 {"12345678-53-B-M20-100", kCurve},
                 {"12345678-18-A-150-900", !kCurve}});
}

TEST(FileCheckExpected, dropsFractionsAndMarksNegativeBounds) {
    expectStems(
        optics(33, "", range("-20.9", "99.9") + range("-0.5", "-0.0") + range("-2e1", "1e2")),
        {{"12345678-33-M20-99", kCurve},
         {"12345678-33-M0-0", kCurve},
         {"12345678-33-M20-100", kCurve}});
}

TEST(FileCheckExpected, takesTheFrameRatesOfTheFirstRangeWithTheSameBounds) {
    expectStems(optics(33, "", range("0", "250", rates({27})) + range("0", "250", rates({80, 9}))),
                {{"12345678-33-0-250-27", kCurve}, {"12345678-33-0-250-27", kCurve}});
}

TEST(FileCheckExpected, takesTheRangesOfTheFirstOfTwinOpticsButTheFlagOfEach) {
    expectStems(optics(33, "T", range("0", "250")) + optics(33, "T", range("1", "9"), true),
                {{"12345678-33-T-0-250", kCurve}, {"12345678-33-T-0-250", !kCurve}});
}

TEST(FileCheckExpected, carriesTheSerialThatIsAskedFor) {
    expectStems(optics(33, "", range("0", "250")), {{"7-33-0-250", kCurve}}, 7);
}

TEST(FileCheckExpected, cutsWhereANameEnds) {
    const std::string longText(300, 't');
    expectStems(optics(33, longText, range("0", "250")),
                {{("12345678-33-" + longText).substr(0, 259), kCurve}});
}

TEST(FileCheckExpected, endsOnceThereAreAsManyAsAskedFor) {
    inSandbox([] {
        const std::string ranges = range("-20", "100", rates({27, 80})) + range("0", "250");
        load(optics(33, "", ranges, true) + optics(60, "", ranges));
        const std::vector<ExpectedFile> all = dax::expectedFiles(kSerial);
        ASSERT_EQ(all.size(), 10U);
        for (std::size_t most = 1; most <= all.size() + 1; ++most) {
            const std::vector<ExpectedFile> some = dax::expectedFiles(kSerial, {}, most);
            EXPECT_GE(some.size(), std::min(most, all.size()));
            EXPECT_LE(some.size(), most + 1);  // data and curve file come together
            for (std::size_t i = 0; i < some.size(); ++i) EXPECT_EQ(some[i].name, all[i].name);
        }
    });
}

}  // namespace

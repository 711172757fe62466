// See the header.
#include "support/CaliTest.h"

#include <filesystem>

#include "imgproc/Cali.h"

namespace thermika_test {

std::string rangeElement(std::string_view low, std::string_view high,
                         const std::vector<int>& rates) {
    std::string list = "<Framerates>\n";
    for (const int rate : rates)
        list += "<Framerate><FR>" + std::to_string(rate) + "</FR></Framerate>\n";
    return rangeElement(low, high, list + "</Framerates>\n");
}

std::string samplePointOpticsElement(int fov, std::string_view text, std::string_view ranges) {
    constexpr std::string_view kStart = "<OpticsDef>";
    std::string optics = opticsElement(fov, text, ranges);
    return optics.insert(optics.find(kStart) + kStart.size(),
                         "<SamplePointCali>true</SamplePointCali>");
}

void forgetDescription() {
    const TempDir empty;
    constexpr int kNoCamera = 1;
    ConfigCali::getInstance()->load(empty.path().c_str(), kNoCamera);
}

CaliTest::CaliTest() {
    std::filesystem::create_directory(m_cali);
    forgetDescription();
    delete dax::IRCalibrationManager::getInstance();
    manager().setCalibrationDir(m_cali.c_str());
}

CaliTest::~CaliTest() { delete dax::IRCalibrationManager::getInstance(); }

void CaliTest::describe(unsigned long serial, std::string_view optics) const {
    writeFile(m_cali + "/Cali-" + std::to_string(serial) + ".xml", description(opticsList(optics)));
}

}  // namespace thermika_test

#include "support/CameraFiles.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "imgproc/Cali.h"
#include "sdk/IRCalibrationManager.h"

namespace bench {

namespace {

std::string element(std::string_view name, std::string_view content) {
    std::string text = "<";
    return text.append(name).append(">").append(content).append("</").append(name).append(">\n");
}

std::string describe(CameraSize size) {
    std::string rates;
    for (int f = 0; f < size.ratesPerRange; ++f)
        rates += element("Framerate", element("FR", std::to_string(f + 1)));
    std::string ranges;
    for (int j = 0; j < size.rangesPerOptics; ++j)
        ranges += element("TemperatureRange", element("TempLo", std::to_string(50 * j - 20)) +
                                                  element("TempHi", std::to_string(75 * j + 100)) +
                                                  element("Framerates", rates));
    std::string optics;
    for (int i = 0; i < size.optics; ++i)
        optics += element("OpticsDef", element("FOV", std::to_string(6 + i % 90)) +
                                           element("Text", "O" + std::to_string(i)) +
                                           element("TempRanges", ranges));
    const std::string temperature = element("Temperature", element("Optics", optics));
    return "<CaliData>\n" + temperature + "</CaliData>\n";
}

}  // namespace

CameraFiles::CameraFiles(int serial, CameraSize size) : m_serial(serial) {
    static_cast<void>(m_folder.write("Cali-" + std::to_string(serial) + ".xml", describe(size)));
}

void CameraFiles::use() const {
    dax::IRCalibrationManager::getInstance()->setCalibrationDir(directory().c_str());
    if (ConfigCali::getInstance()->load(directory().c_str(), m_serial) == 0) return;
    std::fprintf(stderr, "cannot load the description of %d\n", m_serial);
    std::exit(1);
}

std::vector<std::string> CameraFiles::missingPaths() const {
    use();
    const std::unique_ptr<char[]> list(dax::IRCalibrationManager::getInstance()->checkCalibration(
        static_cast<unsigned long>(m_serial)));
    std::vector<std::string> paths;
    std::string_view rest = list ? list.get() : "";
    for (std::size_t end = rest.find(';'); end != rest.npos; end = rest.find(';')) {
        paths.push_back(directory() + "/" + std::string(rest.substr(0, end)));
        rest.remove_prefix(end + 1);
    }
    return paths;
}

}  // namespace bench

// One small camera for tests: its description and all the files that it calls for, in the
// calibration directory or on the file server, and the download from there to here.
#pragma once

#include <string>

#include "sdk/IRCalibrationManager.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/TestFiles.h"

namespace thermika_test {

constexpr unsigned long kCamera = 14080045;
inline const std::string kCameraText = "14080045";
inline const std::string kDescriptionName = "Cali-14080045.xml";
inline const std::string kFirstData = "Cali-14080045-33-M20-100-27.dat";
inline const std::string kFirstCurve = "Kennlinie-14080045-33-M20-100-27.prn";
inline const std::string kLastData = "Cali-14080045-33-M20-100-80.dat";
inline const std::string kLastCurve = "Kennlinie-14080045-33-M20-100-80.prn";

/// Two frame rates make four files beside the description.
inline std::string cameraDescription(const std::string& opticsText = "") {
    return "<CaliData>\n  <Temperature>\n    <Optics>\n      <OpticsDef>\n        <FOV>33</FOV>\n"
           "        <Text>" +
           opticsText +
           "</Text>\n        <TempRanges>\n          <TemperatureRange>\n"
           "            <TempLo>-20</TempLo>\n            <TempHi>100</TempHi>\n"
           "            <Framerates>\n"
           "              <Framerate><FR>27</FR></Framerate>\n"
           "              <Framerate><FR>80</FR></Framerate>\n"
           "            </Framerates>\n          </TemperatureRange>\n        </TempRanges>\n"
           "      </OpticsDef>\n    </Optics>\n  </Temperature>\n</CaliData>\n";
}

inline Files cameraFiles() {
    return {{kDescriptionName, cameraDescription()},
            {kFirstData, "data at 27 Hz\n"},
            {kFirstCurve, "curve at 27 Hz\n"},
            {kLastData, "data at 80 Hz\n"},
            {kLastCurve, "curve at 80 Hz\n"}};
}

/// Puts the files into the calibration directory.
inline void installFiles(const Files& files) {
    for (const auto& [name, bytes] : files) writeFile(std::string(kCaliDir) + "/" + name, bytes);
}

/// Where the server keeps a file of this camera.
inline std::string onServer(const std::string& name) { return serverPath(kCameraText, name); }

/// Puts the files and the usual download-links document on the server.
inline void serveFiles(FileServer& server, const Files& files) {
    server.add(kLinksPath, linksDocument());
    for (const auto& [name, bytes] : files) server.add(onServer(name), bytes);
}

/// Downloads what the calibration directory lacks.
inline Outcome download(unsigned long serial = kCamera) {
    return outcomeOf(
        [serial] { return dax::IRCalibrationManager::getInstance()->downloadCalibration(serial); });
}

/// The one line of a download that ends with everything there.
inline const std::string kInstalled = managerLine("INFO", "All files installed.");

}  // namespace thermika_test

// One search for a camera's serial number in a sandbox, with all that tests compare of it.
#pragma once

#include <cerrno>
#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"
#include "support/LogText.h"
#include "support/TestFiles.h"
#include "support/UsbTree.h"

namespace thermika_test {

inline const std::string kQueryLine =
    "DEBUG [IRCalibrationManager:379] @ #s :Query directory /sys/bus/usb/devices\n";

inline std::string foundLine(const std::string& serial) {
    return "DEBUG [IRCalibrationManager:450] @ #s :Found device with serial " + serial + "\n";
}

struct SerialSearch {
    bool isFound;
    unsigned long serial;
    std::string log;
};

/// Searches with `serial` in the variable and every severity logged. Whatever comes out of it,
/// `errno` has to be 0 then and no descriptor left open.
inline SerialSearch searchForSerial(unsigned long serial) {
    const auto countDescriptors = [] {
        using std::filesystem::directory_iterator;
        return std::distance(directory_iterator("/proc/self/fd"), directory_iterator());
    };
    dax::IRLogger::setVerbosity(dax::IRLOG_DEBUG, dax::IRLOG_OFF, nullptr);
    StderrCapture log;
    const auto descriptors = countDescriptors();
    errno = EXDEV;
    const bool isFound = dax::IRCalibrationManager::getInstance()->findSerial(serial);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(countDescriptors(), descriptors);
    return {isFound, serial, withoutSeconds(log.text())};
}

/// `log` is what follows the first line.
inline void expectFound(unsigned long requested, unsigned long serial, const std::string& log) {
    const SerialSearch search = searchForSerial(requested);
    EXPECT_TRUE(search.isFound);
    EXPECT_EQ(search.serial, serial);
    EXPECT_EQ(search.log, kQueryLine + log);
    EXPECT_EQ(std::filesystem::current_path(), kUsbDevicesDir);
}

/// Nothing is found although the whole bus could be read; `log` is what follows the first line.
inline void expectAbsent(unsigned long requested, const std::string& log) {
    const SerialSearch search = searchForSerial(requested);
    EXPECT_FALSE(search.isFound);
    EXPECT_EQ(search.serial, 0U);
    EXPECT_EQ(search.log, kQueryLine + log);
    EXPECT_EQ(std::filesystem::current_path(), kUsbDevicesDir);
}

}  // namespace thermika_test

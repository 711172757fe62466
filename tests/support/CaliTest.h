// What tests of the manager's calibration operations start from: an empty calibration directory
// that a fresh manager is set to, and calibration data that have no description loaded.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "sdk/IRCalibrationManager.h"
#include "support/CaliDescriptions.h"
#include "support/TestFiles.h"

namespace thermika_test {

/// One range with a list of frame rates, which may be empty.
std::string rangeElement(std::string_view low, std::string_view high,
                         const std::vector<int>& rates);

/// One optics with the flag that makes characteristic-curve files needless.
std::string samplePointOpticsElement(int fov, std::string_view text, std::string_view ranges);

/// Makes the one ConfigCali hold its built-in description, as after a load that failed.
void forgetDescription();

class CaliTest : public testing::Test {
protected:
    CaliTest();
    ~CaliTest() override;

    dax::IRCalibrationManager& manager() const { return *dax::IRCalibrationManager::getInstance(); }

    /// The calibration directory, the only thing in a folder of its own.
    const std::string& cali() const { return m_cali; }

    /// A path below the folder that the calibration directory lies in.
    std::string beside(std::string_view name) const { return m_folder / name; }

    /// Writes the description of `serial` with these optics into the calibration directory.
    void describe(unsigned long serial, std::string_view optics) const;

private:
    TempDir m_folder;
    std::string m_cali = m_folder / "cali";
};

}  // namespace thermika_test

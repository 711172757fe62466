// What the tests of the file check share: a camera's serial number and the list of what it lacks.
#pragma once

#include <memory>
#include <string>

#include "support/CaliTest.h"

namespace thermika_test {

constexpr int kOtherSerial = 12345679;
constexpr const char* kComplete = "(null)";  // the list that is none

class FileCheckTest : public CaliTest {
protected:
    /// What checkCalibration() lists.
    std::string missing(unsigned long serial = kSerial) const {
        const std::unique_ptr<char[]> list(manager().checkCalibration(serial));
        return list ? list.get() : kComplete;
    }

    /// One optics, field of view 33, no text, from -20 to 100 with 27 and 80 frames per second.
    void describeUsualCamera() const {
        describe(kSerial, opticsElement(33, "", rangeElement("-20", "100", {27, 80})));
    }
};

}  // namespace thermika_test

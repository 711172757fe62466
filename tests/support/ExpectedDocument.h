// The configuration document as tests expect it: the one in tests/data/plain with other values.
#pragma once

#include <cstddef>
#include <string>

#include "support/BuildPaths.h"
#include "support/TestFiles.h"

namespace thermika_test {

struct ExpectedDocument {
    std::string serial = "12345678";
    std::string formatsDir = "/usr/share/libthermika";
    std::string calibrationDir = "/usr/share/libthermika/cali";
    int fovDeg = 0;
    int minTempC = -20;
    int maxTempC = 100;

    std::string text() const {
        std::string whole = readFile(THERMIKA_TEST_DATA "/plain/configuration.xml");
        const auto replaceOnce = [&whole](const std::string& from, const std::string& to) {
            whole.replace(whole.find(from), from.size(), to);
        };
        replaceOnce("@DOCUMENTATION_URL@", THERMIKA_DOCUMENTATION_URL);
        replaceOnce(">12345678<", ">" + serial + "<");
        replaceOnce("<fov>0<", "<fov>" + std::to_string(fovDeg) + "<");
        replaceOnce("<min>-20<", "<min>" + std::to_string(minTempC) + "<");
        replaceOnce("<max>100<", "<max>" + std::to_string(maxTempC) + "<");
        replaceOnce(">/usr/share/libthermika/cali<", ">" + calibrationDir + "<");
        replaceOnce(">/usr/share/libthermika<", ">" + formatsDir + "<");
        return whole;
    }
};

}  // namespace thermika_test

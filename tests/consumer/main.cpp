// Includes every public header, compares the version with its numbers, and calls the library.
#include <imgproc/Cali.h>
#include <sdk/IRCalibrationManager.h>
#include <sdk/IRLogger.h>
#include <sdk/Logger.h>
#include <sdk/SimpleXML.h>
#include <sdk/StringHelpers.h>
#include <sdk/Timer.h>
#include <sdk/Version.h>

#include <cstdio>
#include <string>

int main() {
    const std::string numbers = std::to_string(dax::kVersionMajor) + "." +
                                std::to_string(dax::kVersionMinor) + "." +
                                std::to_string(dax::kVersionPatch);
    if (numbers != dax::kVersion) {
        std::fprintf(stderr, "version %s has the numbers %s\n", dax::kVersion, numbers.c_str());
        return 1;
    }
    std::printf("%s: %i optics, formats in %s\n", dax::kVersion,
                ConfigCali::getInstance()->getOpticsCount(),
                dax::IRCalibrationManager::getInstance()->getFormatsDir());
}

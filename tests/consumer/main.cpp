// Includes every public header and calls the library.
#include <imgproc/Cali.h>
#include <sdk/IRCalibrationManager.h>
#include <sdk/IRLogger.h>
#include <sdk/Logger.h>
#include <sdk/SimpleXML.h>
#include <sdk/StringHelpers.h>
#include <sdk/Timer.h>
#include <sdk/Version.h>

#include <cstdio>

int main() {
    std::printf("%s: %i optics, formats in %s\n", dax::kVersion,
                ConfigCali::getInstance()->getOpticsCount(),
                dax::IRCalibrationManager::getInstance()->getFormatsDir());
}

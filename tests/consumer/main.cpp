// Includes every public header and calls the library.
#include <imgproc/Cali.h>
#include <sdk/IRCalibrationManager.h>
#include <sdk/IRLogger.h>
#include <sdk/Logger.h>
#include <sdk/SimpleXML.h>
#include <sdk/StringHelpers.h>
#include <sdk/Timer.h>

#include <cstdio>

int main() {
    std::printf("%i optics, formats in %s\n", ConfigCali::getInstance()->getOpticsCount(),
                dax::IRCalibrationManager::getInstance()->getFormatsDir());
}

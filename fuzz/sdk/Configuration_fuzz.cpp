// The configuration document, composed from any calibration description: it keeps its shape.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "sdk/IRCalibrationManager.h"
#include "support/TestFiles.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const thermika_test::TempDir folder;
    thermika_test::writeFile(folder / "Cali-14080045.xml",
                             {reinterpret_cast<const char*>(data), size});
    auto* const manager = dax::IRCalibrationManager::getInstance();
    manager->setCalibrationDir(folder.path().c_str());
    const std::string document = manager->generateConfiguration(14080045);
    if (std::count(document.begin(), document.end(), '\n') != 33 || document.back() != '\n')
        std::abort();
    return 0;
}

// Loads a camera's calibration description and prints what it says: every optics with its ranges
// and frame rates, which calibration files are missing, and the short list that a menu would show.
// Uses the public headers only.
//
// usage: list-optics DIRECTORY SERIAL          for example: list-optics examples 14080045
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "imgproc/Cali.h"
#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"

namespace {

void printRange(ConfigCali& cali, OPTICS& optics, int index) {
    const std::unique_ptr<Range> range(cali.getTempRange(&optics, index));
    const std::unique_ptr<Range> extended(cali.getExtendedTempRange(&optics, index));
    if (!range || !extended) return;
    std::printf("  %g to %g (extended: %g to %g), frame rates:", range->min, range->max,
                extended->min, extended->max);
    const int rates = cali.getFramerateCount(&optics, range.get());
    if (cali.getFramerateIndex(&optics, range.get(), 0) == -1) std::printf(" any");
    for (int k = 0; k < rates; ++k) std::printf(" %i", cali.getFramerate(&optics, range.get(), k));
    std::printf("\n");
}

void printMissingFiles(dax::IRCalibrationManager& manager, unsigned long serial) {
    const std::unique_ptr<char[]> missing(manager.checkCalibration(serial));
    std::printf("missing files:%s\n", missing ? "" : " none");
    std::string name;
    for (const char* at = missing.get(); at != nullptr && *at != '\0'; ++at) {
        if (*at != ';') {
            name += *at;
            continue;
        }
        std::printf("  %s\n", name.c_str());
        name.clear();
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: list-optics DIRECTORY SERIAL\n");
        return 2;
    }
    dax::IRLogger::setVerbosity(dax::IRLOG_WARNING, dax::IRLOG_OFF, nullptr);
    const unsigned long serial = std::strtoul(argv[2], nullptr, 10);
    auto* const manager = dax::IRCalibrationManager::getInstance();
    manager->setCalibrationDir(argv[1]);

    ConfigCali* const cali = ConfigCali::getInstance();
    if (cali->load(argv[1], static_cast<int>(serial)) != 0)
        std::printf("no description of camera %lu, these are the defaults\n", serial);
    for (int i = 0; i < cali->getOpticsCount(); ++i) {
        const std::unique_ptr<OPTICS> optics(cali->getOptics(i));
        const char* const text = optics->text == nullptr ? "" : optics->text;
        std::printf("optics %i, %i degrees, \"%s\"%s\n", i, optics->fov, text,
                    cali->isSamplePointCali(i) ? ", no curve files" : "");
        const int ranges = cali->getTempRangeCount(optics.get());
        for (int j = 0; j < ranges; ++j) printRange(*cali, *optics, j);
    }
    if (const std::unique_ptr<Range> all{cali->getTempRangeOverAll()})
        std::printf("over all: %g to %g\n", all->min, all->max);

    printMissingFiles(*manager, serial);
    std::printf("menu:\n");
    for (const dax::OpticsEntry& entry : *manager->getAvailableOptics(serial)) {
        std::printf("  %i %s", entry.fov, entry.text.c_str());
        for (const auto& [low, high] : entry.tempRanges) std::printf(" [%i..%i]", low, high);
        std::printf("\n");
    }
    return 0;
}

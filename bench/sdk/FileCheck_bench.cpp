// The file check on few, many and very many expected files, against the system calls that it makes
// for each of them and nothing else.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "sdk/IRCalibrationManager.h"
#include "support/CameraFiles.h"
#include "support/Ratios.h"

namespace {

using bench::CameraFiles;

struct Sample {
    std::size_t files;
    bench::CameraSize size;
};

constexpr Sample kSamples[] = {
    {10, {1, 1, 5}},
    {1000, {50, 5, 2}},
    {20000, {1000, 5, 2}},
};

/// Creates the directory and opens the file, for each of the paths.
void callSystem(benchmark::State& state, const CameraFiles& camera,
                const std::vector<std::string>& paths) {
    for (auto _ : state) {
        for (const std::string& path : paths) {
            mkdir(camera.directory().c_str(), 0777);
            const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
            if (file >= 0) close(file);
        }
    }
}

/// Asks for the size alone when `withList` is false, for the list alone otherwise.
void check(benchmark::State& state, const CameraFiles& camera, bool withList) {
    camera.use();
    dax::IRCalibrationManager& manager = *dax::IRCalibrationManager::getInstance();
    const auto ask = [&](char* list, int& size) {
        return manager.checkCaliFiles(camera.directory().c_str(), camera.serial(), list, &size,
                                      "Cali-%i.xml", "Cali-%s.dat", "Kennlinie-%s.prn", ";");
    };
    int size = 0;
    const bool isComplete = camera.missingPaths().empty();
    if (ask(nullptr, size) != isComplete) state.SkipWithError("not the expected answer");
    const std::unique_ptr<char[]> list(new char[static_cast<std::size_t>(size) + 1]);
    for (auto _ : state) {
        if (ask(withList ? list.get() : nullptr, size) == isComplete) continue;
        state.SkipWithError("not the expected answer");
        break;
    }
}

void add(const std::string& group, const CameraFiles& camera,
         const std::vector<std::string>& paths) {
    benchmark::RegisterBenchmark((group + "size/checkCaliFiles").c_str(), check, std::cref(camera),
                                 false);
    benchmark::RegisterBenchmark((group + "size/system").c_str(), callSystem, std::cref(camera),
                                 paths);
    benchmark::RegisterBenchmark((group + "list/checkCaliFiles").c_str(), check, std::cref(camera),
                                 true);
    benchmark::RegisterBenchmark((group + "list/system").c_str(), callSystem, std::cref(camera),
                                 paths);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::unique_ptr<CameraFiles>> cameras;
    int serial = 10000000;
    for (const Sample& sample : kSamples) {
        const std::string number = "/" + std::to_string(sample.files) + "/";
        const CameraFiles& absent =
            *cameras.emplace_back(std::make_unique<CameraFiles>(serial++, sample.size));
        add("missing" + number, absent, absent.missingPaths());

        const CameraFiles& present =
            *cameras.emplace_back(std::make_unique<CameraFiles>(serial++, sample.size));
        const std::vector<std::string> paths = present.missingPaths();
        for (const std::string& path : paths) std::ofstream(path).put('\n');
        add("present" + number, present, paths);

        if (paths.size() != sample.files || absent.missingPaths().size() != sample.files ||
            !present.missingPaths().empty()) {
            std::fprintf(stderr, "not %zu files are expected\n", sample.files);
            return 1;
        }
    }
    return bench::runAndCompare(argc, argv);
}

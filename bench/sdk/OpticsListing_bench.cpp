// The optics listing against copying the list that it gives.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sdk/IRCalibrationManager.h"
#include "support/CameraFiles.h"
#include "support/Ratios.h"

namespace {

using bench::CameraFiles;

constexpr int kOpticsCounts[] = {3, 100, 4500};
constexpr int kRangesPerOptics = 4;
constexpr int kRatesPerRange = 2;

std::vector<dax::OpticsEntry>& list(const CameraFiles& camera) {
    return *dax::IRCalibrationManager::getInstance()->getAvailableOptics(
        static_cast<unsigned long>(camera.serial()));
}

void getAvailableOptics(benchmark::State& state, const CameraFiles& camera) {
    camera.use();
    const std::size_t expected = list(camera).size();
    for (auto _ : state) {
        if (list(camera).size() == expected && expected > 0) continue;
        state.SkipWithError("not listed");
        break;
    }
}

void copy(benchmark::State& state, const CameraFiles& camera) {
    camera.use();
    const std::vector<dax::OpticsEntry> records = list(camera);
    for (auto _ : state) {
        std::vector<dax::OpticsEntry> copied = records;
        benchmark::DoNotOptimize(copied.data());
    }
}

/// Into a list that has room already.
void assign(benchmark::State& state, const CameraFiles& camera) {
    camera.use();
    const std::vector<dax::OpticsEntry> records = list(camera);
    std::vector<dax::OpticsEntry> assigned = records;
    for (auto _ : state) {
        assigned = records;
        benchmark::DoNotOptimize(assigned.data());
    }
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::unique_ptr<CameraFiles>> cameras;
    int serial = 10000000;
    for (const int count : kOpticsCounts) {
        const CameraFiles& camera = *cameras.emplace_back(std::make_unique<CameraFiles>(
            serial++, bench::CameraSize{count, kRangesPerOptics, kRatesPerRange}));
        camera.use();
        if (list(camera).size() != static_cast<std::size_t>(count) ||
            list(camera).back().tempRanges.size() != kRangesPerOptics) {
            std::fprintf(stderr, "not %d optics are listed\n", count);
            return 1;
        }
        const std::string group = std::to_string(count) + "/";
        benchmark::RegisterBenchmark((group + "getAvailableOptics").c_str(), getAvailableOptics,
                                     std::cref(camera));
        benchmark::RegisterBenchmark((group + "copying").c_str(), copy, std::cref(camera));
        benchmark::RegisterBenchmark((group + "assigning").c_str(), assign, std::cref(camera));
    }
    return bench::runAndCompare(argc, argv);
}

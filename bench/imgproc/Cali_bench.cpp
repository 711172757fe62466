// Loading a description into the calibration data, against other XML libraries that store the same
// fields in records of the same kind. Before anything is timed, all must have loaded the same. What
// loading needs of memory is CaliMemory_bench.cpp's.
#include "imgproc/Cali.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "support/Camera.h"
#include "support/Descriptions.h"
#include "support/Ratios.h"
#include "support/Readers.h"
#include "support/TemporaryFolder.h"

namespace {

using bench::Camera;
using bench::Content;
using bench::Reader;

const Reader* const kLibraries[] = {&bench::kRapidxml, &bench::kPugixml, &bench::kLibxml2,
                                    &bench::kExpat, &bench::kTinyxml2};

struct Sample {
    const char* name;
    std::size_t bytes;
    Content content;
};

constexpr Sample kSamples[] = {
    {"11K", bench::kSmallBytes, Content::kPlain},
    {"100K", bench::kMediumBytes, Content::kPlain},
    {"1M", bench::kLargeBytes, Content::kPlain},
    {"16M", bench::kHugeBytes, Content::kPlain},
    {"comments-11K", bench::kSmallBytes, Content::kComments},
    {"comments-100K", bench::kMediumBytes, Content::kComments},
    {"comments-1M", bench::kLargeBytes, Content::kComments},
    {"comments-16M", bench::kHugeBytes, Content::kComments},
    {"sparse-11K", bench::kSmallBytes, Content::kSparse},
    {"sparse-100K", bench::kMediumBytes, Content::kSparse},
    {"sparse-1M", bench::kLargeBytes, Content::kSparse},
    {"sparse-16M", bench::kHugeBytes, Content::kSparse},
};

std::string fileName(int serial) { return "Cali-" + std::to_string(serial) + ".xml"; }

bool holds(OPTICS* key, int index, bench::TemperatureRange wanted) {
    ConfigCali& cali = *ConfigCali::getInstance();
    const std::unique_ptr<Range> range(cali.getTempRange(key, index));
    if (!range || range->min != wanted.TempLo || range->max != wanted.TempHi) return false;
    const std::unique_ptr<Range> extended(cali.getExtendedTempRange(key, index));
    // A description without extended bounds leaves the readers' at their default, above TempLo.
    const bool isExtended = wanted.TempHiExt != bench::TemperatureRange().TempHiExt;
    if (extended->min != (isExtended ? wanted.TempLoExt : wanted.TempLo)) return false;
    if (extended->max != (isExtended ? wanted.TempHiExt : wanted.TempHi)) return false;
    if (cali.getFramerateCount(key, range.get()) != static_cast<int>(wanted.frameRates.size()))
        return false;
    for (std::size_t f = 0; f < wanted.frameRates.size(); ++f)
        if (cali.getFramerate(key, range.get(), static_cast<int>(f)) != wanted.frameRates[f])
            return false;
    return cali.getTempRangeDecimal(key->fov, key->text, range->min, range->max) == wanted.Decimal;
}

/// Whether the calibration data hold what the libraries read.
bool holds(const Camera& wanted) {
    ConfigCali& cali = *ConfigCali::getInstance();
    if (cali.getOpticsCount() != static_cast<int>(wanted.optics.size())) return false;
    for (int i = 0; i < cali.getOpticsCount(); ++i) {
        const bench::OpticsDef& optics = wanted.optics[static_cast<std::size_t>(i)];
        const std::unique_ptr<OPTICS> key(cali.getOptics(i));
        if (key->fov != optics.FOV || (key->text == nullptr ? "" : key->text) != optics.Text ||
            cali.isSamplePointCali(i) != optics.SamplePointCali ||
            cali.getTempRangeCount(key.get()) != static_cast<int>(optics.ranges.size()))
            return false;
        for (std::size_t j = 0; j < optics.ranges.size(); ++j)
            if (!holds(key.get(), static_cast<int>(j), optics.ranges[j])) return false;
    }
    return true;
}

bool loadsAlike(const std::string& directory, int serial) {
    const std::string file = directory + "/" + fileName(serial);
    Camera expected;
    bench::kRapidxml.read(file.c_str(), expected);
    for (const Reader* const library : kLibraries) {
        Camera camera;
        if (!library->read(file.c_str(), camera) || !(camera == expected)) return false;
    }
    return ConfigCali::getInstance()->load(directory.c_str(), serial) == 0 && holds(expected);
}

/// Two serial numbers with the same description take turns, so that each load is one. Like the
/// libraries' records, those of the load before are released meanwhile.
void load(benchmark::State& state, const std::string& directory, int serial, std::size_t bytes) {
    ConfigCali& cali = *ConfigCali::getInstance();
    // Goes on where the benchmark's last run ended, whose description is still loaded.
    static int other = 0;
    for (auto _ : state) {
        other = 1 - other;
        if (cali.load(directory.c_str(), serial + other) != 0) {
            state.SkipWithError("not loaded");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void readFields(benchmark::State& state, const Reader& library, const std::string& file,
                std::size_t bytes) {
    for (auto _ : state) {
        Camera camera;
        if (!library.read(file.c_str(), camera)) {
            state.SkipWithError("not read");
            break;
        }
        benchmark::DoNotOptimize(camera.optics.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

}  // namespace

int main(int argc, char** argv) {
    const bench::TemporaryFolder folder;
    int serial = 10000000;
    for (const Sample& sample : kSamples) {
        const std::string text = bench::makeDescription(sample.bytes, sample.content);
        const std::string file = folder.write(fileName(serial), text);
        if (link(file.c_str(), (folder.path() + "/" + fileName(serial + 1)).c_str()) != 0 ||
            !loadsAlike(folder.path(), serial)) {
            std::fprintf(stderr, "%s is not loaded alike\n", sample.name);
            return 1;
        }
        const std::size_t bytes = text.size();
        const std::string group = std::string("load/") + sample.name + "/";
        benchmark::RegisterBenchmark((group + "ConfigCali").c_str(), load, folder.path(), serial,
                                     bytes);
        for (const Reader* const library : kLibraries)
            benchmark::RegisterBenchmark((group + library->name).c_str(), readFields, *library,
                                         file, bytes);
        serial += 2;
    }
    return bench::runAndCompare(argc, argv);
}

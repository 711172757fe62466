// Composing a configuration document from a description, against pugixml reading the document's
// three values from the same file and composing nothing.
#include "sdk/IRCalibrationManager.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <pugixml.hpp>
#include <string>

#include "support/Descriptions.h"
#include "support/TemporaryFolder.h"

namespace {

constexpr unsigned long kSerial = 14080045;
constexpr unsigned int kFewestThings = pugi::parse_minimal | pugi::parse_embed_pcdata;

struct Values {
    int fovDeg = 0;
    int minTempC = -20;
    int maxTempC = 100;
};

bool readTheirs(const std::string& file, unsigned int flags, Values& values) {
    pugi::xml_document document;
    if (!document.load_file(file.c_str(), flags)) return false;
    const pugi::xml_node optics =
        document.child("CaliData").child("Temperature").child("Optics").child("OpticsDef");
    const pugi::xml_node range = optics.child("TempRanges").child("TemperatureRange");
    values.fovDeg = optics.child("FOV").text().as_int();
    values.minTempC = range.child("TempLo").text().as_int();
    values.maxTempC = range.child("TempHi").text().as_int();
    return true;
}

std::string composeOurs() {
    return dax::IRCalibrationManager::getInstance()->generateConfiguration(kSerial);
}

void ours(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(composeOurs());
}

void theirs(benchmark::State& state, const std::string& file, unsigned int flags) {
    for (auto _ : state) {
        Values values;
        benchmark::DoNotOptimize(readTheirs(file, flags, values));
        benchmark::DoNotOptimize(values);
    }
}

bool isSame(const std::string& file, unsigned int flags) {
    Values values;
    if (!readTheirs(file, flags, values)) return false;
    const std::string expected = "  <fov>" + std::to_string(values.fovDeg) +
                                 "</fov>\n  <temperature>\n    <min>" +
                                 std::to_string(values.minTempC) + "</min>\n    <max>" +
                                 std::to_string(values.maxTempC) + "</max>\n";
    if (values.fovDeg != 0 && composeOurs().find(expected) != std::string::npos) return true;
    std::fprintf(stderr, "the document's values are not those that pugixml reads\n");
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const bench::TemporaryFolder folder;
    const std::string file =
        folder.write("Cali-" + std::to_string(kSerial) + ".xml",
                     bench::makeDescription(bench::kSmallBytes, bench::Content::kPlain));
    dax::IRCalibrationManager::getInstance()->setCalibrationDir(folder.path().c_str());
    if (!isSame(file, kFewestThings) || !isSame(file, pugi::parse_default)) return 1;

    benchmark::RegisterBenchmark("document/generateConfiguration", ours);
    benchmark::RegisterBenchmark("document/pugixml", theirs, file, kFewestThings);
    benchmark::RegisterBenchmark("document/pugixml-default", theirs, file, pugi::parse_default);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

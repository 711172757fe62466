// A log line to a file with its flush, and a line that nobody wants to see, against spdlog with the
// same content.
#include "sdk/Logger.h"

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "support/TemporaryFolder.h"

namespace {

constexpr unsigned int kInfo = 2;
constexpr unsigned int kDebug = 3;
constexpr int kLine = 379;
constexpr const char* kUnit = "IRCalibrationManager";
const std::string kMessage = "Query directory /sys/bus/usb/devices";

// Level, unit, line, seconds and message, as our lines have them.
constexpr const char* kPattern = "%l [%s:%#] @ %E.%fs :%v";

using kelvra::Logger;

void logOurs(unsigned int severity) {
    Logger::getInstance()->print(severity, std::string(kUnit), kLine, kMessage);
}

std::shared_ptr<spdlog::logger> g_theirs;

void logTheirs(spdlog::level::level_enum level) {
    g_theirs->log(spdlog::source_loc{kUnit, kLine, ""}, level, kMessage);
}

void writtenOurs(benchmark::State& state) {
    for (auto _ : state) logOurs(kInfo);
}

void writtenTheirs(benchmark::State& state) {
    for (auto _ : state) logTheirs(spdlog::level::info);
}

void suppressedOurs(benchmark::State& state) {
    for (auto _ : state) logOurs(kDebug);
}

void suppressedTheirs(benchmark::State& state) {
    for (auto _ : state) logTheirs(spdlog::level::debug);
}

/// Whether every file of the folder holds one line with our unit and message.
bool holdOneLineEach(const bench::TemporaryFolder& folder) {
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        std::ifstream file(entry.path());
        std::string line;
        std::string more;
        std::getline(file, line);
        if (line.find("[" + std::string(kUnit) + ":379] @ ") == std::string::npos ||
            line.find("s :" + kMessage) == std::string::npos || std::getline(file, more)) {
            std::fprintf(stderr, "unexpected log in %s: %s\n", entry.path().c_str(), line.c_str());
            return false;
        }
        ++files;
    }
    return files == 2;
}

}  // namespace

int main(int argc, char** argv) {
    const bench::TemporaryFolder folder;
    Logger::getInstance()->configure(
        folder.path() + "/ours",
        static_cast<Logger::loggerConf_>(Logger::LOGGER_FILE | Logger::LOGGER_NO_CONSOLE),
        static_cast<int>(kInfo), 0);
    g_theirs = spdlog::basic_logger_st("theirs", folder.path() + "/theirs.log");
    g_theirs->set_pattern(kPattern);
    g_theirs->set_level(spdlog::level::info);
    g_theirs->flush_on(spdlog::level::trace);

    logOurs(kInfo);
    logOurs(kDebug);
    logTheirs(spdlog::level::info);
    logTheirs(spdlog::level::debug);
    if (!holdOneLineEach(folder)) return 1;

    benchmark::RegisterBenchmark("written/Logger", writtenOurs);
    benchmark::RegisterBenchmark("written/spdlog", writtenTheirs);
    benchmark::RegisterBenchmark("suppressed/Logger", suppressedOurs);
    benchmark::RegisterBenchmark("suppressed/spdlog", suppressedTheirs);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    g_theirs.reset();
    Logger::releaseInstance();
    return 0;
}

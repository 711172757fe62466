// What tests of the log sink start from: a fresh logger without configuration, made at a time that
// the test sets, and a folder for its files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "sdk/Logger.h"
#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace thermika_test {

using Sinks = kelvra::Logger::loggerConf_;
constexpr Sinks kFile = kelvra::Logger::LOGGER_FILE;
constexpr Sinks kConsole = kelvra::Logger::LOGGER_CONSOLE;
constexpr Sinks kBoth = Sinks(kFile | kConsole);
constexpr Sinks kConsoleOnly = Sinks(kelvra::Logger::LOGGER_NO_FILE | kConsole);
constexpr Sinks kNone = Sinks(kelvra::Logger::LOGGER_NO_FILE | kelvra::Logger::LOGGER_NO_CONSOLE);

constexpr std::int64_t kSecondUs = 1'000'000;
constexpr std::int64_t kMorningUs = 1'794'733'507 * kSecondUs;  // 2026-11-15 09:05:07 UTC
constexpr const char* kMorning = "_15_11_2026_9-5-7.log";
constexpr const char* kSecondLater = "_15_11_2026_9-5-8.log";

/// Made at the morning's time, in UTC.
class LoggerTest : public testing::Test {
protected:
    LoggerTest() { renew(); }
    ~LoggerTest() override { kelvra::Logger::releaseInstance(); }

    static kelvra::Logger& renew() {
        kelvra::Logger::releaseInstance();
        return *kelvra::Logger::getInstance();
    }
    static kelvra::Logger& logger() { return *kelvra::Logger::getInstance(); }

    void configure(Sinks sinks, int fileLevel, int consoleLevel) {
        logger().configure(m_base, sinks, fileLevel, consoleLevel);
    }
    static void print(const std::string& message) { logger().print(0, "Unit", 1, message); }
    std::string fileAt(const char* stamp) const { return readFile(m_base + stamp); }
    bool hasFile(const char* stamp) const { return std::filesystem::exists(m_base + stamp); }

    const TempDir m_dir;
    const std::string m_base = m_dir / "tool.log";
    const ScopedTimeZone m_zone{"UTC"};
    ScopedClock m_clock{kMorningUs};
};

}  // namespace thermika_test

// The log sink: its lines to the byte, its files' names, and which line goes where.
#include "sdk/Logger.h"

#include <climits>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <locale>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <locale.h>
#include <sys/resource.h>

#include "support/Clock.h"
#include "support/Locales.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::openDescriptors;
using thermika_test::readFile;
using thermika_test::ScopedLocale;
using thermika_test::ScopedTimeZone;
using thermika_test::StderrCapture;
using thermika_test::writeFile;

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

/// No file grows longer than this many bytes while it lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &m_before), 0);
        const rlimit limited{bytes, m_before.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    }
    ~FileSizeLimit() {
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &m_before), 0);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

// A fresh logger, unconfigured, made at the morning's time.
class Logger : public testing::Test {
protected:
    Logger() { renew(); }
    ~Logger() override { kelvra::Logger::releaseInstance(); }

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

    const thermika_test::TempDir m_dir;
    const std::string m_base = m_dir / "tool.log";
    const ScopedTimeZone m_zone{"UTC"};
    thermika_test::ScopedClock m_clock{kMorningUs};
};

TEST_F(Logger, writesOneLineForEachMessageToBothSinks) {
    renew();
    configure(kBoth, 3, 3);
    StderrCapture errors;
    m_clock.advance(3 * kSecondUs / 2);
    logger().print(2, "Manager", 550, "started");
    logger().print(0, "Unit", -7, " failed");
    const std::string lines =
        "INFO [Manager:550] @ 1.5s :started\n"
        "ERROR [Unit:-7] @ 1.5s : failed\n";
    EXPECT_EQ(fileAt(kMorning), lines);
    EXPECT_EQ(errors.text(), lines);
}

TEST_F(Logger, writesTheMessageAsItStands) {
    configure(kBoth, 3, 3);
    StderrCapture errors;
    const std::string large(100'000, 'm');
    std::string lines;
    for (const std::string& message : {std::string(), std::string("%s%n%d"), std::string("a\nb\n"),
                                       std::string("\x80\xFF\t\x1B"), large}) {
        print(message);
        lines.append("ERROR [Unit:1] @ 0s :").append(message).append("\n");
    }
    logger().print(1, "", 0, "no file");
    lines += "WARNING [:0] @ 0s :no file\n";
    EXPECT_EQ(fileAt(kMorning), lines);
    EXPECT_EQ(errors.text(), lines);
}

TEST_F(Logger, cutsAMessageAtItsZeroByteOnStandardErrorOnly) {
    configure(kBoth, 3, 3);
    StderrCapture errors;
    print(std::string("before\0after", 12));
    EXPECT_EQ(fileAt(kMorning), std::string("ERROR [Unit:1] @ 0s :before\0after\n", 34));
    EXPECT_EQ(errors.text(), "ERROR [Unit:1] @ 0s :before");
}

TEST_F(Logger, callsEverySeverityItDoesNotKnowAnError) {
    const struct {
        unsigned int severity;
        const char* word;
    } rows[] = {
        {0, "ERROR "}, {1, "WARNING "}, {2, "INFO "},     {3, "DEBUG "},
        {4, "ERROR "}, {7, "ERROR "},   {1000, "ERROR "}, {UINT_MAX, "ERROR "},
    };
    configure(kBoth, -1, -1);
    StderrCapture errors;
    std::string lines;
    for (const auto& row : rows) {
        logger().print(row.severity, "Unit", 9, "m");
        lines.append(row.word).append("[Unit:9] @ 0s :m\n");
    }
    EXPECT_EQ(fileAt(kMorning), lines);
    EXPECT_EQ(errors.text(), lines);
}

TEST_F(Logger, showsSecondsWithSixSignificantDigits) {
    const struct {
        std::int64_t elapsedUs;
        const char* seconds;
    } rows[] = {
        {0, "0"},
        {10, "1e-05"},
        {100, "0.0001"},
        {731, "0.000731"},
        {1'500'000, "1.5"},
        {12'345'678, "12.3457"},
        {100 * kSecondUs, "100"},
        {999'999'400'000, "999999"},
        {999'999'600'000, "1e+06"},
        {1'234'567 * kSecondUs, "1.23457e+06"},
    };
    m_clock.set(0);
    renew();
    configure(kConsoleOnly, 0, 3);
    for (const auto& row : rows) {
        StderrCapture errors;
        m_clock.set(row.elapsedUs);
        print("m");
        EXPECT_EQ(errors.text(), std::string("ERROR [Unit:1] @ ") + row.seconds + "s :m\n");
    }
}

// The clock's milliseconds are doubles: nowadays their steps are a quarter of a microsecond.
TEST_F(Logger, showsTheStepsOfADoubleInShortTimes) {
    renew();
    configure(kConsoleOnly, 0, 3);
    StderrCapture errors;
    m_clock.set(kMorningUs + 731);
    print("m");
    EXPECT_EQ(errors.text(), "ERROR [Unit:1] @ 0.000730957s :m\n");
}

TEST_F(Logger, countsSecondsFromItsConstruction) {
    renew();
    m_clock.advance(2 * kSecondUs);
    configure(kConsoleOnly, 0, 3);
    m_clock.advance(3 * kSecondUs);
    configure(kConsoleOnly, 0, 3);
    StderrCapture errors;
    print("m");
    EXPECT_EQ(errors.text(), "ERROR [Unit:1] @ 5s :m\n");
}

TEST_F(Logger, showsNegativeSecondsWhenTheClockGoesBackwards) {
    renew();
    configure(kBoth, 3, 3);
    StderrCapture errors;
    m_clock.advance(-5 * kSecondUs / 2);
    print("back");
    m_clock.advance(5 * kSecondUs);
    print("on");
    const std::string lines = "ERROR [Unit:1] @ -2.5s :back\nERROR [Unit:1] @ 2.5s :on\n";
    EXPECT_EQ(errors.text(), lines);
    EXPECT_EQ(fileAt(kMorning), lines);
}

TEST_F(Logger, writesNumbersAlikeInEveryLocale) {
    renew();
    const ScopedLocale locale({{LC_ALL, thermika_test::kDecimalCommaLocale}});
    const std::locale former = std::locale::global(std::locale(thermika_test::kDecimalCommaLocale));
    const auto threadLocale = uselocale(locale_t{});
    configure(kBoth, 3, 3);
    StderrCapture errors;
    m_clock.advance(12'345'678'000);
    logger().print(2, "Manager", 12345, "m");
    EXPECT_EQ(errors.text(), "INFO [Manager:12345] @ 12345.7s :m\n");
    EXPECT_EQ(fileAt(kMorning), "INFO [Manager:12345] @ 12345.7s :m\n");
    EXPECT_EQ(uselocale(locale_t{}), threadLocale);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    std::locale::global(former);
}

TEST_F(Logger, stampsFileNamesWithTheLocalTimeWithoutLeadingZeros) {
    const struct {
        const char* zone;
        std::int64_t seconds;
        const char* stamp;
    } rows[] = {
        {"UTC", 1'794'733'507, "_15_11_2026_9-5-7.log"},
        {"Asia/Kathmandu", 1'794'733'507, "_15_11_2026_14-50-7.log"},
        {"America/St_Johns", 1'794'733'507, "_15_11_2026_5-35-7.log"},
        {"UTC", 1'798'761'600, "_1_1_2027_0-0-0.log"},
        {"Asia/Kathmandu", 1'798'761'600, "_1_1_2027_5-45-0.log"},
        {"America/St_Johns", 1'798'761'600, "_31_12_2026_20-30-0.log"},
        {"America/St_Johns", 1'782'907'199, "_1_7_2026_9-29-59.log"},
        {"UTC", 4'102'444'799, "_31_12_2099_23-59-59.log"},
    };
    for (const auto& row : rows) {
        const ScopedTimeZone zone(row.zone);
        m_clock.set(row.seconds * kSecondUs);
        configure(kFile, 3, 3);
        EXPECT_TRUE(hasFile(row.stamp)) << row.zone << row.stamp;
    }
    const std::filesystem::directory_iterator files(m_dir.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), std::ptrdiff_t(std::size(rows)));
}

TEST_F(Logger, stampsAFileNameInTheTimeZoneThatTheEnvironmentNamesThen) {
    const ScopedTimeZone zone("UTC");
    setenv("TZ", "Asia/Kathmandu", 1);
    renew();
    configure(kBoth, 3, 3);
    EXPECT_TRUE(hasFile("_15_11_2026_14-50-7.log"));
}

TEST_F(Logger, stampsAnEmptyNameToo) {
    logger().configure(m_dir / "", kFile, 3, 3);
    EXPECT_TRUE(std::filesystem::exists(m_dir / kMorning));
}

TEST_F(Logger, keepsEarlierLinesWhenConfiguredTwiceInTheSameSecond) {
    renew();
    configure(kFile, 3, 3);
    print("one");
    m_clock.advance(kSecondUs - 1);
    configure(kFile, 3, 3);
    m_clock.set(kMorningUs);
    print("two");
    EXPECT_EQ(fileAt(kMorning), "ERROR [Unit:1] @ 0s :one\nERROR [Unit:1] @ 0s :two\n");
}

TEST_F(Logger, appendsToAFileThatExistsAlready) {
    writeFile(m_base + kMorning, "from an earlier run\n");
    renew();
    configure(kFile, 3, 3);
    EXPECT_EQ(fileAt(kMorning), "from an earlier run\n");
    print("one");
    EXPECT_EQ(fileAt(kMorning), "from an earlier run\nERROR [Unit:1] @ 0s :one\n");
}

TEST_F(Logger, startsANewFileWhenConfiguredAgainInALaterSecond) {
    renew();
    configure(kFile, 3, 3);
    print("one");
    m_clock.advance(kSecondUs);
    configure(kFile, 3, 3);
    print("two");
    EXPECT_EQ(fileAt(kMorning), "ERROR [Unit:1] @ 0s :one\n");
    EXPECT_EQ(fileAt(kSecondLater), "ERROR [Unit:1] @ 1s :two\n");
}

TEST_F(Logger, keepsTheFileWhoseStampedNameIsPassedBack) {
    renew();
    configure(kFile, 3, 3);
    print("one");
    m_clock.advance(kSecondUs);
    logger().configure(m_base + kMorning, kFile, 3, 3);
    print("two");
    EXPECT_EQ(fileAt(kMorning), "ERROR [Unit:1] @ 0s :one\nERROR [Unit:1] @ 1s :two\n");
    EXPECT_FALSE(std::filesystem::exists(m_base + kMorning + kSecondLater));
}

TEST_F(Logger, createsNoFileForStandardErrorAloneButStampsItsName) {
    renew();
    configure(kConsoleOnly, 3, 3);
    StderrCapture errors;
    print("one");
    EXPECT_EQ(errors.text(), "ERROR [Unit:1] @ 0s :one\n");
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));

    m_clock.advance(kSecondUs);
    logger().configure(m_base + kMorning, kFile, 3, 3);
    EXPECT_TRUE(hasFile(kMorning)) << "the stamped name was not kept";
}

TEST_F(Logger, losesTheLinesOfAFileThatCannotBeOpenedSilently) {
    renew();
    StderrCapture errors;
    logger().configure(m_dir / "missing/tool.log", kBoth, 3, 3);
    print("one");
    EXPECT_EQ(errors.text(), "ERROR [Unit:1] @ 0s :one\n");
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));

    configure(kFile, 3, 3);
    print("two");
    EXPECT_EQ(fileAt(kMorning), "ERROR [Unit:1] @ 0s :two\n") << "the failure was not forgotten";
}

TEST_F(Logger, losesTheLinesAfterOneThatCouldNotBeWritten) {
    configure(kFile, 3, 3);
    {
        const FileSizeLimit limit(11);
        print("one");
    }
    print("two");
    EXPECT_EQ(fileAt(kMorning), "ERROR [Unit");

    configure(kFile, 3, 3);
    print("three");
    EXPECT_EQ(fileAt(kMorning), "ERROR [UnitERROR [Unit:1] @ 0s :three\n");
}

TEST_F(Logger, writesNothingWhereNoSinkIsOn) {
    for (const Sinks sinks : {kNone, Sinks(0)}) {
        configure(sinks, -1, -1);
        StderrCapture errors;
        print("one");
        EXPECT_EQ(errors.text(), "");
        EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
    }
}

TEST_F(Logger, writesASeverityUpToTheLevelOfEachSink) {
    const unsigned int severities[] = {0, 1, 2, 3, 4, 6, 7, 8, INT_MAX, INT_MAX + 1U, UINT_MAX};
    const int levels[] = {0, 1, 2, 3, 6, 7, INT_MAX, -1, -2, INT_MIN};
    for (const int level : levels) {
        for (const unsigned int severity : severities) {
            const bool isWritten = severity <= static_cast<unsigned int>(level);
            m_clock.advance(kSecondUs);
            std::filesystem::remove_all(m_dir.path());
            std::filesystem::create_directory(m_dir.path());
            StderrCapture errors;
            configure(kBoth, level, 0);
            logger().print(severity, "Unit", 1, "m");
            const auto file = std::filesystem::directory_iterator(m_dir.path())->path();
            EXPECT_EQ(readFile(file).empty(), !isWritten) << level << " file " << severity;
            EXPECT_EQ(errors.text().empty(), severity != 0) << level << " other " << severity;
            configure(kBoth, 0, level);
            logger().print(severity, "Unit", 1, "m");
            EXPECT_EQ(errors.text().empty(), !isWritten && severity != 0)
                << level << " console " << severity;
        }
    }
}

TEST_F(Logger, warnsOnceInTheProcessBeforeItIsConfigured) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";  // a new process: nobody printed before
    const auto printUnconfigured = [this] {
        renew();
        m_clock.advance(kSecondUs / 4);
        logger().print(3, "First", 12, "dropped");
        logger().print(0, "Second", 34, "dropped");
        renew();
        logger().print(0, "Third", 56, "dropped");
        configure(kConsoleOnly, 0, 0);
        logger().print(0, "Fourth", 78, "kept");
        std::_Exit(std::filesystem::remove_all(m_dir.path()) == 1 ? 0 : 1);  // it was empty
    };
    EXPECT_EXIT(printUnconfigured(), testing::ExitedWithCode(0),
                testing::Eq("[First:12] @ 0.25s : Logger not configured!\n"
                            "ERROR [Fourth:78] @ 0s :kept\n"));
}

TEST_F(Logger, isTheSameOneUntilItIsReleased) {
    auto* const first = &renew();
    configure(kConsoleOnly, 0, 0);
    EXPECT_EQ(kelvra::Logger::getInstance(), first);
}

TEST_F(Logger, startsItsTimeAnewAfterItWasReleased) {
    configure(kConsoleOnly, 0, 3);
    m_clock.advance(kSecondUs);
    kelvra::Logger::releaseInstance();
    kelvra::Logger::releaseInstance();  // nothing to release: nothing happens
    m_clock.advance(kSecondUs);
    kelvra::Logger::getInstance();
    m_clock.advance(kSecondUs);
    configure(kConsoleOnly, 0, 3);
    StderrCapture errors;
    print("m");
    EXPECT_EQ(errors.text(), "ERROR [Unit:1] @ 1s :m\n");
}

TEST_F(Logger, holdsItsFileOpenOnlyWhileThatSinkIsOn) {
    const std::size_t before = openDescriptors();
    configure(kFile, 3, 3);
    EXPECT_EQ(openDescriptors(), before + 1);
    configure(kBoth, 3, 3);
    EXPECT_EQ(openDescriptors(), before + 1);
    configure(kConsoleOnly, 3, 3);
    EXPECT_EQ(openDescriptors(), before);
    configure(kFile, 3, 3);
    kelvra::Logger::releaseInstance();
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Logger, isForgottenWhenAnotherOneIsConstructed) {
    const std::unique_ptr<kelvra::Logger> first(&renew());
    const kelvra::Logger other;
    auto* const second = kelvra::Logger::getInstance();
    EXPECT_NE(second, first.get());
    EXPECT_NE(second, &other);
}

TEST_F(Logger, isNotForgottenWhenAnotherOneIsDestroyed) {
    kelvra::Logger::releaseInstance();  // or the next line would leak it
    auto other = std::make_unique<kelvra::Logger>();
    auto* const current = kelvra::Logger::getInstance();
    other.reset();
    EXPECT_EQ(kelvra::Logger::getInstance(), current);
}

}  // namespace

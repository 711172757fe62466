// The log sink: its lines to the byte, which line goes where, and how long it lives.
#include "sdk/Logger.h"

#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <locale>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <locale.h>

#include "support/LoggerTest.h"
#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::kBoth;
using thermika_test::kConsoleOnly;
using thermika_test::kFile;
using thermika_test::kMorning;
using thermika_test::kMorningUs;
using thermika_test::kNone;
using thermika_test::kSecondUs;
using thermika_test::openDescriptors;
using thermika_test::readFile;
using thermika_test::ScopedLocale;
using thermika_test::Sinks;
using thermika_test::StderrCapture;

using Logger = thermika_test::LoggerTest;

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
    m_clock.advance(1'222'222'122'000);
    print("later");
    m_clock.set(kMorningUs - 5 * kSecondUs / 2);
    print("back");
    const std::string lines =
        "INFO [Manager:12345] @ 12345.7s :m\n"
        "ERROR [Unit:1] @ 1.23457e+06s :later\n"
        "ERROR [Unit:1] @ -2.5s :back\n";
    EXPECT_EQ(errors.text(), lines);
    EXPECT_EQ(fileAt(kMorning), lines);
    EXPECT_EQ(uselocale(locale_t{}), threadLocale);
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    std::locale::global(former);
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
    StderrCapture errors;
    kelvra::Logger::releaseInstance();
    print("dropped");
    EXPECT_EQ(errors.text().find("dropped"), std::string::npos) << "still configured";
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

// The front end of the log: which verbosity shows what, and the name of the log file.
#include "sdk/IRLogger.h"

#include <climits>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "sdk/Logger.h"
#include "support/LoggerTest.h"
#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace {

using dax::IRLoggerVerbosityLevel;
using thermika_test::kMorning;
using thermika_test::kMorningUs;
using thermika_test::readFile;
using thermika_test::StderrCapture;

static_assert(dax::IRLOG_OFF == 1 && dax::IRLOG_ERROR == 2 && dax::IRLOG_WARNING == 3 &&
              dax::IRLOG_INFO == 4 && dax::IRLOG_DEBUG == 5);
static_assert(kelvra::Logger::LOGGER_FILE == 1 && kelvra::Logger::LOGGER_NO_FILE == 2 &&
              kelvra::Logger::LOGGER_CONSOLE == 4 && kelvra::Logger::LOGGER_NO_CONSOLE == 8);

constexpr const char* kLines[] = {"ERROR [Unit:1] @ 0s :m\n", "WARNING [Unit:1] @ 0s :m\n",
                                  "INFO [Unit:1] @ 0s :m\n", "DEBUG [Unit:1] @ 0s :m\n"};

/// The first `count` of the lines that printAll() gives.
std::string lines(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += kLines[i];
    return text;
}

// Every known severity, and one beyond that no verbosity shows.
void printAll() {
    for (unsigned int severity = 0; severity < 5; ++severity)
        kelvra::Logger::getInstance()->print(severity, "Unit", 1, "m");
}

void setVerbosity(int consoleLevel, int fileLevel, const char* logFile) {
    dax::IRLogger::setVerbosity(static_cast<IRLoggerVerbosityLevel>(consoleLevel),
                                static_cast<IRLoggerVerbosityLevel>(fileLevel), logFile);
}

// No logger yet; the working directory is an empty folder. Every line is shown at second 0.
class IRLogger : public testing::Test {
protected:
    IRLogger() { kelvra::Logger::releaseInstance(); }
    ~IRLogger() override { kelvra::Logger::releaseInstance(); }

    const thermika_test::TempDir m_dir;
    const thermika_test::WorkingDirectory m_here{m_dir.path()};
    const thermika_test::ScopedTimeZone m_zone{"UTC"};
    thermika_test::ScopedClock m_clock{kMorningUs};
};

TEST_F(IRLogger, showsWhatEachPairOfVerbositiesAsksFor) {
    const struct {
        int verbosity;
        int linesShown;
    } rows[] = {
        {0, 1}, {1, 0}, {2, 1}, {3, 2},  {4, 3},       {5, 4},
        {6, 1}, {7, 1}, {8, 1}, {-1, 1}, {INT_MIN, 1}, {INT_MAX, 1},
    };
    for (const auto& console : rows) {
        for (const auto& file : rows) {
            SCOPED_TRACE(testing::Message() << console.verbosity << ", " << file.verbosity);
            std::filesystem::remove(m_dir / "tool" + kMorning);
            StderrCapture errors;
            setVerbosity(console.verbosity, file.verbosity, "tool");
            printAll();
            EXPECT_EQ(errors.text(), lines(console.linesShown));
            ASSERT_EQ(std::filesystem::is_empty(m_dir.path()), file.linesShown == 0);
            if (file.linesShown != 0) {
                EXPECT_EQ(readFile(m_dir / "tool" + kMorning), lines(file.linesShown));
            }
        }
    }
}

TEST_F(IRLogger, writesNothingWhenBothSinksAreOff) {
    StderrCapture errors;
    setVerbosity(1, 1, "tool");
    printAll();
    EXPECT_EQ(errors.text(), "") << "it is configured, so it has nothing to warn about either";
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
}

TEST_F(IRLogger, usesItsOwnFileNameWhenNoneIsGiven) {
    for (const char* const none : {static_cast<const char*>(nullptr), ""}) {
        const std::string file = std::string("rqthermika.log") + kMorning;
        StderrCapture errors;
        setVerbosity(5, 3, none);
        printAll();
        EXPECT_EQ(errors.text(), lines(4));
        EXPECT_EQ(readFile(file), lines(2));
        std::filesystem::remove(file);
    }
}

TEST_F(IRLogger, usesTheFileNameGiven) {
    StderrCapture errors;
    setVerbosity(0, 7, (m_dir / "x").c_str());
    printAll();
    EXPECT_EQ(errors.text(), lines(1));
    EXPECT_EQ(readFile(m_dir / "x" + kMorning), lines(1));
}

// The tool's own settings.
TEST_F(IRLogger, showsUpToInformationAndMakesNoFileForTheTool) {
    StderrCapture errors;
    setVerbosity(4, 1, (m_dir / "thermika-genconfig.log").c_str());
    printAll();
    EXPECT_EQ(errors.text(), lines(3));
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
}

TEST_F(IRLogger, saysNothingAboutAFileThatCannotBeOpened) {
    StderrCapture errors;
    setVerbosity(5, 5, (m_dir / "missing/tool").c_str());
    EXPECT_EQ(errors.text(), "");
    printAll();
    EXPECT_EQ(errors.text(), lines(4));
}

TEST_F(IRLogger, createsTheLoggerOnlyOnFirstUse) {
    setVerbosity(2, 1, nullptr);
    auto* const logger = kelvra::Logger::getInstance();
    m_clock.advance(1'500'000);
    setVerbosity(2, 1, nullptr);
    EXPECT_EQ(kelvra::Logger::getInstance(), logger);
    StderrCapture errors;
    logger->print(0, "Unit", 1, "m");
    EXPECT_EQ(errors.text(), "ERROR [Unit:1] @ 1.5s :m\n");
}

TEST_F(IRLogger, replacesTheFormerSettings) {
    setVerbosity(5, 5, "first");
    StderrCapture errors;
    setVerbosity(1, 2, "second");
    printAll();
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(readFile(std::string("first") + kMorning), "");
    EXPECT_EQ(readFile(std::string("second") + kMorning), lines(1));
}

TEST_F(IRLogger, canBeMadeAlthoughNothingNeedsIt) {
    const dax::IRLogger frontEnd;
    frontEnd.setVerbosity(dax::IRLOG_ERROR, dax::IRLOG_OFF, nullptr);
    StderrCapture errors;
    printAll();
    EXPECT_EQ(errors.text(), lines(1));
}

}  // namespace

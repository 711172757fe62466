// The log sink's files: their names, when they are opened, and what is lost.
#include <csignal>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "sdk/Logger.h"
#include "support/LoggerTest.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::kBoth;
using thermika_test::kConsoleOnly;
using thermika_test::kFile;
using thermika_test::kMorning;
using thermika_test::kMorningUs;
using thermika_test::kSecondLater;
using thermika_test::kSecondUs;
using thermika_test::ScopedTimeZone;
using thermika_test::StderrCapture;
using thermika_test::writeFile;

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

using LoggerFiles = thermika_test::LoggerTest;

TEST_F(LoggerFiles, stampsFileNamesWithTheLocalTimeWithoutLeadingZeros) {
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

TEST_F(LoggerFiles, stampsAFileNameInTheTimeZoneThatTheEnvironmentNamesThen) {
    const ScopedTimeZone zone("UTC");
    setenv("TZ", "Asia/Kathmandu", 1);
    renew();
    configure(kBoth, 3, 3);
    EXPECT_TRUE(hasFile("_15_11_2026_14-50-7.log"));
}

TEST_F(LoggerFiles, stampsANameThatIsADirectoryOnly) {
    logger().configure(m_dir / "", kFile, 3, 3);
    EXPECT_TRUE(std::filesystem::exists(m_dir / kMorning));
}

// It is the current path already, and names no file.
TEST_F(LoggerFiles, keepsAnEmptyNameWhenItIsNew) {
    const thermika_test::WorkingDirectory here(m_dir.path());
    StderrCapture errors;
    logger().configure("", kBoth, 3, 3);
    print("one");
    EXPECT_EQ(errors.text(), "ERROR [Unit:1] @ 0s :one\n");
    EXPECT_TRUE(std::filesystem::is_empty(m_dir.path()));
}

TEST_F(LoggerFiles, keepsEarlierLinesWhenConfiguredTwiceInTheSameSecond) {
    renew();
    configure(kFile, 3, 3);
    print("one");
    m_clock.advance(kSecondUs - 1);
    configure(kFile, 3, 3);
    m_clock.set(kMorningUs);
    print("two");
    EXPECT_EQ(fileAt(kMorning), "ERROR [Unit:1] @ 0s :one\nERROR [Unit:1] @ 0s :two\n");
}

TEST_F(LoggerFiles, appendsToAFileThatExistsAlready) {
    writeFile(m_base + kMorning, "from an earlier run\n");
    renew();
    configure(kFile, 3, 3);
    EXPECT_EQ(fileAt(kMorning), "from an earlier run\n");
    print("one");
    EXPECT_EQ(fileAt(kMorning), "from an earlier run\nERROR [Unit:1] @ 0s :one\n");
}

TEST_F(LoggerFiles, startsANewFileWhenConfiguredAgainInALaterSecond) {
    renew();
    configure(kFile, 3, 3);
    print("one");
    m_clock.advance(kSecondUs);
    configure(kFile, 3, 3);
    print("two");
    EXPECT_EQ(fileAt(kMorning), "ERROR [Unit:1] @ 0s :one\n");
    EXPECT_EQ(fileAt(kSecondLater), "ERROR [Unit:1] @ 1s :two\n");
}

TEST_F(LoggerFiles, keepsTheFileWhoseStampedNameIsPassedBack) {
    renew();
    configure(kFile, 3, 3);
    print("one");
    m_clock.advance(kSecondUs);
    logger().configure(m_base + kMorning, kFile, 3, 3);
    print("two");
    EXPECT_EQ(fileAt(kMorning), "ERROR [Unit:1] @ 0s :one\nERROR [Unit:1] @ 1s :two\n");
    EXPECT_FALSE(std::filesystem::exists(m_base + kMorning + kSecondLater));
}

TEST_F(LoggerFiles, createsNoFileForStandardErrorAloneButStampsItsName) {
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

TEST_F(LoggerFiles, losesTheLinesOfAFileThatCannotBeOpenedSilently) {
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

TEST_F(LoggerFiles, losesTheLinesAfterOneThatCouldNotBeWritten) {
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

}  // namespace

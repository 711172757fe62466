// What a run does to the process around it: the manager's directories, and the log sink.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "sdk/Logger.h"
#include "support/ExpectedDocument.h"
#include "support/ProcessState.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

int thermikaMain(int argc, char** argv);

namespace {

using dax::IRCalibrationManager;
using kelvra::Logger;
using thermika_test::inSandbox;
using thermika_test::RunResult;
using thermika_test::ScopedClock;
using thermika_test::ScopedTimeZone;

constexpr std::int64_t kSecondUs = 1'000'000;
constexpr std::int64_t kMorningUs = 1'794'733'507 * kSecondUs;  // 2026-11-15 09:05:07 UTC

/// Leave to look at the manager's private instance, which getInstance() would create.
template <auto kMember>
struct Reveal {
    friend auto revealedInstance() { return kMember; }
};
auto revealedInstance();
template struct Reveal<&IRCalibrationManager::_this>;

bool isThereAManager() { return *revealedInstance() != nullptr; }

int runDriver(std::string name, std::string option) {
    char* argv[] = {name.data(), option.data(), nullptr};
    return thermikaMain(2, argv);
}

/// In a sandbox: a run that ends at its options, in a process without logger and manager.
void runStopped(const std::string& name = "/usr/share/genconfig") {
    Logger::releaseInstance();
    delete IRCalibrationManager::getInstance();
    EXPECT_EQ(runDriver(name, "-t/tmp"), -1);
}

/// The names of the files in a folder.
std::vector<std::string> filesIn(const std::string& dir) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dir))
        names.push_back(entry.path().filename());
    return names;
}

TEST(DriverRun, replacesTheDirectoriesThatTheManagerHad) {
    inSandbox([] {
        const RunResult result = thermika_test::runInProcess([] {
            IRCalibrationManager::getInstance()->setCalibrationDir("/x");
            IRCalibrationManager::getInstance()->setFormatsDir("/x");
            return runDriver("/usr/share/genconfig", "-d14080045");
        });
        thermika_test::ExpectedDocument document;
        document.serial = "14080045";
        EXPECT_EQ(result, (RunResult{document.text() + "\n", "", 0}));
    });
}

TEST(DriverRun, logsInformationAndNoDetailsAlsoWhenItEndsAtItsOptions) {
    inSandbox([] {
        const ScopedClock clock(kMorningUs);
        thermika_test::StderrCapture errors;
        runStopped();
        EXPECT_EQ(errors.text(), "");
        Logger::getInstance()->print(2, "Unit", 1, "information");
        Logger::getInstance()->print(3, "Unit", 2, "detail");
        Logger::getInstance()->print(0, "Unit", 3, "error");
        EXPECT_EQ(errors.text(),
                  "INFO [Unit:1] @ 0s :information\n"
                  "ERROR [Unit:3] @ 0s :error\n");
    });
}

TEST(DriverRun, makesNoManagerWhenItEndsAtItsOptions) {
    inSandbox([] {
        runStopped();
        EXPECT_FALSE(isThereAManager());
        IRCalibrationManager::getInstance();
        EXPECT_TRUE(isThereAManager());
    });
}

TEST(DriverRun, namesALogFileAfterTheProgramAndCreatesNone) {
    inSandbox([] {
        const ScopedTimeZone zone("UTC");
        ScopedClock clock(kMorningUs);
        const thermika_test::TempDir dir;
        const std::string stamped = "tool.log_15_11_2026_9-5-7.log";
        runStopped(dir / "tool");
        EXPECT_EQ(filesIn(dir.path()), std::vector<std::string>());

        // Only the name that the logger has already is taken as it stands.
        clock.advance(kSecondUs);
        Logger::getInstance()->configure(dir / stamped, Logger::LOGGER_FILE, 3, 3);
        EXPECT_EQ(filesIn(dir.path()), std::vector<std::string>{stamped});
    });
}

TEST(DriverRun, namesTheLogFileOfARunWithoutOptionsAlike) {
    inSandbox([] {
        const ScopedTimeZone zone("UTC");
        ScopedClock clock(kMorningUs);
        const thermika_test::TempDir dir;
        const std::string stamped = "tool.log_15_11_2026_9-5-7.log";
        std::string name = dir / "tool";
        char* argv[] = {name.data(), nullptr};
        Logger::releaseInstance();
        EXPECT_EQ(thermikaMain(1, argv), -1);

        clock.advance(kSecondUs);
        Logger::getInstance()->configure(dir / stamped, Logger::LOGGER_FILE, 3, 3);
        EXPECT_EQ(filesIn(dir.path()), std::vector<std::string>{stamped});
    });
}

}  // namespace

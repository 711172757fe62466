// `thermika doctor`: one line for each thing that can be wrong, with the next step.
#include <sys/stat.h>

#include <filesystem>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/HealthyMachine.h"
#include "support/UsbTree.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::HealthyMachine;
using thermika_test::inSandbox;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::UsbTree;

/// The line about `subject` without the gaps between its cells; "" when there is none.
std::string lineAbout(const std::string& subject, const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string state;
        std::string about;
        std::string rest;
        words >> state >> about >> std::ws;
        std::getline(words, rest);
        if (about == subject) return state + " " + rest;
    }
    return "";
}

TEST(Doctor, findsNothingWrongWhereEverythingIsThere) {
    inSandbox([] {
        umask(022);  // the directory's mode depends on it
        const HealthyMachine machine;
        const RunResult result = runCompanion({"doctor"});
        EXPECT_EQ(result.status, 0) << result;
        EXPECT_EQ(result.err, "");
        EXPECT_EQ(result.out.find("FAIL"), std::string::npos) << result;
        EXPECT_EQ(lineAbout("version", result.out).find("OK " THERMIKA_VERSION ", built with "),
                  0U);
        EXPECT_EQ(lineAbout("directory", result.out)
                      .find("OK /usr/share/libthermika/cali, owner root:root, mode 0755, "),
                  0U)
            << result;
        EXPECT_EQ(lineAbout("formats", result.out).find("OK /usr/share/libthermika, "), 0U);
        EXPECT_EQ(lineAbout("bus", result.out), "OK /sys/bus/usb/devices can be read");
        EXPECT_EQ(lineAbout("camera", result.out), "OK the camera 14080045 is attached at 1-1");
        EXPECT_EQ(lineAbout("description", result.out),
                  "OK /usr/share/libthermika/cali/Cali-14080045.xml, 481 B, 1 optics");
        EXPECT_EQ(lineAbout("files", result.out), "OK of camera 14080045: complete (5 files)");
        EXPECT_EQ(lineAbout("server", result.out).find("OK http://"), 0U) << result;
    });
}

TEST(Doctor, namesTheNextStepForWhateverIsWrong) {
    inSandbox([] {
        UsbTree bus;
        const RunResult empty = runCompanion({"doctor"});
        EXPECT_EQ(empty.status, 0) << empty;
        EXPECT_EQ(lineAbout("directory", empty.out),
                  "WARN /usr/share/libthermika/cali does not exist (thermika fetch creates it)");
        EXPECT_EQ(lineAbout("formats", empty.out),
                  "WARN /usr/share/libthermika does not exist (the program that shows the camera's "
                  "images brings it)");
        EXPECT_EQ(lineAbout("camera", empty.out),
                  "WARN no camera is attached (plug one in, or name one: thermika doctor SERIAL)");
        const std::string server = lineAbout("server", empty.out);
        EXPECT_EQ(server.find("WARN http://"), 0U) << empty;
        EXPECT_NE(server.find(" does not answer: "), std::string::npos) << empty;
        const std::string step =
            " (is there a network? a mirror or a folder will do: thermika fetch --from)";
        EXPECT_EQ(server.find(step), server.size() - step.size()) << empty;

        bus.addCamera("1-1", "14080045");
        const RunResult bare = runCompanion({"doctor"});
        EXPECT_EQ(bare.status, 1);
        EXPECT_EQ(lineAbout("description", bare.out),
                  "FAIL the calibration description "
                  "/usr/share/libthermika/cali/Cali-14080045.xml is missing (fetch it: thermika "
                  "fetch 14080045)");

        fs::create_directories(thermika_test::kCaliDir);
        thermika_test::installFiles(thermika_test::cameraFiles());
        fs::remove(std::string(thermika_test::kCaliDir) + "/" + thermika_test::kLastData);
        const RunResult lacking = runCompanion({"doctor", "14080045"});
        EXPECT_EQ(lacking.status, 1);
        EXPECT_EQ(lineAbout("files", lacking.out),
                  "FAIL of camera 14080045: 1 of 5 files not present (fetch them: thermika fetch "
                  "14080045)");
    });
}

TEST(Doctor, saysWhatToDoWhereTheFormatsHaveNoDirectory) {
    inSandbox([] {
        const UsbTree bus;
        thermika_test::writeFile("/usr/share/libthermika", "");
        EXPECT_EQ(lineAbout("formats", runCompanion({"--dir", "/tmp", "doctor"}).out),
                  "FAIL /usr/share/libthermika is no directory (make it a directory that can be "
                  "read)");
    });
}

/// What the doctor says of this directory.
std::string verdictOn(const std::string& directory, int status) {
    const RunResult result = runCompanion({"--dir", directory, "doctor"});
    EXPECT_EQ(result.status, status) << result;
    return lineAbout("directory", result.out);
}

TEST(Doctor, saysWhatIsWrongWithTheDirectoryAndWhatToDo) {
    inSandbox([] {
        const UsbTree bus;
        thermika_test::writeFile("/usr/share/file", "");
        EXPECT_EQ(verdictOn("/usr/share/file", 1),
                  "FAIL /usr/share/file is no directory (choose another: --dir)");
        EXPECT_EQ(verdictOn("/usr/share/file/cali", 1),
                  "FAIL /usr/share/file/cali: Not a directory (choose another: --dir)");

        const std::string dir = "/usr/share/dir";
        fs::create_directory(dir);
        const auto judged = [&dir](int mode, int status) {
            fs::permissions(dir, fs::perms(mode));
            const std::string verdict = verdictOn(dir, status);
            const std::size_t free = verdict.find(" free, ");
            EXPECT_NE(free, std::string::npos) << verdict;
            return verdict.substr(0, verdict.find(", ")) + verdict.substr(free + 5);
        };
        EXPECT_EQ(judged(0300, 1), "FAIL /usr/share/dir, not readable (is it yours?)");
        EXPECT_EQ(judged(0600, 1), "FAIL /usr/share/dir, not readable (is it yours?)");
        EXPECT_EQ(judged(0555, 0),
                  "WARN /usr/share/dir, not writable (to fetch, become its owner or choose "
                  "another: --dir)");
        thermika_test::mountOver(dir, "size=1m,mode=0755");
        EXPECT_EQ(verdictOn(dir, 0),
                  "WARN /usr/share/dir, owner root:root, mode 0755, 1.0 MiB free, hardly any space "
                  "left (make room)");
        // Without a list of users, numbers stand for them.
        thermika_test::mountEmptyFolder("/etc");
        EXPECT_NE(verdictOn(dir, 0).find(", owner 0:0, "), std::string::npos);
    });
}

TEST(Doctor, tellsEveryKindOfDeviceApart) {
    inSandbox([] {
        UsbTree bus;
        bus.addDevice("1-1", {"0403", "6001", "FT4XK2A9"});
        const RunResult other = runCompanion({"doctor"});
        EXPECT_EQ(other.status, 0) << other;
        EXPECT_EQ(lineAbout("device", other.out).find("OK the device at 1-1, "), 0U) << other;
        EXPECT_EQ(lineAbout("camera", other.out).find("WARN no camera is attached ("), 0U) << other;

        bus.addCamera("1-2", "0");
        const RunResult unusable = runCompanion({"doctor", "--color=always"});
        EXPECT_EQ(unusable.status, 1);
        const auto begins = [&unusable](const std::string& subject, const std::string& with) {
            EXPECT_EQ(lineAbout(subject, unusable.out).find(with), 0U) << unusable;
        };
        begins("camera", "\033[31mFAIL\033[0m the camera at 1-2 has no usable serial number: ");
        begins("bus", "\033[32mOK\033[0m ");
        begins("server", "\033[33mWARN\033[0m ");
    });
}

TEST(Doctor, goesOnWithoutABus) {
    inSandbox([] {
        const RunResult result = runCompanion({"doctor"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(lineAbout("bus", result.out).find("FAIL cannot read /sys/bus/usb/devices: "), 0U);
        EXPECT_NE(lineAbout("server", result.out), "");
    });
}

}  // namespace

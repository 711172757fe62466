// Every answer with --json: one document that its published schema describes, whatever bytes a
// camera, a description or a directory has.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/CaliDescriptions.h"
#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/HealthyMachine.h"
#include "support/UsbTree.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::DownloadSandbox;
using thermika_test::FileServer;
using thermika_test::HealthyMachine;
using thermika_test::inSandbox;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::TempDir;
using thermika_test::UsbTree;
using thermika_test::writeFile;

/// The document with sorted keys in one line, or why the schema does not describe it.
std::string checked(const std::string& schema, const std::string& document) {
    const TempDir folder;
    writeFile(folder / "document", document);
    const RunResult result = thermika_test::run(
        "python3",
        {"python3", THERMIKA_TEST_SUPPORT "/check-json.py",
         THERMIKA_SCHEMAS "/" + schema + ".json"},
        [&] { dup2(open((folder / "document").c_str(), O_RDONLY), STDIN_FILENO); });
    if (result.status == 0) return result.out;
    ADD_FAILURE() << schema << ": " << result << "\n" << document;
    return "";
}

/// Runs the command and validates its answer.
std::string answer(std::vector<std::string> arguments, int status, const std::string& schema) {
    arguments.insert(arguments.begin(), "--json");
    const RunResult result = runCompanion(arguments);
    EXPECT_EQ(result.status, status) << result;
    return checked(schema, result.out);
}

/// A camera with all its files, and each kind of device beside it.
void attachEverything() {
    UsbTree bus;
    bus.addCamera("1-1", "14080045");
    bus.addCamera("1-2", "14080046");
    bus.addCamera("1-3", "x\xE9\033");
    bus.addCamera("1-4", "14080047");
    fs::permissions(UsbTree::attributePath("1-4", "serial"), fs::perms::none);
    bus.addDevice("1-5", {"0403", "6001", "FT4XK2A9"});
    fs::create_directories(thermika_test::kCaliDir);
    thermika_test::installFiles(thermika_test::cameraFiles());
}

TEST(Documents, ofCamerasAreAsTheSchemaSays) {
    inSandbox([] {
        answer({"cameras"}, 3, "cameras");
        attachEverything();
        const std::string text = answer({"cameras"}, 3, "cameras");
        EXPECT_NE(text.find(R"("serialText": "x\udbff\udee9\u001b")"), std::string::npos) << text;
        for (const char* const state : {"camera", "unreadable", "no-serial", "no-camera"})
            EXPECT_NE(text.find(R"("state": ")" + std::string(state) + "\""), std::string::npos);
        EXPECT_NE(text.find(R"("complete": true)"), std::string::npos) << text;
    });
}

TEST(Documents, ofCompletionAreAsTheSchemaSays) {
    for (const char* const shell : {"bash", "zsh", "fish"})
        answer({"completion", shell}, 0, "completion");
    answer({"--dir", THERMIKA_EXAMPLES, "completion", "optics", "14080045"}, 0, "completion");
    answer({"--dir", THERMIKA_EXAMPLES, "completion", "ranges", "14080046"}, 0, "completion");
}

TEST(Documents, ofOpticsAreAsTheSchemaSays) {
    const TempDir folder;
    thermika_test::writeDescription(
        folder, 14080045,
        thermika_test::opticsList(thermika_test::opticsElement(
            33, "T\xE9",
            thermika_test::rangeElement("-20.1", "100", "<TempHiExt>1e30</TempHiExt>") +
                thermika_test::rangeElement(
                    "0", "250",
                    "<Framerates>\n<Framerate><FR>27</FR></Framerate>\n</Framerates>"))));
    const std::string text = answer({"optics", "14080045", "--dir", folder.path()}, 0, "optics");
    EXPECT_NE(text.find(R"("min": -20.1)"), std::string::npos) << text;
    EXPECT_NE(text.find(R"("text": "T\udbff\udee9")"), std::string::npos) << text;
    EXPECT_NE(text.find(R"("framerates": [27])"), std::string::npos) << text;
    EXPECT_NE(text.find(R"("framerates": null)"), std::string::npos) << text;
}

TEST(Documents, ofFilesAreAsTheSchemaSays) {
    const TempDir folder;
    const std::vector<std::string> command = {"files", "14080045", "--dir", folder.path()};
    answer(command, 1, "files");
    for (const auto& [name, bytes] : thermika_test::cameraFiles()) writeFile(folder / name, bytes);
    EXPECT_NE(answer(command, 0, "files").find(R"("complete": true)"), std::string::npos);
    writeFile(folder / thermika_test::kFirstData, "");
    fs::remove(folder / thermika_test::kFirstCurve);
    fs::remove(folder / thermika_test::kLastData);
    fs::create_directory(folder / thermika_test::kLastData);
    fs::remove(folder / thermika_test::kLastCurve);
    fs::create_symlink(thermika_test::kLastCurve, folder / thermika_test::kLastCurve);
    const std::string text =
        answer({"files", "14080045", "--missing", "--dir", folder.path()}, 1, "files");
    for (const char* const state : {"empty", "missing", "not-regular", "unreadable"})
        EXPECT_NE(text.find(R"("state": ")" + std::string(state) + "\""), std::string::npos)
            << text;
    EXPECT_EQ(text.find(R"("state": "present")"), std::string::npos) << text;
    writeFile(folder / thermika_test::kDescriptionName, "<html>");
    answer(command, 3, "files");
}

TEST(Documents, ofAFetchAreAsTheSchemaSays) {
    const TempDir source;
    const TempDir home;
    const std::vector<std::string> command = {"fetch",       "14080045", "-q",         "--from",
                                              source.path(), "--dir",    home / "cali"};
    EXPECT_NE(answer(command, 3, "fetch").find(R"("outcome": "missing")"), std::string::npos);
    for (const auto& [name, bytes] : thermika_test::cameraFiles()) writeFile(source / name, bytes);
    std::vector<std::string> plan = command;
    plan.emplace_back("--dry-run");
    const std::string planned = answer(plan, 0, "fetch");
    EXPECT_NE(planned.find(R"("outcome": "planned")"), std::string::npos) << planned;
    EXPECT_NE(planned.find(R"("complete": false)"), std::string::npos) << planned;
    EXPECT_NE(answer(command, 0, "fetch").find(R"("outcome": "fetched")"), std::string::npos);
    const std::string again = answer(command, 0, "fetch");
    EXPECT_NE(again.find(R"("outcome": "present")"), std::string::npos) << again;
    EXPECT_NE(again.find(R"("complete": true)"), std::string::npos) << again;
}

TEST(Documents, ofAFetchTellEachFailureApart) {
    inSandbox([] {
        const std::string source = "/usr/share/medium";
        fs::create_directories(source);
        for (const auto& [name, bytes] : thermika_test::cameraFiles())
            writeFile(source + "/" + name, bytes);
        const std::vector<std::string> command = {"fetch", "14080045", "-q", "--from", source};
        fs::permissions(source + "/" + thermika_test::kFirstData, fs::perms::none);
        const std::string failed = answer(command, 3, "fetch");
        EXPECT_NE(failed.find(R"("outcome": "failed", "reason": ")"), std::string::npos) << failed;
        EXPECT_NE(failed.find("Permission denied"), std::string::npos) << failed;

        thermika_test::installFiles(
            {{thermika_test::kDescriptionName, thermika_test::cameraDescription("a/\033b")}});
        const std::string refused = answer(command, 3, "fetch");
        EXPECT_NE(refused.find(R"("destination": null)"), std::string::npos) << refused;
        EXPECT_NE(refused.find(R"("outcome": "refused", "reason": ")"), std::string::npos)
            << refused;

        thermika_test::makeReadOnly(thermika_test::kCaliDir);
        std::vector<std::string> all = command;
        all.emplace_back("--all");
        const std::string untried = answer(all, 3, "fetch");
        EXPECT_NE(untried.find(R"("outcome": "not-tried")"), std::string::npos) << untried;
        EXPECT_NE(untried.find(R"("problem": ")"), std::string::npos) << untried;
    });
}

TEST(Documents, ofAFetchFromAServerTellItsAnswers) {
    inSandbox([] {
        const DownloadSandbox sandbox;
        FileServer server;
        thermika_test::serveFiles(server, thermika_test::cameraFiles());
        server.setFault(thermika_test::onServer(thermika_test::kFirstData), "missing");
        const std::vector<std::string> command = {"fetch", "14080045", "-q", "--from",
                                                  "http://localhost/"};
        const std::string text = answer(command, 3, "fetch");
        for (const char* const status : {R"("httpStatus": 200)", R"("httpStatus": 404)"})
            EXPECT_NE(text.find(status), std::string::npos) << text;
        EXPECT_NE(text.find(R"("from": "http://localhost/")"), std::string::npos) << text;
    });
}

TEST(Documents, ofAConfigurationAreAsTheSchemaSays) {
    const TempDir folder;
    const std::string text = answer({"config", "14080045", "--dir", folder.path()}, 0, "config");
    EXPECT_NE(text.find(R"(<serial>14080045</serial>)"), std::string::npos) << text;
    answer({"config", "14080045", "--dir", folder.path(), "-o", folder / "camera.xml"}, 0,
           "config");
}

TEST(Documents, ofServersAreAsTheSchemaSays) {
    inSandbox([] {
        answer({"online"}, 1, "online");
        // Nothing is measured of a folder.
        const std::string folder = answer({"online", "--from", "/usr"}, 0, "online");
        EXPECT_NE(folder.find(R"("answeredMs": null)"), std::string::npos) << folder;
        EXPECT_NE(folder.find(R"("connectedMs": null)"), std::string::npos) << folder;
        answer({"online", "--from", "ftp://x"}, 2, "error");

        const DownloadSandbox sandbox;
        FileServer server;
        server.add(thermika_test::kLinksPath, thermika_test::linksDocument());
        const std::string good = answer({"online"}, 0, "online");
        EXPECT_NE(good.find(R"("usable": true)"), std::string::npos) << good;
        EXPECT_EQ(good.find(R"("answeredMs": null)"), std::string::npos) << good;
    });
}

TEST(Documents, ofTheDoctorAreAsTheSchemaSays) {
    inSandbox([] {
        answer({"doctor"}, 1, "doctor");
        attachEverything();
        const std::string text = answer({"doctor"}, 1, "doctor");
        EXPECT_NE(text.find(R"("subject": "bus", "text": "/sys/bus/usb/devices can be read")"),
                  std::string::npos)
            << text;
        for (const char* const verdict : {"OK", "WARN", "FAIL"})
            EXPECT_NE(text.find(R"("verdict": ")" + std::string(verdict) + "\""), std::string::npos)
                << text;
    });
}

TEST(Documents, ofAValidationAreAsTheSchemaSays) {
    const TempDir folder;
    const std::string file = folder / "camera.xml";
    ASSERT_EQ(runCompanion({"config", "14080045", "-q", "--dir", folder.path(), "-o", file}).status,
              0);
    answer({"validate", file, "--dir", folder.path()}, 0, "validate");
    writeFile(file, "<imager>\n<nonsense/>\n</imager>\n");
    answer({"validate", file, "--dir", folder.path()}, 1, "validate");
}

// A reader has every byte back, whatever the locale; a person gets each escaped once.
TEST(Documents, holdMessagesWithTheirBytes) {
    const TempDir folder;
    const std::string directory = folder / "a\\b\xC3\xA9\xE9";
    fs::create_directory(directory);
    writeFile(directory + "/" + thermika_test::kDescriptionName, "<html>");
    const std::string inDocument = R"(a\\b\u00e9\udbff\udee9/)";
    const std::vector<std::vector<std::string>> commands = {
        {"optics", "14080045"}, {"files", "14080045"}, {"doctor", "14080045"}};
    inSandbox([&] {
        for (std::vector<std::string> command : commands) {
            command.insert(command.begin(), {"--json", "--dir", directory});
            const auto in = [&command](const char* locale) {
                return runCompanion(command, [locale] { setenv("LC_ALL", locale, 1); });
            };
            const RunResult plain = in("C");
            const RunResult utf8 = in("C.UTF-8");
            EXPECT_EQ(plain.out, utf8.out);
            EXPECT_NE(utf8.out.find(inDocument), std::string::npos) << utf8;
            EXPECT_EQ(utf8.out.find("\\xE9"), std::string::npos) << utf8;
            if (command.at(3) == "doctor") continue;  // says all of it in its document
            EXPECT_NE(plain.err.find(R"(a\\b\xC3\xA9\xE9/)"), std::string::npos) << plain;
            EXPECT_NE(utf8.err.find("a\\\\b\xC3\xA9\\xE9/"), std::string::npos) << utf8;
        }
    });
}

TEST(Documents, ofAHealthyCameraAreAsTheSchemaSays) {
    inSandbox([] {
        const HealthyMachine machine;
        const std::string doctor = answer({"doctor"}, 0, "doctor");
        EXPECT_NE(doctor.find(R"("healthy": true)"), std::string::npos) << doctor;
        for (const char* const verdict : {"FAIL", "WARN"})
            EXPECT_EQ(doctor.find(R"("verdict": ")" + std::string(verdict) + "\""),
                      std::string::npos)
                << doctor;
        EXPECT_NE(answer({"online"}, 0, "online").find(R"("usable": true)"), std::string::npos);
        answer({"cameras"}, 0, "cameras");
    });
}

// The mistake may stand before or behind the option.
TEST(Documents, tellWhatIsWrongWithTheCommandLine) {
    const std::vector<std::vector<std::string>> lines = {
        {},         {"fetch", "--jobs"},        {"fetch", "--jobs", "x"}, {"optics", "--nonsense"},
        {"nosuch"}, {"--color", "x", "optics"}, {"completion", "csh"},    {"validate"}};
    for (const std::vector<std::string>& line : lines) {
        std::vector<std::string> before = line;
        before.insert(before.begin(), "--json");
        std::vector<std::string> behind = line;
        behind.emplace_back("--json");
        const RunResult result = runCompanion(before);
        EXPECT_EQ(result.status, 2) << result;
        EXPECT_EQ(result.out.find("{\n  \"error\": \""), 0U) << result;
        EXPECT_NE(result.out.find("\",\n  \"status\": 2\n}\n"), std::string::npos) << result;
        const bool isTakenForAValue = !line.empty() && line.back() == "--jobs";
        if (isTakenForAValue) continue;
        EXPECT_EQ(runCompanion(behind), result);
    }
    answer({"fetch", "--jobs"}, 2, "error");
    EXPECT_EQ(runCompanion({"optics", "--nonsense", "--", "--json"}).out, "");
}

// The standard library's own words, for want of ours.
TEST(Documents, tellWhatNobodyThoughtOf) {
    const RunResult result = runCompanion({"--json", "--dir", "x", "files", "14080045"}, [] {
        const std::string folder = "/tmp/thermika-gone-" + std::to_string(getpid());
        if (mkdir(folder.c_str(), 0700) != 0 || chdir(folder.c_str()) != 0 ||
            rmdir(folder.c_str()) != 0)
            _exit(9);
    });
    EXPECT_EQ(result.status, 3) << result;
    EXPECT_NE(result.err, "");
    checked("error", result.out);
}

TEST(Documents, tellWhyThereIsNoOther) {
    inSandbox([] {
        const UsbTree bus;
        for (const char* const command : {"optics", "files", "config", "fetch"})
            answer({command}, 1, "error");
    });
    answer({"optics", "x"}, 2, "error");
    const TempDir folder;
    answer({"optics", "14080045", "--dir", folder.path()}, 3, "error");
    // Without standard output there is nobody to tell.
    EXPECT_EQ(runCompanion({"--json", "optics", "x"}, [] { close(STDOUT_FILENO); }).status, 2);
}

}  // namespace

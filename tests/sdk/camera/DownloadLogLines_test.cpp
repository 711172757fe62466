// The line numbers in the download's log lines: each message has its own.
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"
#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/Matches.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::cameraFiles;
using thermika_test::DownloadSandbox;
using thermika_test::FileServer;
using thermika_test::kCaliDir;
using thermika_test::kCamera;
using thermika_test::kLinksPath;
using thermika_test::linksDocument;

/// The manager's log lines of an operation: their line numbers, with their messages.
using NumberedLines = std::vector<std::pair<int, std::string>>;

NumberedLines linesOf(const std::function<void()>& operation) {
    dax::IRLogger::setVerbosity(dax::IRLOG_INFO, dax::IRLOG_OFF, nullptr);
    thermika_test::StderrCapture captured;
    operation();
    NumberedLines lines;
    for (const auto& line : thermika_test::matchesIn(
             captured.text(), R"( \[IRCalibrationManager:([0-9]+)\] @ [0-9.e+-]+s :(.*))"))
        lines.emplace_back(std::stoi(line[1]), line[2]);
    return lines;
}

NumberedLines linesOfDownload(unsigned long serial = kCamera) {
    return linesOf(
        [serial] { dax::IRCalibrationManager::getInstance()->downloadCalibration(serial); });
}

NumberedLines fetchBehind(FileServer& server, const std::string& links) {
    server.add(kLinksPath, links);
    return linesOf([] {
        std::string list = "a.dat;";
        dax::IRCalibrationManager::downloadTarget(list.data(), thermika_test::kCameraText,
                                                  kCaliDir);
    });
}

TEST(DownloadLogLines, numberEveryMessageDifferently) {
    thermika_test::inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument(""));
        NumberedLines all;
        // Each run writes as many lines as are named.
        const auto add = [&all](const NumberedLines& lines, const std::vector<std::string>& texts) {
            ASSERT_EQ(lines.size(), texts.size());
            for (std::size_t i = 0; i < lines.size(); ++i) EXPECT_EQ(lines[i].second, texts[i]);
            all.insert(all.end(), lines.begin(), lines.end());
        };
        ASSERT_EQ(chmod(kCaliDir, 0555), 0);
        add(linesOfDownload(), {std::string("No writing permissions to ") + kCaliDir});
        ASSERT_EQ(chmod(kCaliDir, 0755), 0);
        add(linesOfDownload(0), {"No serial number specified."});
        NumberedLines failed = linesOfDownload();
        ASSERT_EQ(failed.size(), 2U);
        thermika_test::installFiles(cameraFiles());
        add(linesOfDownload(), {"All files installed."});
        add({failed[1]}, {"Download failed."});
        add(fetchBehind(server, ""), {"Error reading /tmp/downloadlinks.xml"});
        fs::remove(thermika_test::kLinksFile);
        add(fetchBehind(server, "\n"),
            {"Error parsing download links file: /tmp/downloadlinks.xml"});
        add({failed[0]}, {"Error downloading "});

        ASSERT_EQ(all.size(), 7U);
        std::set<int> numbers;
        for (const auto& [number, message] : all) {
            EXPECT_GT(number, 1) << message;
            EXPECT_TRUE(numbers.insert(number).second) << message;
        }
    });
}

}  // namespace

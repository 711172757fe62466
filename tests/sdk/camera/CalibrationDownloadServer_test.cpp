// The download against servers, networks and disks that fail on the way: what it answers and says,
// and what lies in the calibration directory and in /tmp afterwards.
#include <string>

#include <gtest/gtest.h>

#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

using namespace thermika_test;

const std::string kFailedWithoutLinks =
    managerLine("ERROR", "Error reading /tmp/downloadlinks.xml") +
    managerLine("INFO", "Download failed.");
const std::string kFailedOnBadLinks =
    managerLine("ERROR", "Error parsing download links file: /tmp/downloadlinks.xml") +
    managerLine("INFO", "Download failed.");

/// Downloads the whole set; the server has `fault` at `path`, and `got` is what arrives of the
/// files.
void expectArrival(const std::string& path, const std::string& fault, const Files& got,
                   const Outcome& outcome = {true, kInstalled}) {
    const DownloadSandbox world;
    FileServer server;
    serveFiles(server, cameraFiles());
    server.setFault(path, fault);
    EXPECT_EQ(download(), outcome);
    EXPECT_EQ(contents(kCaliDir), got);
    EXPECT_EQ(contents("/tmp"), Files());
}

/// The whole set, but for one file.
Files cameraFilesWith(const std::string& name, const std::string& bytes) {
    Files files = cameraFiles();
    files[name] = bytes;
    return files;
}

TEST(CalibrationDownloadServer, countsAFileThatTheServerLacksAsPresentOnceItIsEmpty) {
    inSandbox([] {
        expectArrival(onServer(kFirstData), "missing", cameraFilesWith(kFirstData, ""));
        EXPECT_EQ(FileServer::requests().size(), 7U);  // and it is not asked for again
    });
}

TEST(CalibrationDownloadServer, countsAnEmptyAnswerAsPresent) {
    inSandbox(
        [] { expectArrival(onServer(kLastCurve), "empty", cameraFilesWith(kLastCurve, "")); });
}

TEST(CalibrationDownloadServer, countsAFileCutOnTheWayAsPresent) {
    inSandbox(
        [] { expectArrival(onServer(kFirstData), "cut", cameraFilesWith(kFirstData, "data at")); });
}

TEST(CalibrationDownloadServer, getsAWholeFileWhenTheConnectionBreaksOnce) {
    inSandbox([] { expectArrival(onServer(kFirstData), "cut-once", cameraFiles()); });
}

TEST(CalibrationDownloadServer, waitsForAServerThatPauses) {
    inSandbox([] { expectArrival(onServer(kFirstData), "stall", cameraFiles()); });
}

TEST(CalibrationDownloadServer, followsARedirection) {
    inSandbox([] {
        expectArrival(onServer(kFirstData), "redirect", cameraFiles());
        EXPECT_EQ(FileServer::requests().at(4), "/moved" + onServer(kFirstData));
    });
}

TEST(CalibrationDownloadServer, asksAgainForADescriptionThatDidNotCome) {
    inSandbox([] {
        // The third pass brings the rest, and nobody looks any more.
        expectArrival(onServer(kDescriptionName), "missing-once", cameraFiles(), {true, ""});
    });
}

TEST(CalibrationDownloadServer, asksAgainForADescriptionThatCameEmpty) {
    inSandbox([] {
        expectArrival(onServer(kDescriptionName), "empty-once", cameraFiles(), {true, ""});
    });
}

TEST(CalibrationDownloadServer, takesADescriptionCutOnTheWayAtItsWord) {
    inSandbox([] {
        // Without its ranges the built-in ones stand in, whose files the server does not have.
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        server.setFault(onServer(kDescriptionName), "cut");
        EXPECT_TRUE(download().result);
        const std::string whole = cameraDescription();
        EXPECT_EQ(contents(kCaliDir).at(kDescriptionName), whole.substr(0, whole.size() / 2));
    });
}

TEST(CalibrationDownloadServer, takesAnyTextForADescriptionThatCallsForNothing) {
    inSandbox([] {
        // As networks answer that want a password first.
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, {{kDescriptionName, "<html>\n<body>Welcome\n</body>\n</html>\n"}});
        EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        EXPECT_EQ(contents(kCaliDir).size(), 1U);
    });
}

TEST(CalibrationDownloadServer, getsTheLinksDocumentPastPausesBreaksAndRedirections) {
    for (const char* const fault : {"stall", "cut-once", "redirect"}) {
        SCOPED_TRACE(fault);
        inSandbox([fault] { expectArrival(kLinksPath, fault, cameraFiles()); });
    }
}

TEST(CalibrationDownloadServer, failsWithoutALinksDocumentAndLeavesTheEmptyFile) {
    for (const char* const fault : {"missing", "empty"}) {
        SCOPED_TRACE(fault);
        inSandbox([fault] {
            const DownloadSandbox world;
            FileServer server;
            serveFiles(server, cameraFiles());
            server.setFault(kLinksPath, fault);
            EXPECT_EQ(download(), (Outcome{false, kFailedWithoutLinks}));
            EXPECT_EQ(contents("/tmp"), (Files{{"downloadlinks.xml", ""}}));
            EXPECT_EQ(contents(kCaliDir), Files());
            EXPECT_EQ(FileServer::requests(), (Texts{kLinksPath}));
        });
    }
}

TEST(CalibrationDownloadServer, failsWithALinksDocumentCutOnTheWay) {
    inSandbox([] { expectArrival(kLinksPath, "cut", Files(), {false, kFailedOnBadLinks}); });
}

TEST(CalibrationDownloadServer, failsWithoutAServer) {
    inSandbox([] {
        const DownloadSandbox world;
        EXPECT_EQ(download(), (Outcome{false, kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"), (Files{{"downloadlinks.xml", ""}}));
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(CalibrationDownloadServer, failsWithoutARoute) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        // An address for documents, which no network has; the only route here is to this machine.
        writeFile("/etc/hosts", "192.0.2.1 " THERMIKA_DOWNLOAD_HOST "\n");
        EXPECT_EQ(download(), (Outcome{false, kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"), (Files{{"downloadlinks.xml", ""}}));
        EXPECT_EQ(FileServer::requests(), Texts());
    });
}

TEST(CalibrationDownloadServer, failsWhenNobodyKnowsTheHost) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        writeFile("/etc/hosts", "127.0.0.1 localhost\n");
        EXPECT_EQ(download(), (Outcome{false, kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"), (Files{{"downloadlinks.xml", ""}}));
        EXPECT_EQ(FileServer::requests(), Texts());
    });
}

TEST(CalibrationDownloadServer, failsWithoutWget) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        DownloadSandbox::hideAllPrograms();
        EXPECT_EQ(download(), (Outcome{false, "sh: 1: wget: not found\n" + kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"), Files());
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(CalibrationDownloadServer, believesALinksDocumentThatLiesThereWhenNoneCanBeFetched) {
    inSandbox([] {
        const DownloadSandbox world;
        writeFile(kLinksFile, linksDocument());
        DownloadSandbox::hideAllPrograms();
        // The first pass fetches nothing but takes its commands for started; it also removes the
        // document, so the second pass has none.
        EXPECT_EQ(download(), (Outcome{false,
                                       "sh: 1: wget: not found\n"
                                       "sh: 1: wget: not found\n"
                                       "sh: 1: wget: not found\n" +
                                           kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(CalibrationDownloadServer, replacesALinksDocumentThatLiesThere) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        server.setFault(kLinksPath, "missing");
        writeFile(kLinksFile, linksDocument());
        EXPECT_EQ(download(), (Outcome{false, kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"), (Files{{"downloadlinks.xml", ""}}));
    });
}

TEST(CalibrationDownloadServer, failsInALaterPassWhenTheServerGoesAway) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        server.setFault(kLinksPath, "missing-later");
        EXPECT_EQ(download(), (Outcome{false, kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"), (Files{{"downloadlinks.xml", ""}}));
        EXPECT_EQ(contents(kCaliDir),
                  (Files{{kDescriptionName, cameraFiles().at(kDescriptionName)}}));
    });
}

TEST(CalibrationDownloadServer, countsFilesCutByAFullDiskAsPresent) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        mountOver(kCaliDir, "size=8k");
        serveFiles(server, cameraFilesWith(kFirstData, std::string(65536, 'd')));
        EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        const Files got = contents(kCaliDir);
        EXPECT_EQ(got.size(), cameraFiles().size());
        EXPECT_EQ(got.at(kDescriptionName), cameraFiles().at(kDescriptionName));
        EXPECT_EQ(got.at(kFirstData), std::string(4096, 'd'));  // one page of the two was left
        EXPECT_EQ(got.at(kLastCurve), "");
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(CalibrationDownloadServer, makesThreePassesWhenTheDiskHasRoomForOneFileOnly) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        mountOver(kCaliDir, "nr_inodes=2");
        std::string complaints;
        for (const std::string& name : {kFirstData, kFirstCurve, kLastData, kLastCurve})
            complaints += std::string(kCaliDir) + "/" + name + ": No space left on device\n";
        EXPECT_EQ(download(), (Outcome{true, complaints + complaints}));
        EXPECT_EQ(contents(kCaliDir),
                  (Files{{kDescriptionName, cameraFiles().at(kDescriptionName)}}));
    });
}

TEST(CalibrationDownloadServer, failsWhenTheLinksDocumentFindsNoRoom) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        mountOver("/tmp", "size=4k");
        writeFile("/tmp/full", std::string(4096, 'f'));
        EXPECT_EQ(download(), (Outcome{false, kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"),
                  (Files{{"downloadlinks.xml", ""}, {"full", std::string(4096, 'f')}}));
    });
}

TEST(CalibrationDownloadServer, failsWhenTmpIsReadOnly) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        makeReadOnly("/tmp");
        EXPECT_EQ(download(), (Outcome{false, "/tmp/downloadlinks.xml: Read-only file system\n" +
                                                  kFailedWithoutLinks}));
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(CalibrationDownloadServer, leavesHalfFilesOfAnEarlierDownloadAsTheyAre) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        const Files left = {{kDescriptionName, cameraFiles().at(kDescriptionName)},
                            {kFirstData, "data"},
                            {kLastCurve, ""}};
        installFiles(left);
        EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        Files expected = cameraFiles();
        for (const auto& [name, bytes] : left) expected[name] = bytes;
        EXPECT_EQ(contents(kCaliDir), expected);
    });
}

TEST(CalibrationDownloadServer, fetchesADescriptionAnewThatCannotBeLoaded) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        installFiles({{kDescriptionName, ""}});
        EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

TEST(CalibrationDownloadServer, fetchesADescriptionAnewThatWasCutInAComment) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        installFiles({{kDescriptionName, "<CaliData>\n<!-- cut\n"}});
        // The reader complains once for each of the two looks at the list.
        const std::string complaint =
            "ERROR [SimpleXML:#] @ #s :<!-- cut\n"
            "ERROR [SimpleXML:#] @ #s :Format of file /usr/share/libthermika/cali/"
            "Cali-14080045.xml is wrong. Verify, that the XML document is well-formed!\n";
        EXPECT_EQ(download(), (Outcome{true, complaint + complaint + kInstalled}));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

}  // namespace

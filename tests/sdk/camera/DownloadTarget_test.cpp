// The fetching of a list of files with the real wget and a real server: which addresses are asked
// for, what a links document may do to it, and what is said and left then.
#include <clocale>
#include <cstddef>
#include <filesystem>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/ProcessState.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;

const std::string kBadLinks =
    managerLine("ERROR", "Error parsing download links file: /tmp/downloadlinks.xml");
const std::string kNoLinks = managerLine("ERROR", "Error reading /tmp/downloadlinks.xml");

Outcome fetch(const std::string& targets, const std::string& serial = kCameraSerial,
              const std::string& dir = kCaliDir) {
    std::string list = targets;
    Outcome outcome = outcomeOf(
        [&] { return dax::IRCalibrationManager::downloadTarget(list.data(), serial, dir); });
    EXPECT_EQ(list, targets);
    return outcome;
}

void serveFiles(FileServer& server) {
    for (const char* const name : {"a.dat", "b.dat"})
        server.add(serverPath(kCameraSerial, name), std::string("this is ") + name);
}

/// Fetches two files behind this links document.
void expectFetched(const std::string& document) {
    inSandbox([&document] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server);
        server.add(kLinksPath, document);
        EXPECT_EQ(fetch("a.dat;b.dat;"), (Outcome{true, ""}));
        EXPECT_EQ(contents(kCaliDir),
                  (Files{{"a.dat", "this is a.dat"}, {"b.dat", "this is b.dat"}}));
        EXPECT_EQ(FileServer::requests(), (Texts{kLinksPath, serverPath(kCameraSerial, "a.dat"),
                                                 serverPath(kCameraSerial, "b.dat")}));
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

/// Nothing is fetched after this links document; `left` is what lies in /tmp then.
void expectNothing(const std::string& document, const std::string& log, const Files& left = {}) {
    inSandbox([&] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server);
        server.add(kLinksPath, document);
        EXPECT_EQ(fetch("a.dat;b.dat;"), (Outcome{false, log}));
        EXPECT_EQ(FileServer::requests(), (Texts{kLinksPath}));
        EXPECT_EQ(contents(kCaliDir), Files());
        EXPECT_EQ(contents("/tmp"), left);
    });
}

std::string element(const std::string& text) { return "<string>" + text + "</string>\n"; }

TEST(DownloadTarget, fetchesEveryFileFromTheBaseInTheLinksDocument) {
    expectFetched(linksDocument());
}

TEST(DownloadTarget, usesTheFirstOfTwoBasesForEveryFile) {
    expectFetched(linksDocument(element(serverAddress("")) + element(serverAddress("/second"))));
}

TEST(DownloadTarget, triesNoSecondBaseWhenTheFirstHasNoFiles) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server);
        server.add(kLinksPath,
                   linksDocument(element(serverAddress("/first")) + element(serverAddress(""))));
        EXPECT_EQ(fetch("a.dat;"), (Outcome{true, ""}));
        EXPECT_EQ(FileServer::requests(),
                  (Texts{kLinksPath, "/first" + serverPath(kCameraSerial, "a.dat")}));
        EXPECT_EQ(contents(kCaliDir), (Files{{"a.dat", ""}}));
    });
}

TEST(DownloadTarget, logsEveryFileWithoutAnAddressWhenThereIsNoBase) {
    const std::string line = managerLine("ERROR", "Error downloading ");
    expectNothing(linksDocument(""), line + line);
    expectNothing(linksDocument("<string lang=\"en\">" + serverAddress("") + "</string>\n"),
                  line + line);
}

TEST(DownloadTarget, removesALinksDocumentThatLacksAnElement) {
    for (const std::string name : {"Imager", "CaliData", "Links"}) {
        SCOPED_TRACE(name);
        std::string document = linksDocument();
        document.replace(document.find("<" + name + ">") + 1, name.size(), "Other");
        expectNothing(document, kBadLinks);
    }
}

TEST(DownloadTarget, takesRootTagsThatShareALineForMissingElements) {
    const std::string base = element(serverAddress(""));
    expectNothing("<DownloadLinks><Imager><CaliData><Links>" + base +
                      "</Links></CaliData></Imager></DownloadLinks>\n",
                  kBadLinks);
    std::string document = linksDocument();
    document.erase(document.find('\n'), 1);
    expectNothing(document, kBadLinks);
}

TEST(DownloadTarget, takesAnyOtherDocumentForOneWithoutLinks) {
    expectNothing("<html>\n<body>Welcome to this hotel\n</body>\n</html>\n", kBadLinks);
    expectNothing("\n", kBadLinks);
}

TEST(DownloadTarget, leavesALinksDocumentThatItCannotRead) {
    expectNothing("", kNoLinks, {{"downloadlinks.xml", ""}});
    const std::string unbalanced = "<DownloadLinks>\n<!-- 100%s\n</DownloadLinks>\n";
    expectNothing(unbalanced,
                  "ERROR [SimpleXML:#] @ #s :<!-- 100%s\n"
                  "ERROR [SimpleXML:#] @ #s :Format of file /tmp/downloadlinks.xml is wrong. "
                  "Verify, that the XML document is well-formed!\n" +
                      kNoLinks,
                  {{"downloadlinks.xml", unbalanced}});
}

TEST(DownloadTarget, leavesWhateverLiesInTheLinksDocumentsPlace) {
    inSandbox([] {
        const DownloadSandbox world;
        fs::create_directory(kLinksFile);
        EXPECT_EQ(fetch("a.dat;"),
                  (Outcome{false, "/tmp/downloadlinks.xml: Is a directory\n" + kNoLinks}));
        EXPECT_EQ(contents("/tmp"), (Files{{"downloadlinks.xml/", ""}}));
    });
}

TEST(DownloadTarget, keepsWhiteSpaceAroundTheBase) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument("<string> " + serverAddress("") + "\t</string>\n"));
        recordProgram("wget");
        EXPECT_EQ(fetch("a.dat;"), (Outcome{true, ""}));
        EXPECT_EQ(callsOf("wget").at(1),
                  (Texts{" " + serverAddress("") + "\t" + serverPath(kCameraSerial, "a.dat"), "-O",
                         std::string(kCaliDir) + "/a.dat"}));
    });
}

TEST(DownloadTarget, fetchesNothingButTheLinksForAnEmptyList) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        EXPECT_EQ(fetch(""), (Outcome{false, ""}));
        EXPECT_EQ(outcomeOf([] {
                      return dax::IRCalibrationManager::downloadTarget(nullptr, kCameraSerial,
                                                                       kCaliDir);
                  }),
                  (Outcome{false, ""}));
        EXPECT_EQ(FileServer::requests(), (Texts{kLinksPath, kLinksPath}));
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(DownloadTarget, takesTheListApartAtEverySemicolon) {
    const std::map<std::string, Texts> namesByList = {
        {"a", {"a"}}, {"a;", {"a"}},    {"a;b", {"a", "b"}}, {"a;;b;", {"a", "", "b"}},
        {";", {""}},  {";;", {"", ""}}, {";a", {"", "a"}},   {"a;b;;", {"a", "b", ""}},
    };
    inSandbox([&namesByList] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        for (const auto& [list, names] : namesByList) {
            const auto before = FileServer::requests().size();
            fetch(list);
            Texts expected = {kLinksPath};
            // wget has no file to put an empty name's answer into, and asks for none.
            for (const std::string& name : names)
                if (!name.empty()) expected.push_back(serverPath(kCameraSerial, name));
            const Texts all = FileServer::requests();
            EXPECT_EQ(Texts(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()), expected)
                << list;
        }
    });
}

TEST(DownloadTarget, takesAnEmptyNameForAFileLikeAnyOther) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        recordShell();
        EXPECT_TRUE(fetch("a.dat;;").result);
        EXPECT_EQ(shellTexts().at(2), "wget \"" + serverAddress(serverPath(kCameraSerial, "")) +
                                          "\" -O " + kCaliDir + "/");
    });
}

TEST(DownloadTarget, asksForWhatAShortSerialHas) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        for (const std::string serial : {"1", "123", "12345"}) fetch("f", serial);
        EXPECT_EQ(FileServer::requests(),
                  (Texts{kLinksPath, "/1/1/Califiles SN1/f", kLinksPath,
                         "/12/123/Califiles SN123/f", kLinksPath, "/12/1234/Califiles SN12345/f"}));
    });
}

TEST(DownloadTarget, overwritesAFileThatIsThere) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server);
        server.add(kLinksPath, linksDocument());
        writeFile(std::string(kCaliDir) + "/a.dat", "a longer text than the server's");
        EXPECT_EQ(fetch("a.dat;"), (Outcome{true, ""}));
        EXPECT_EQ(contents(kCaliDir), (Files{{"a.dat", "this is a.dat"}}));
    });
}

TEST(DownloadTarget, answersTrueThoughNoFileComes) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        EXPECT_EQ(fetch("a.dat;b.dat;"), (Outcome{true, ""}));
        EXPECT_EQ(contents(kCaliDir), (Files{{"a.dat", ""}, {"b.dat", ""}}));
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(DownloadTarget, needsNoManager) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server);
        server.add(kLinksPath, linksDocument());
        fs::create_directory("/usr/share/elsewhere");
        EXPECT_EQ(fetch("a.dat;", kCameraSerial, "/usr/share/elsewhere"), (Outcome{true, ""}));
        EXPECT_EQ(contents("/usr/share/elsewhere"), (Files{{"a.dat", "this is a.dat"}}));
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(DownloadTarget, leavesTheNumericLocaleAtCEvenWhenItFails) {
    for (const bool isServed : {true, false}) {
        inSandbox([isServed] {
            const DownloadSandbox world;
            FileServer server;
            if (isServed) server.add(kLinksPath, linksDocument());
            const ScopedLocale locale({{LC_ALL, kDecimalCommaLocale}});
            ASSERT_EQ(numericLocale(), kDecimalCommaLocale);
            EXPECT_EQ(fetch("a.dat;").result, isServed);
            EXPECT_EQ(numericLocale(), "C");
            EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), kDecimalCommaLocale);
        });
    }
}

}  // namespace

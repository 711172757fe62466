// Texts that reach no shell in a library built with THERMIKA_REFUSE_SHELL_TEXT, and what the
// operations do then. Links the unit in as it is compiled then, so it is a program of its own.
#include <gtest/gtest.h>

#include <string>

#include "sdk/IRCalibrationManager.h"
#include "sdk/camera/ShellText.h"
#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/LocalCopy.h"
#include "support/Recorder.h"
#include "support/Sandbox.h"

namespace {

using namespace thermika_test;
using dax::mayReachShellAsBase;
using dax::mayReachShellAsDirectory;
using dax::mayReachShellAsName;

// Every character that has a meaning to a shell, and some that only look harmless.
const std::string kBadCharacters =
    std::string(" \t\n\r\"'\\$`&|;<>(){}[]*?!#^,=~\x7f\x80\xff") + '\0';

TEST(ShellTextRefused, basesArePlainAddresses) {
    for (const char* const base :
         {"http://server", "https://server", "http://a.b-c.example:8080", "http://server/",
          "http://server/files/v1.0_~%20-x/", "http://127.0.0.1:1/a//b"})
        EXPECT_TRUE(mayReachShellAsBase(base)) << base;
    for (const char* const base :
         {"", "server", "ftp://server", "HTTP://server", "http:/server", "http://", "http:///x",
          "http://:80", "http://server:", "http://server:x", "http://server:80x", " http://server",
          "http://server?q", "http://user@server", "-http://server", "http://[::1]",
          "https:", "http://server:80:81"})
        EXPECT_FALSE(mayReachShellAsBase(base)) << base;
    for (const char bad : kBadCharacters) {
        EXPECT_FALSE(mayReachShellAsBase(std::string("http://s") + bad + "erver")) << bad;
        const bool isPlainInPath = bad == '~';
        EXPECT_EQ(mayReachShellAsBase(std::string("http://server/a") + bad), isPlainInPath) << bad;
    }
}

TEST(ShellTextRefused, namesAreThoseOfTheCamerasFiles) {
    for (const char* const name :
         {"Cali-14080045.xml", "Cali-14080045-33-M20-100-27.dat", "Kennlinie-14080045.prn",
          "Kennlinie-14080045-33-O33_a+b.c-0-250.prn"})
        EXPECT_TRUE(mayReachShellAsName(name, "14080045")) << name;
    for (const char* const name :
         {"", "Cali-14080046.xml", "Cali-14080045.txt", "cali-14080045.xml", "xCali-14080045.xml",
          "Cali-14080045/../../x.xml", "Cali-14080045", "Cali-14080045.xml ", ".xml", "Cali-",
          "Kennlinie-14080045.prn;id", "Cali-.xml"})
        EXPECT_FALSE(mayReachShellAsName(name, "14080045")) << name;
    for (const char bad : kBadCharacters + "/%@:")
        EXPECT_FALSE(mayReachShellAsName(std::string("Cali-14080045-") + bad + ".xml", "14080045"))
            << bad;
    EXPECT_FALSE(mayReachShellAsName("Cali-.xml", ""));
    EXPECT_FALSE(mayReachShellAsName("Cali-$(id).xml", "$(id)"));
}

TEST(ShellTextRefused, directoriesHaveNoBlanksAndNothingForAShell) {
    for (const char* const dir :
         {"/usr/share/libthermika/cali", "/media/a+b@c%d:e-f_g.h/", "a", ""})
        EXPECT_TRUE(mayReachShellAsDirectory(dir)) << dir;
    EXPECT_FALSE(mayReachShellAsDirectory("-delete"));
    for (const char bad : kBadCharacters)
        EXPECT_FALSE(mayReachShellAsDirectory(std::string("/a") + bad + "b")) << bad;
}

/// Fetches behind a links document with this base; nothing but the document is asked for.
void expectNothingFetched(const std::string& base, std::string list,
                          const std::string& directory = kCaliDir) {
    inSandbox([&base, &list, &directory] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument("<string>" + base + "</string>\n"));
        recordShell();
        EXPECT_EQ(outcomeOf([&list, &directory] {
                      return dax::IRCalibrationManager::downloadTarget(list.data(), kCameraText,
                                                                       directory);
                  }),
                  (Outcome{false, managerLine("ERROR", "Error downloading ")}));
        EXPECT_EQ(shellTexts().size(), 1U);
        EXPECT_EQ(contents("/tmp"), Files());
        EXPECT_EQ(contents(kCaliDir), Files());
    });
}

TEST(ShellTextRefused, basesNamesAndDirectoriesRunNoCommand) {
    expectNothingFetched("$(touch /tmp/ran)", kFirstData + ";");
    expectNothingFetched("http://server", "$(touch /tmp/ran);");
    expectNothingFetched("http://server", kFirstData + ";", "/tmp;touch /tmp/ran");
}

TEST(ShellTextRefused, namesAreLoggedThoughOtherFilesCame) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        std::string list = kFirstData + ";$(id);" + kFirstCurve + ";";
        EXPECT_EQ(outcomeOf([&list] {
                      return dax::IRCalibrationManager::downloadTarget(list.data(), kCameraText,
                                                                       kCaliDir);
                  }),
                  (Outcome{true, managerLine("ERROR", "Error downloading ")}));
        EXPECT_EQ(contents(kCaliDir), (Files{{kFirstData, cameraFiles()[kFirstData]},
                                             {kFirstCurve, cameraFiles()[kFirstCurve]}}));
    });
}

TEST(ShellTextRefused, wholeSetIsDownloadedAllTheSame) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        EXPECT_EQ(download(), (Outcome{true, kInstalled}));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

TEST(ShellTextRefused, directoriesOfTheCopyRunNoCommand) {
    inQuietWorld([] {
        lay("/usr/share/my disk", cameraFiles());
        EXPECT_EQ(copyFrom("/usr/share/my disk"), (RunResult{"", "", kCopiedLess}));
        lay(kCopySource, cameraFiles());
        const auto setOddDirectory = [] {
            dax::IRCalibrationManager::getInstance()->setCalibrationDir("/usr/share;id");
        };
        EXPECT_EQ(copyFrom(kCopySource, setOddDirectory), (RunResult{"", "", kCopiedLess}));
        EXPECT_EQ(contents(kCaliDir), Files());
        EXPECT_EQ(copyFrom(kCopySource), copied(kCopiedAll));
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

}  // namespace

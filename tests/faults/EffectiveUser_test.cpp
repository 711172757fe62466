// A program that runs with another user's rights: the links document that its real user has left is
// still its own. Links another geteuid() in, as a test has one user only.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "sdk/IRCalibrationManager.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

bool g_isAnother = false;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the linker's names
extern "C" uid_t __real_geteuid();
extern "C" uid_t __wrap_geteuid();

extern "C" uid_t __wrap_geteuid() { return g_isAnother ? __real_geteuid() + 1 : __real_geteuid(); }
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace {

using namespace thermika_test;

TEST(EffectiveUser, readsTheLinksDocumentOfTheRealOne) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        server.add(kLinksPath, linksDocument());
        server.add(serverPath("14080045", "a.dat"), "text");
        writeFile(kLinksFile, "from before");
        const Outcome outcome = outcomeOf([] {
            g_isAnother = true;
            std::string list = "a.dat;";
            return dax::IRCalibrationManager::downloadTarget(list.data(), "14080045", kCaliDir);
        });
        EXPECT_EQ(outcome, (Outcome{true, ""}));
        EXPECT_EQ(contents(kCaliDir), (Files{{"a.dat", "text"}}));
    });
}

}  // namespace

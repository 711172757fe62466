// Every allocation of the operations that look at the USB bus or start programs fails once.
#include "faults/EachAllocation.h"

#include <filesystem>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"
#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/LocalCopy.h"
#include "support/Sandbox.h"
#include "support/UsbTree.h"

namespace {

using namespace thermika_test;

dax::IRCalibrationManager& manager() { return *dax::IRCalibrationManager::getInstance(); }

void emptyCaliDir() {
    for (const auto& entry : std::filesystem::directory_iterator(kCaliDir))
        std::filesystem::remove(entry.path());
}

std::string said(bool answer) { return answer ? "yes" : "no"; }

TEST(AllocationOfPrograms, ofTheSearchOnTheBusReachesTheCaller) {
    inSandbox([] {
        UsbTree bus;
        bus.addRootHub(1);
        bus.addCamera("1-1", kCameraText);
        dax::IRLogger::setVerbosity(dax::IRLOG_OFF, dax::IRLOG_OFF, nullptr);
        const auto failed = failEachAllocation([] {
            unsigned long serial = 0;
            const bool isFound = manager().findSerial(serial);
            return said(isFound) + std::to_string(serial);
        });
        EXPECT_GT(failed, 3U);
    });
}

TEST(AllocationOfPrograms, ofTheRouteCheckReachesTheCaller) {
    inSandbox([] {
        const DownloadSandbox world;
        const auto failed =
            failEachAllocation([] { return said(manager().isOnlineCalibrationRepoAccessible()); });
        EXPECT_GT(failed, 0U);
    });
}

TEST(AllocationOfPrograms, ofTheCopyReachesTheCaller) {
    inQuietWorld([] {
        lay(kCopySource, cameraFiles());
        const auto failed = failEachAllocation(
            [] { return said(manager().copyCalibrationFromLocalRepo(kCamera, kCopySource)); },
            emptyCaliDir);
        EXPECT_GT(failed, 3U);
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
    });
}

TEST(AllocationOfPrograms, ofTheDownloadReachesTheCaller) {
    inSandbox([] {
        const DownloadSandbox world;
        FileServer server;
        serveFiles(server, cameraFiles());
        dax::IRLogger::setVerbosity(dax::IRLOG_OFF, dax::IRLOG_OFF, nullptr);
        installFiles(cameraFiles());
        const auto failed = failEachAllocation(
            [] { return said(manager().downloadCalibration(kCamera)); },
            [] { std::filesystem::remove(std::string(kCaliDir) + "/" + kLastCurve); });
        EXPECT_GT(failed, 10U);
        EXPECT_EQ(contents(kCaliDir), cameraFiles());
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

}  // namespace

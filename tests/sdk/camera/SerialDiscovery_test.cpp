// Finding a camera's serial number on the USB bus: which device is taken, what is logged, and what
// the process keeps.
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/Sandbox.h"
#include "support/SerialSearch.h"
#include "support/TestFiles.h"
#include "support/UsbTree.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::expectAbsent;
using thermika_test::expectFound;
using thermika_test::foundLine;
using thermika_test::inSandbox;
using thermika_test::kQueryLine;
using thermika_test::kUsbDevicesDir;
using thermika_test::searchForSerial;
using thermika_test::SerialSearch;
using thermika_test::UsbTree;

std::string cannotEnterLine(const std::string& reason) {
    return "ERROR [IRCalibrationManager:390] @ #s :Query directory /sys/bus/usb/devices could not "
           "be opened: " +
           reason + "\n";
}

/// The devices of the bus, interfaces left out, in the order in which the system lists them.
std::vector<std::string> listedDevices() {
    std::vector<std::string> devices;
    for (const std::string& name : UsbTree::listed())
        if (name.find(':') == std::string::npos) devices.push_back(name);
    return devices;
}

/// A device that is no camera but for `attribute`, which holds `bytes`: passed over unmentioned.
void expectNoCamera(const std::string& attribute, const std::string& bytes) {
    UsbTree bus;
    bus.addCamera("1-1", "14080045");
    bus.setAttribute("1-1", attribute, bytes);
    expectAbsent(0, "");
    expectAbsent(14080045, "");
}

TEST(SerialDiscovery, findsTheOnlyCamera) {
    inSandbox([] {
        UsbTree bus;
        bus.addRootHub(1);
        bus.addCamera("1-1", "14080045");
        expectFound(0, 14080045, foundLine("14080045"));
    });
}

TEST(SerialDiscovery, findsACameraBehindAHub) {
    inSandbox([] {
        UsbTree bus;
        bus.addRootHub(17);
        bus.addDevice("17-1", {"05e3", "0608", {}});
        bus.addCamera("17-1.2", "14080045");
        expectFound(0, 14080045, foundLine("14080045"));
    });
}

TEST(SerialDiscovery, confirmsTheRequestedCamera) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        expectFound(14080045, 14080045, foundLine("14080045"));
    });
}

TEST(SerialDiscovery, setsTheSerialToZeroWhenTheRequestedCameraIsAbsent) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        expectAbsent(12345678, foundLine("14080045"));
    });
}

TEST(SerialDiscovery, findsNothingOnAnEmptyBus) {
    inSandbox([] {
        const UsbTree bus;
        expectAbsent(0, "");
        expectAbsent(14080045, "");
    });
}

TEST(SerialDiscovery, findsNothingAmongHubsAndOtherDevices) {
    inSandbox([] {
        UsbTree bus;
        bus.addRootHub(1, "0000:00:14.0");
        bus.addRootHub(2, "vhci_hcd.0");
        bus.addDevice("1-1", {"046d", "c077", {}});
        bus.addDevice("2-1", {"0951", "1666", "E0D55EA573FCF450A97B082B"});
        expectAbsent(0, "");
    });
}

TEST(SerialDiscovery, keepsTheSerialWhenThereIsNoBus) {
    inSandbox([] {
        ASSERT_EQ(chdir("/usr"), 0);
        for (const unsigned long requested : {0UL, 12345678UL}) {
            const SerialSearch search = searchForSerial(requested);
            EXPECT_FALSE(search.isFound);
            EXPECT_EQ(search.serial, requested);
            EXPECT_EQ(search.log, kQueryLine + cannotEnterLine("No such file or directory"));
            EXPECT_EQ(fs::current_path(), "/usr");
        }
    });
}

TEST(SerialDiscovery, keepsTheSerialWhenTheBusCannotBeEntered) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        ASSERT_EQ(chmod(kUsbDevicesDir, 0444), 0);
        ASSERT_EQ(chdir("/usr"), 0);
        const SerialSearch search = searchForSerial(12345678);
        EXPECT_FALSE(search.isFound);
        EXPECT_EQ(search.serial, 12345678U);
        EXPECT_EQ(search.log, kQueryLine + cannotEnterLine("Permission denied"));
        EXPECT_EQ(fs::current_path(), "/usr");
    });
}

TEST(SerialDiscovery, saysThatAFileIsNoBus) {
    inSandbox([] {
        fs::create_directories("/sys/bus/usb");
        thermika_test::writeFile(kUsbDevicesDir, "");
        const SerialSearch search = searchForSerial(12345678);
        EXPECT_FALSE(search.isFound);
        EXPECT_EQ(search.serial, 12345678U);
        EXPECT_EQ(search.log, kQueryLine + cannotEnterLine("Not a directory"));
    });
}

TEST(SerialDiscovery, keepsTheSerialWhenTheBusCannotBeRead) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        ASSERT_EQ(chmod(kUsbDevicesDir, 0111), 0);
        const SerialSearch search = searchForSerial(12345678);
        EXPECT_FALSE(search.isFound);
        EXPECT_EQ(search.serial, 12345678U);
        EXPECT_EQ(search.log, kQueryLine +
                                  "ERROR [IRCalibrationManager:399] @ #s :Failed to open usb "
                                  "device directory: Permission denied\n");
        EXPECT_EQ(fs::current_path(), kUsbDevicesDir);
    });
}

TEST(SerialDiscovery, leavesTheWorkingDirectoryInTheDeviceTree) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        ASSERT_EQ(chdir("/usr"), 0);
        searchForSerial(0);
        EXPECT_EQ(fs::current_path(), kUsbDevicesDir);
        EXPECT_TRUE(fs::exists("1-1/serial"));
    });
}

TEST(SerialDiscovery, takesTheFirstCameraInDirectoryOrderAndOpensNoOther) {
    inSandbox([] {
        UsbTree bus;
        // First in neither direction of this order is the lowest or the highest name.
        for (const char* const name : {"2-1", "1-1", "4-1", "3-1"})
            bus.addCamera(name, "1408000" + std::string(name, 1));
        const std::string first = listedDevices().front();

        const auto wasOpened = [](const std::string& name) {
            const int watch = inotify_init1(IN_NONBLOCK);
            for (const char* const attribute : {"idVendor", "idProduct", "serial"}) {
                const std::string path = UsbTree::attributePath(name, attribute);
                EXPECT_GE(inotify_add_watch(watch, path.c_str(), IN_OPEN), 0);
            }
            searchForSerial(0);
            char event[sizeof(inotify_event) + NAME_MAX + 1];
            const bool isEvent = read(watch, event, sizeof event) > 0;
            close(watch);
            return isEvent;
        };
        for (const std::string& name : listedDevices()) EXPECT_EQ(wasOpened(name), name == first);

        const std::string serial = "1408000" + first.substr(0, 1);
        expectFound(0, std::stoul(serial), foundLine(serial));
    });
}

TEST(SerialDiscovery, passesOverOtherCamerasOnItsWayToTheRequestedOne) {
    inSandbox([] {
        UsbTree bus;
        for (const char* const name : {"2-1", "1-1", "4-1", "3-1"})
            bus.addCamera(name, "1408000" + std::string(name, 1));
        std::vector<std::string> serials;
        for (const std::string& name : listedDevices())
            serials.push_back("1408000" + name.substr(0, 1));
        ASSERT_EQ(serials.size(), 4U);
        expectFound(std::stoul(serials[2]), std::stoul(serials[2]),
                    foundLine(serials[0]) + foundLine(serials[1]) + foundLine(serials[2]));
    });
}

TEST(SerialDiscovery, goesOnAfterACameraWithoutANumber) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "00000000");
        bus.addCamera("2-1", "14080045");
        bus.addCamera("3-1", "00000000");
        std::string log;
        for (const std::string& name : listedDevices()) {
            if (name == "2-1") break;
            log += foundLine("00000000");
        }
        ASSERT_NE(log, "");
        expectFound(0, 14080045, log + foundLine("14080045"));
    });
}

TEST(SerialDiscovery, passesOverAnotherProductWithoutALogLine) {
    inSandbox([] { expectNoCamera("idProduct", "de38\n"); });
}

TEST(SerialDiscovery, passesOverTheProductOfAnotherVendor) {
    inSandbox([] { expectNoCamera("idVendor", "0404\n"); });
}

TEST(SerialDiscovery, comparesTheVendorWithItsTrailingBlank) {
    inSandbox([] { expectNoCamera("idVendor", "0403 \n"); });
}

TEST(SerialDiscovery, comparesTheVendorWithItsLeadingBlank) {
    inSandbox([] { expectNoCamera("idVendor", " 0403\n"); });
}

TEST(SerialDiscovery, comparesTheVendorWithItsCarriageReturn) {
    inSandbox([] { expectNoCamera("idVendor", "0403\r\n"); });
}

TEST(SerialDiscovery, comparesTheWholeVendor) {
    inSandbox([] { expectNoCamera("idVendor", "04030\n"); });
}

TEST(SerialDiscovery, comparesTheVendorWithItsZeroByte) {
    inSandbox([] { expectNoCamera("idVendor", std::string("0403\0\n", 6)); });
}

TEST(SerialDiscovery, comparesTheFirstLineOfTheVendorOnly) {
    inSandbox([] { expectNoCamera("idVendor", "\n0403\n"); });
}

TEST(SerialDiscovery, comparesTheProductInTheCaseAsWritten) {
    inSandbox([] { expectNoCamera("idProduct", "DE37\n"); });
}

TEST(SerialDiscovery, comparesTheProductWithItsTrailingBlank) {
    inSandbox([] { expectNoCamera("idProduct", "de37 \n"); });
}

TEST(SerialDiscovery, passesOverEmptyIdentifiers) {
    inSandbox([] {
        expectNoCamera("idVendor", "");
        fs::remove_all("/sys/bus");
        fs::remove_all("/sys/devices");
        expectNoCamera("idProduct", "");
    });
}

TEST(SerialDiscovery, takesIdentifiersWithoutALineBreak) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        bus.setAttribute("1-1", "idVendor", "0403");
        bus.setAttribute("1-1", "idProduct", "de37");
        expectFound(0, 14080045, foundLine("14080045"));
    });
}

}  // namespace

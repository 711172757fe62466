// What stands in the entries of the USB bus's folder when a camera is looked for: odd serial
// numbers, missing and unreadable attributes, entries that are no devices or go away.
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <functional>
#include <string>

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
using thermika_test::kUsbDevicesDir;
using thermika_test::UsbTree;

/// The only camera's serial file holds `bytes`: `number` is taken from it, and `text` is logged.
void expectNumber(const std::string& bytes, const std::string& text, unsigned long number) {
    UsbTree bus;
    bus.addCamera("1-1", "");
    bus.setAttribute("1-1", "serial", bytes);
    expectFound(0, number, foundLine(text));
    expectFound(number, number, foundLine(text));
}

/// The same for a serial file that holds no number: the camera is passed over.
void expectNoNumber(const std::string& bytes, const std::string& text) {
    UsbTree bus;
    bus.addCamera("1-1", "");
    bus.setAttribute("1-1", "serial", bytes);
    expectAbsent(0, foundLine(text));
    expectAbsent(14080045, foundLine(text));
}

TEST(SerialDiscoveryEntries, passesOverAnEmptySerial) {
    inSandbox([] { expectNoNumber("\n", ""); });
}

TEST(SerialDiscoveryEntries, passesOverAnEmptySerialFile) {
    inSandbox([] { expectNoNumber("", ""); });
}

TEST(SerialDiscoveryEntries, passesOverZeros) {
    inSandbox([] { expectNoNumber("00000000\n", "00000000"); });
}

TEST(SerialDiscoveryEntries, passesOverASerialThatIsNoNumber) {
    inSandbox([] { expectNoNumber("FT4XK2A9\n", "FT4XK2A9"); });
}

TEST(SerialDiscoveryEntries, passesOverANumberOnTheSecondLine) {
    inSandbox([] { expectNoNumber("\n14080045\n", ""); });
}

TEST(SerialDiscoveryEntries, readsHexadecimalDigitsAsZero) {
    inSandbox([] { expectNoNumber("0xD6DA2D\n", "0xD6DA2D"); });
}

TEST(SerialDiscoveryEntries, stopsAtTheFirstNonDigit) {
    inSandbox([] { expectNumber("14080045-A7\n", "14080045-A7", 14080045); });
}

TEST(SerialDiscoveryEntries, skipsLeadingBlanksAndZeros) {
    inSandbox([] { expectNumber(" \t 0014080045\n", " \t 0014080045", 14080045); });
}

TEST(SerialDiscoveryEntries, takesASerialWithoutALineBreak) {
    inSandbox([] { expectNumber("14080045", "14080045", 14080045); });
}

TEST(SerialDiscoveryEntries, takesTheFirstLineOnly) {
    inSandbox([] { expectNumber("14080045\n99999999\n", "14080045", 14080045); });
}

TEST(SerialDiscoveryEntries, logsACarriageReturnAsItStands) {
    inSandbox([] { expectNumber("14080045\r\n", "14080045\r", 14080045); });
}

TEST(SerialDiscoveryEntries, logsControlBytesAndFormatsAsTheyStand) {
    inSandbox([] {
        expectNumber("14080045\x1b[31m\x01\xff%s%n\n", "14080045\x1b[31m\x01\xff%s%n", 14080045);
    });
}

// The log ends a line for standard error at a zero byte, its line break included.
TEST(SerialDiscoveryEntries, endsTheNumberAtAZeroByte) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "");
        bus.setAttribute("1-1", "serial", std::string("1408\0000045\n", 10));
        std::string line = foundLine("1408");
        line.pop_back();
        expectFound(0, 1408, line);
    });
}

TEST(SerialDiscoveryEntries, takesANegativeNumberAsItsUnsignedValue) {
    inSandbox([] { expectNumber("-14080045\n", "-14080045", 0UL - 14080045); });
}

TEST(SerialDiscoveryEntries, takesANumberBeyondAnyOtherAsTheHighest) {
    inSandbox([] {
        const std::string nines(5000, '9');
        expectNumber(nines + "\n", nines, ULONG_MAX);
    });
}

TEST(SerialDiscoveryEntries, takesANumberOfFewerThanEightDigits) {
    inSandbox([] { expectNumber("7\n", "7", 7); });
}

/// Cameras whose `attribute` was spoilt by `spoil` are passed over without a log line, and the good
/// one between them is found, whichever way the folder is listed.
void expectPassedOver(const std::function<void(const std::string& path)>& spoil) {
    for (const char* const attribute : {"idVendor", "idProduct", "serial"}) {
        UsbTree bus;
        for (const char* const name : {"1-1", "2-1", "3-1"}) bus.addCamera(name, "14080045");
        spoil(UsbTree::attributePath("1-1", attribute));
        spoil(UsbTree::attributePath("3-1", attribute));
        expectFound(0, 14080045, foundLine("14080045"));
        spoil(UsbTree::attributePath("2-1", attribute));
        expectAbsent(0, "");
        expectAbsent(14080045, "");
        fs::remove_all("/sys/bus");
        fs::remove_all("/sys/devices");
    }
}

TEST(SerialDiscoveryEntries, passesOverACameraWithoutAttributes) {
    inSandbox([] { expectPassedOver([](const std::string& path) { fs::remove(path); }); });
}

TEST(SerialDiscoveryEntries, passesOverAttributesThatMayNotBeRead) {
    inSandbox([] {
        expectPassedOver([](const std::string& path) { fs::permissions(path, fs::perms::none); });
    });
}

// A folder can be opened, but nothing can be read from it. A search that took the serial number for
// an empty one would log it.
TEST(SerialDiscoveryEntries, passesOverAttributesThatOpenButCannotBeRead) {
    inSandbox([] {
        expectPassedOver([](const std::string& path) {
            fs::remove(path);
            fs::create_directory(path);
        });
    });
}

TEST(SerialDiscoveryEntries, doesNotWaitForAPipeWithoutWriter) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        UsbTree::removeAttribute("1-1", "serial");
        ASSERT_EQ(mkfifo(UsbTree::attributePath("1-1", "serial").c_str(), 0444), 0);
        expectAbsent(0, foundLine(""));
    });
}

TEST(SerialDiscoveryEntries, passesOverAFolderThatIsNoLink) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        fs::copy(UsbTree::attributePath("1-1", ""), std::string(kUsbDevicesDir) + "/2-1");
        fs::remove(std::string(kUsbDevicesDir) + "/1-1");
        ASSERT_TRUE(fs::exists(std::string(kUsbDevicesDir) + "/2-1/serial"));
        expectAbsent(0, "");
    });
}

TEST(SerialDiscoveryEntries, passesOverAFile) {
    inSandbox([] {
        UsbTree bus;
        thermika_test::writeFile(std::string(kUsbDevicesDir) + "/1-1", "14080045\n");
        expectAbsent(0, "");
        bus.addCamera("2-1", "14080045");
        expectFound(0, 14080045, foundLine("14080045"));
    });
}

TEST(SerialDiscoveryEntries, passesOverAHiddenFolder) {
    inSandbox([] {
        UsbTree bus;
        fs::create_directory(std::string(kUsbDevicesDir) + "/...");
        bus.addCamera("2-1", "14080045");
        expectFound(0, 14080045, foundLine("14080045"));
    });
}

TEST(SerialDiscoveryEntries, takesALinkWhateverItsName) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        fs::rename(std::string(kUsbDevicesDir) + "/1-1", std::string(kUsbDevicesDir) + "/.%s\n");
        expectFound(0, 14080045, foundLine("14080045"));
    });
}

TEST(SerialDiscoveryEntries, passesOverALinkThatLeadsNowhere) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "11111111");
        bus.addCamera("2-1", "14080045");
        bus.addCamera("3-1", "11111111");
        fs::remove_all(UsbTree::attributePath("1-1", ""));
        fs::remove_all(UsbTree::attributePath("3-1", ""));
        expectFound(0, 14080045, foundLine("14080045"));
    });
}

// The bus's folder is a link through the working directory: it leads one level deeper once that has
// changed, so the folder that is listed is not the one where its entries are looked up.
TEST(SerialDiscoveryEntries, saysWhichEntriesWentAwayAndGoesOn) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        fs::rename(kUsbDevicesDir, "/sys/bus/usb/inner");
        fs::create_directories("/sys/bus/usb/inner/inner/%s-gone");
        fs::create_symlink("/proc/self/cwd/inner", kUsbDevicesDir);
        const std::string goneLine =
            "DEBUG [IRCalibrationManager:416] @ #s :errno: No such file or directory ";

        ASSERT_EQ(chdir("/sys/bus/usb"), 0);
        thermika_test::SerialSearch search = thermika_test::searchForSerial(0);
        EXPECT_FALSE(search.isFound);
        EXPECT_EQ(search.serial, 0U);
        EXPECT_EQ(search.log, thermika_test::kQueryLine + goneLine + "%s-gone\n");

        for (const char* const name : {"a-gone", "1-1", "b-gone"})
            fs::create_directory(std::string("/sys/bus/usb/inner/inner/") + name);
        ASSERT_EQ(chdir("/sys/bus/usb"), 0);
        search = thermika_test::searchForSerial(0);
        EXPECT_TRUE(search.isFound);
        EXPECT_EQ(search.serial, 14080045U);
        EXPECT_NE(search.log.find("-gone\n"), std::string::npos);
        EXPECT_EQ(search.log.substr(search.log.size() - foundLine("14080045").size()),
                  foundLine("14080045"));
    });
}

}  // namespace

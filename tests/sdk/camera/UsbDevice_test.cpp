// One device: what makes it a camera, and how its serial number is read. Directories and links in
// the working directory stand in for the kernel's.
#include "sdk/camera/UsbDevice.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using dax::UsbDevice;
using thermika_test::TempDir;
using thermika_test::writeFile;

class UsbDeviceTest : public testing::Test {
protected:
    UsbDeviceTest() { fs::current_path(m_folder.path()); }
    ~UsbDeviceTest() override { fs::current_path(m_former); }

    /// A device with its link `name`.
    static void plugIn(const std::string& name, const std::string& vendor,
                       const std::string& product) {
        fs::create_directory("at-" + name);
        fs::create_symlink("at-" + name, name);
        writeFile(name + "/idVendor", vendor);
        writeFile(name + "/idProduct", product);
    }

    static bool isCamera(const std::string& name) {
        UsbDevice device(name.c_str());
        return device.readStatus() && device.isCamera();
    }

private:
    fs::path m_former = fs::current_path();
    TempDir m_folder;
};

TEST_F(UsbDeviceTest, isACameraByVendorAndProduct) {
    plugIn("1-1", "0403\n", "de37\n");
    plugIn("1-2", "0403", "de37");
    plugIn("1-3", "0403\nmore\n", "de37\nmore\n");
    for (const char* const name : {"1-1", "1-2", "1-3"}) EXPECT_TRUE(isCamera(name)) << name;
}

TEST_F(UsbDeviceTest, isNoCameraUnlessBothAreExactlyTheCameras) {
    plugIn("1-1", "0403\n", "6001\n");
    plugIn("1-2", "0404\n", "de37\n");
    plugIn("1-3", "0403 \n", "de37\n");
    plugIn("1-4", "0403\r\n", "de37\n");
    plugIn("1-5", "0403\n", "DE37\n");
    plugIn("1-6", "0403\n", " de37\n");
    plugIn("1-7", "de37\n", "0403\n");
    plugIn("1-8", "", "");
    for (const auto& entry : fs::directory_iterator("."))
        EXPECT_FALSE(isCamera(entry.path().filename())) << entry;
}

TEST_F(UsbDeviceTest, isNoCameraWithoutItsAttributes) {
    plugIn("1-1", "0403\n", "de37\n");
    fs::remove("1-1/idProduct");
    plugIn("1-2", "0403\n", "de37\n");
    fs::remove("1-2/idVendor");
    EXPECT_FALSE(isCamera("1-1"));
    EXPECT_FALSE(isCamera("1-2"));
}

TEST_F(UsbDeviceTest, isNoCameraWithoutALink) {
    plugIn("1-1", "0403\n", "de37\n");
    EXPECT_TRUE(isCamera("1-1"));
    EXPECT_FALSE(isCamera("at-1-1"));
}

TEST_F(UsbDeviceTest, isNoCameraBeforeItsStatusIsRead) {
    plugIn("1-1", "0403\n", "de37\n");
    EXPECT_FALSE(UsbDevice("1-1").isCamera());
}

TEST_F(UsbDeviceTest, tellsWhyItsStatusCannotBeRead) {
    errno = 0;
    EXPECT_FALSE(UsbDevice("1-1").readStatus());
    EXPECT_EQ(errno, ENOENT);
    fs::create_symlink("nowhere", "1-2");
    EXPECT_TRUE(UsbDevice("1-2").readStatus());
    EXPECT_FALSE(isCamera("1-2"));
}

TEST_F(UsbDeviceTest, readsTheFirstLineOfTheSerialAsItStands) {
    plugIn("1-1", "0403\n", "de37\n");
    UsbDevice device("1-1");
    EXPECT_EQ(device.readSerial(), nullptr);
    for (const std::string line : {"14080045", " 14080045 ", "no number", ""}) {
        writeFile("1-1/serial", line + "\nsecond\n");
        ASSERT_NE(device.readSerial(), nullptr);
        EXPECT_EQ(*device.readSerial(), line);
    }
}

TEST_F(UsbDeviceTest, readsAnEmptySerialFromWhatCannotBeRead) {
    plugIn("1-1", "0403\n", "de37\n");
    fs::create_directory("1-1/serial");
    UsbDevice device("1-1");
    ASSERT_NE(device.readSerial(), nullptr);
    EXPECT_EQ(*device.readSerial(), "");
}

}  // namespace

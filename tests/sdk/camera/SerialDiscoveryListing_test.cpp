// The list of attached devices: which are on it, in which state, and that nothing else of the
// process changes. Directories and links in a folder of the test's own stand in for the kernel's.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "sdk/camera/SerialDiscovery.h"
#include "support/LogText.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using dax::AttachedDevice;
using dax::DeviceState;
using thermika_test::writeFile;

class SerialDiscoveryListing : public testing::Test {
protected:
    std::string path(const std::string& below) const { return m_folder / below; }

    /// A device with its link `entry` on the bus.
    void plugIn(const std::string& entry, const std::string& vendor,
                const std::string& product) const {
        fs::create_directories(path("bus"));
        fs::create_directories(path("devices/" + entry));
        fs::create_symlink("../devices/" + entry, path("bus/" + entry));
        writeFile(path("bus/" + entry + "/idVendor"), vendor);
        writeFile(path("bus/" + entry + "/idProduct"), product);
    }

    void plugInCamera(const std::string& entry, const std::string& serial) const {
        plugIn(entry, "0403\n", "de37\n");
        writeFile(path("bus/" + entry + "/serial"), serial);
    }

    std::vector<AttachedDevice> devices() const {
        const dax::BusListing listing = dax::listDevices(path("bus").c_str());
        EXPECT_EQ(listing.reason, 0);
        return listing.devices;
    }

    /// The only device on the list.
    AttachedDevice device() const {
        const std::vector<AttachedDevice> all = devices();
        EXPECT_EQ(all.size(), 1U);
        return all.empty() ? AttachedDevice{} : all.front();
    }

private:
    thermika_test::TempDir m_folder;
};

TEST_F(SerialDiscoveryListing, tellsEverythingAboutACamera) {
    plugInCamera("1-1.2", "14080045\n");
    writeFile(path("bus/1-1.2/product"), "Thermal camera \x1b[m\nsecond line\n");
    const AttachedDevice camera = device();
    EXPECT_EQ(camera.entry, "1-1.2");
    EXPECT_EQ(camera.vendor, "0403");
    EXPECT_EQ(camera.product, "de37");
    EXPECT_EQ(camera.productText, "Thermal camera \x1b[m");
    EXPECT_EQ(camera.serialText, "14080045");
    EXPECT_EQ(camera.state, DeviceState::kCamera);
    EXPECT_EQ(camera.serial, 14080045U);
    EXPECT_EQ(camera.reason, 0);
}

TEST_F(SerialDiscoveryListing, knowsACameraByTheFirstLinesOfVendorAndProduct) {
    plugIn("1-1", "0403\n", "de37\n");
    plugIn("1-2", "0403", "de37");
    plugIn("1-3", "0403\nmore\n", "de37\nmore\n");
    for (const AttachedDevice& camera : devices())
        EXPECT_EQ(camera.state, DeviceState::kSerialUnreadable) << camera.entry;
    EXPECT_EQ(devices().size(), 3U);
}

TEST_F(SerialDiscoveryListing, tellsOtherDevicesOfTheVendorFromCameras) {
    plugIn("1-1", "0403\n", "6001\n");
    plugIn("1-2", "0403\n", "DE37\n");
    plugIn("1-3", "0403\n", " de37\n");
    plugIn("1-4", "0403\n", "\n");
    for (const AttachedDevice& other : devices()) {
        EXPECT_EQ(other.state, DeviceState::kNoCamera) << other.entry;
        EXPECT_EQ(other.vendor, "0403");
        EXPECT_EQ(other.serialText, "");
    }
    EXPECT_EQ(devices().size(), 4U);
    fs::remove(path("bus/1-1/idProduct"));
    EXPECT_EQ(devices().size(), 4U);
}

TEST_F(SerialDiscoveryListing, leavesDevicesOfOtherVendorsOut) {
    plugIn("1-1", "0404\n", "de37\n");
    plugIn("1-2", "0403 \n", "de37\n");
    plugIn("1-3", "0403\r\n", "de37\n");
    plugIn("1-4", "de37\n", "0403\n");
    plugIn("1-5", "", "");
    plugIn("1-6", "0403\n", "de37\n");
    fs::remove(path("bus/1-6/idVendor"));
    EXPECT_EQ(devices().size(), 0U);
}

TEST_F(SerialDiscoveryListing, leavesOutWhatIsNoLinkOrLeadsNowhere) {
    plugInCamera("1-1", "14080045\n");
    fs::rename(path("devices/1-1"), path("bus/1-2"));  // the link of 1-1 leads nowhere now
    writeFile(path("bus/1-3"), "text");
    EXPECT_EQ(devices().size(), 0U);
}

TEST_F(SerialDiscoveryListing, tellsWhyASerialNumberCannotBeRead) {
    plugInCamera("1-1", "14080045\n");
    fs::remove(path("bus/1-1/serial"));
    EXPECT_EQ(device().state, DeviceState::kSerialUnreadable);
    EXPECT_EQ(device().reason, ENOENT);
    fs::create_directory(path("bus/1-1/serial"));
    EXPECT_EQ(device().state, DeviceState::kSerialUnreadable);
    EXPECT_EQ(device().reason, EISDIR);
    EXPECT_EQ(device().serial, 0U);
}

TEST_F(SerialDiscoveryListing, callsASerialNumberOfEightDigitsAloneUsable) {
    plugInCamera("1-1", "");
    const std::vector<std::string> unusable = {"",         "00000000",  "FT4XK2A9",
                                               "9999999",  "100000000", "-14080045",
                                               "no digit", "0",         std::string(500, '9')};
    for (const std::string& text : unusable) {
        writeFile(path("bus/1-1/serial"), text + "\n");
        const AttachedDevice camera = device();
        EXPECT_EQ(camera.state, DeviceState::kSerialUnusable) << text;
        EXPECT_EQ(camera.serialText, text);
        EXPECT_EQ(camera.serial, 0U);
    }
    for (const char* const text : {"10000000", "99999999", " 14080045", "014080045", "14080045x"}) {
        writeFile(path("bus/1-1/serial"), text);
        EXPECT_EQ(device().state, DeviceState::kCamera) << text;
        EXPECT_EQ(device().serial, std::stoul(text)) << text;
    }
}

TEST_F(SerialDiscoveryListing, doesNotWaitForAPipe) {
    plugInCamera("1-1", "");
    fs::remove(path("bus/1-1/serial"));
    ASSERT_EQ(mkfifo(path("bus/1-1/serial").c_str(), 0600), 0);
    EXPECT_EQ(device().state, DeviceState::kSerialUnusable);
}

TEST_F(SerialDiscoveryListing, listsSeveralCamerasInTheOrderOfTheDirectory) {
    for (const char* const entry : {"1-1", "1-2", "1-3", "2-1"}) plugInCamera(entry, "14080045\n");
    std::vector<std::string> order;
    for (const auto& entry : fs::directory_iterator(path("bus")))
        order.push_back(entry.path().filename());
    const std::vector<AttachedDevice> all = devices();
    ASSERT_EQ(all.size(), order.size());
    for (std::size_t i = 0; i < all.size(); ++i) EXPECT_EQ(all[i].entry, order[i]);
}

TEST_F(SerialDiscoveryListing, tellsWhyTheBusCannotBeRead) {
    EXPECT_EQ(dax::listDevices(path("absent").c_str()).reason, ENOENT);
    writeFile(path("file"), "text");
    EXPECT_EQ(dax::listDevices(path("file").c_str()).reason, ENOTDIR);
    EXPECT_TRUE(dax::listDevices(path("file").c_str()).devices.empty());
}

TEST_F(SerialDiscoveryListing, changesNothingOfTheProcess) {
    plugInCamera("1-1", "14080045\n");
    const fs::path here = fs::current_path();
    thermika_test::LogCapture lines;
    const std::size_t descriptors = thermika_test::openDescriptors();
    EXPECT_EQ(devices().size(), 1U);
    EXPECT_EQ(lines.all(), std::vector<std::string>());
    EXPECT_EQ(fs::current_path(), here);
    EXPECT_EQ(thermika_test::openDescriptors(), descriptors);
}

}  // namespace

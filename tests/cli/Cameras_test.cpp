// `thermika cameras`: what is on the bus, in words that differ for everything that can be there.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/CameraSet.h"
#include "support/Companion.h"
#include "support/UsbTree.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::inSandbox;
using thermika_test::runCompanion;
using thermika_test::RunResult;
using thermika_test::UsbTree;

TEST(Cameras, listsEachCameraWithTheStateOfItsFiles) {
    inSandbox([] {
        UsbTree bus;
        bus.addRootHub(1);
        bus.addCamera("1-1", "14080045");
        UsbTree::setAttribute("1-1", "product", "Imager \033[31m\n");
        bus.addCamera("1-2", "14080046");
        fs::create_directories(thermika_test::kCaliDir);
        thermika_test::installFiles(thermika_test::cameraFiles());
        EXPECT_EQ(runCompanion({"cameras"}),
                  (RunResult{"SERIAL    ENTRY  PRODUCT          FILES\n"
                             "14080045  1-1    Imager \\x1B[31m  complete (5 files)\n"
                             "14080046  1-2    -                description missing\n",
                             "", 0}));
        EXPECT_EQ(runCompanion({"cameras", "--serials"}),
                  (RunResult{"14080045\n14080046\n", "", 0}));
    });
}

TEST(Cameras, tellsApartWhyTheFilesCannotBeUsed) {
    inSandbox([] {
        UsbTree bus;
        fs::create_directories(thermika_test::kCaliDir);
        thermika_test::installFiles(thermika_test::cameraFiles());
        fs::remove(std::string(thermika_test::kCaliDir) + "/" + thermika_test::kLastData);
        bus.addCamera("1-1", "14080045");
        const auto addDescription = [&bus](int number, const std::string& bytes) {
            const std::string serial = std::to_string(14080045 + number);
            bus.addCamera("1-" + std::to_string(number + 1), serial);
            const std::string name = "Cali-" + serial + ".xml";
            thermika_test::installFiles({{name, bytes}});
            return std::string(thermika_test::kCaliDir) + "/" + name;
        };
        addDescription(1, "<html>\n");
        fs::permissions(addDescription(2, "x"), fs::perms::none);
        addDescription(3, "");
        const std::string taken = addDescription(4, "x");
        fs::remove(taken);
        fs::create_directory(taken);
        EXPECT_EQ(runCompanion({"cameras"}),
                  (RunResult{"SERIAL    ENTRY  PRODUCT  FILES\n"
                             "14080045  1-1    -        1 of 5 files not present\n"
                             "14080046  1-2    -        description unusable\n"
                             "14080047  1-3    -        description unreadable: Permission denied\n"
                             "14080048  1-4    -        description empty\n"
                             "14080049  1-5    -        description not a regular file\n",
                             "", 0}));
    });
}

TEST(Cameras, colorsTheStateOfTheFiles) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        bus.addCamera("1-2", "14080046");
        fs::create_directories(thermika_test::kCaliDir);
        thermika_test::installFiles(thermika_test::cameraFiles());
        EXPECT_EQ(runCompanion({"cameras", "--color=always"}).out,
                  "\033[1mSERIAL\033[0m    \033[1mENTRY\033[0m  \033[1mPRODUCT\033[0m  "
                  "\033[1mFILES\033[0m\n"
                  "14080045  1-1    -        \033[32mcomplete (5 files)\033[0m\n"
                  "14080046  1-2    -        \033[33mdescription missing\033[0m\n");
        const RunResult plain = runCompanion({"cameras"});
        EXPECT_EQ(plain.out.find('\033'), std::string::npos) << plain;
        EXPECT_EQ(runCompanion({"cameras", "--color", "auto"}), plain);
        EXPECT_EQ(runCompanion({"--color=never", "cameras"}), plain);
        EXPECT_EQ(runCompanion({"--json", "cameras", "--color=always"}).out.find('\033'),
                  std::string::npos);
    });
}

TEST(Cameras, saysThatNoCameraIsAttached) {
    inSandbox([] {
        UsbTree bus;
        bus.addRootHub(1);
        EXPECT_EQ(runCompanion({"cameras"}),
                  (RunResult{"",
                             "no camera is attached (plug one in, wait a second; thermika doctor "
                             "shows more)\n",
                             1}));
        EXPECT_EQ(runCompanion({"cameras", "--quiet"}), (RunResult{"", "", 1}));
        EXPECT_EQ(runCompanion({"cameras", "--serials"}).status, 1);
    });
}

TEST(Cameras, saysWhyACameraCannotBeReadAndWhatToDo) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        fs::permissions(UsbTree::attributePath("1-1", "serial"), fs::perms::none);
        const RunResult result = runCompanion({"cameras", "-q"});
        EXPECT_EQ(result,
                  (RunResult{"",
                             "thermika: the camera at 1-1 cannot be read: its serial number: "
                             "Permission denied (unplug it and plug it in again; may you read "
                             "/sys/bus/usb/devices/1-1/serial?)\n",
                             3}));
    });
}

TEST(Cameras, saysThatADeviceOfTheSameMakerIsNoCamera) {
    inSandbox([] {
        UsbTree bus;
        bus.addDevice("1-1", {"0403", "6001", "FT4XK2A9"});
        UsbTree::setAttribute("1-1", "product", "UART\n");
        EXPECT_EQ(
            runCompanion({"cameras"}),
            (RunResult{"",
                       "the device at 1-1, \"UART\" (0403:6001), is of the camera's maker but no "
                       "such camera (nothing to do)\n"
                       "no camera is attached (plug one in, wait a second; thermika doctor shows "
                       "more)\n",
                       1}));
    });
}

TEST(Cameras, saysThatACameraHasNoUsableSerialNumber) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "0\033]0;x\a");
        EXPECT_EQ(runCompanion({"cameras"}),
                  (RunResult{"",
                             "the camera at 1-1 has no usable serial number: \"0\\x1B]0;x\\x07\" "
                             "is none of 8 digits (look at the camera's label and name that "
                             "number)\n",
                             1}));
    });
}

TEST(Cameras, endsWith0WhenOneCanBeUsedBesideOthers) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "0");
        bus.addCamera("1-2", "14080045");
        const RunResult result = runCompanion({"cameras", "--serials"});
        EXPECT_EQ(result.out, "14080045\n");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(runCompanion({"cameras"}).out,
                  "SERIAL    ENTRY  PRODUCT  FILES\n"
                  "14080045  1-2    -        description missing\n");
    });
}

TEST(Cameras, saysWhyTheBusCannotBeRead) {
    inSandbox([] {
        EXPECT_EQ(runCompanion({"cameras"}),
                  (RunResult{"",
                             "thermika: cannot read /sys/bus/usb/devices: No such file or "
                             "directory (does this machine have USB, and does a container see "
                             "it?)\n",
                             3}));
    });
}

TEST(Attached, cannotBeKnownWhereTheBusCannotBeRead) {
    inSandbox([] {
        const RunResult result = runCompanion({"files"});
        EXPECT_EQ(result.status, 3);
        EXPECT_EQ(result.err.find("thermika: cannot read /sys/bus/usb/devices: "), 0U) << result;
    });
}

TEST(Cameras, createsNothing) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        for (const char* const command : {"cameras", "files", "optics", "config", "doctor"})
            runCompanion({command});
        EXPECT_TRUE(fs::is_empty("/usr/share"));
    });
}

// The library's own commands look at whatever is attached when no camera is named.

TEST(Attached, isMeantWhenNoCameraIsNamed) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        bus.addDevice("1-2", {"0403", "6001", "FT4XK2A9"});
        fs::create_directories(thermika_test::kCaliDir);
        thermika_test::installFiles(thermika_test::cameraFiles());
        for (const char* const command : {"files", "optics", "config"}) {
            const RunResult named = runCompanion({command, "14080045"});
            EXPECT_EQ(named.status, 0) << named;
            EXPECT_EQ(runCompanion({command}), named);
        }
    });
}

TEST(Attached, isNeverPickedFromSeveral) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "14080045");
        bus.addCamera("1-2", "14080046");
        bus.addCamera("1-3", "0");
        for (const std::string command : {"files", "optics", "config", "fetch"})
            EXPECT_EQ(runCompanion({command}),
                      (RunResult{"",
                                 "thermika: more than one camera is attached: 14080045; also "
                                 "attached: 14080046, one at 1-3 whose serial number cannot be "
                                 "used (name one: thermika " +
                                     command + " SERIAL)\n",
                                 2}));
    });
}

TEST(Attached, isNamedWhenItIsMissing) {
    inSandbox([] {
        const UsbTree bus;
        for (const std::string command : {"files", "optics", "config", "fetch"})
            EXPECT_EQ(runCompanion({command}),
                      (RunResult{"",
                                 "thermika: no camera is attached (plug one in, or name one: "
                                 "thermika " +
                                     command + " SERIAL)\n",
                                 1}));
    });
}

TEST(Attached, isNotMeantWhenItsNumberCannotBeUsed) {
    inSandbox([] {
        UsbTree bus;
        bus.addCamera("1-1", "123");
        const RunResult result = runCompanion({"files"});
        EXPECT_EQ(result.status, 3);
        EXPECT_EQ(result.err.find("thermika: the camera at 1-1 has no usable serial number"), 0U)
            << result;
    });
}

}  // namespace

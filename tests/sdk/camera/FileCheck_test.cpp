// The list of a camera's missing files: when it is complete, and the two-step protocol of asking
// for one. Which names are on it stands in FileCheckNames_test.cpp, what is done to directories in
// FileCheckPaths_test.cpp.
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "imgproc/Cali.h"
#include "support/FileCheckTest.h"
#include "support/LogText.h"

namespace {

using namespace thermika_test;

/// What checkCaliFiles() is told beside the directory, the serial and the buffer.
struct Names {
    const char* description = "Cali-%i.xml";
    const char* data = "Cali-%s.dat";
    const char* curve = "Kennlinie-%s.prn";
    const char* separator = ";";
};

class FileCheck : public FileCheckTest {
protected:
    bool check(char* list, int& size, int serial = kSerial, const Names& names = {}) const {
        return manager().checkCaliFiles(cali().c_str(), serial, list, &size, names.description,
                                        names.data, names.curve, names.separator);
    }

    /// The list as a caller gets it that does as the header says, in a block of exactly those
    /// bytes.
    std::string list(int serial, const Names& names = {}) const {
        int size = -1;
        check(nullptr, size, serial, names);
        const auto bytes = static_cast<std::size_t>(size) + std::strlen(names.separator);
        const std::unique_ptr<char[]> buffer(new char[bytes]);
        std::memset(buffer.get(), '?', bytes);
        check(buffer.get(), size, serial, names);
        return buffer.get();
    }

    void provide(const std::string& file) const { writeFile(cali() + "/" + file, ""); }
};

TEST_F(FileCheck, isCompleteWhenNothingIsExpected) {
    describe(kSerial, "");
    describe(kOtherSerial, opticsElement(33, "", ""));
    EXPECT_EQ(missing(), kComplete);
    EXPECT_EQ(missing(kOtherSerial), kComplete);
}

TEST_F(FileCheck, givesNullWhenEveryFileIsThere) {
    describeUsualCamera();
    provide("Cali-12345678-33-M20-100-27.dat");
    provide("Kennlinie-12345678-33-M20-100-27.prn");
    provide("Cali-12345678-33-M20-100-80.dat");
    provide("Kennlinie-12345678-33-M20-100-80.prn");
    EXPECT_EQ(manager().checkCalibration(kSerial), nullptr);

    int size = -1;
    EXPECT_TRUE(check(nullptr, size));
    EXPECT_EQ(size, 0);
    char nothing[] = "?";
    EXPECT_TRUE(check(nothing, size));
    EXPECT_STREQ(nothing, "");
    EXPECT_EQ(size, 0);
}

TEST_F(FileCheck, listsOnlyWhatIsMissing) {
    describeUsualCamera();
    provide("Cali-12345678-33-M20-100-27.dat");
    provide("Kennlinie-12345678-33-M20-100-80.prn");
    EXPECT_EQ(missing(), "Kennlinie-12345678-33-M20-100-27.prn;Cali-12345678-33-M20-100-80.dat;");
}

TEST_F(FileCheck, reportsAMissingDescriptionAlone) { EXPECT_EQ(missing(), "Cali-12345678.xml;"); }

TEST_F(FileCheck, reportsADescriptionThatIsNotWellFormedAsMissing) {
    writeFile(cali() + "/Cali-12345678.xml", "<CaliData>\n<!-- without an end\n</CaliData>\n");
    EXPECT_EQ(missing(), "Cali-12345678.xml;");
}

TEST_F(FileCheck, countsOneByteLessThanTheListOfAMissingDescriptionNeeds) {
    int size = -1;
    EXPECT_FALSE(check(nullptr, size));
    EXPECT_EQ(size, 18);
    const std::unique_ptr<char[]> exact(new char[19]);
    EXPECT_FALSE(check(exact.get(), size));
    EXPECT_STREQ(exact.get(), "Cali-12345678.xml;");
    EXPECT_EQ(std::strlen(exact.get()) + 1, 19U);
    EXPECT_EQ(size, 18);
}

TEST_F(FileCheck, countsEveryNameItsSeparatorAndOneTerminator) {
    describeUsualCamera();
    int size = 4711;
    EXPECT_FALSE(check(nullptr, size));
    EXPECT_EQ(size, 2 * (31 + 1) + 2 * (36 + 1) + 1);
    const std::string text = list(kSerial);
    EXPECT_EQ(text.size() + 1, static_cast<std::size_t>(size));
    EXPECT_EQ(text, missing());
}

TEST_F(FileCheck, tellsBySecondCallThatFilesAreMissingAndLeavesTheCapacity) {
    describeUsualCamera();
    int size = 200;
    std::vector<char> buffer(201, '?');
    EXPECT_FALSE(check(buffer.data(), size));
    EXPECT_EQ(size, 200);
    EXPECT_EQ(buffer.data(), missing());
}

TEST_F(FileCheck, boundsEachNameByTheWholeSizeAndNotByTheRoomLeft) {
    describeUsualCamera();
    const std::string full = list(kSerial);
    for (int size = 1; size <= static_cast<int>(full.size()) + 2; ++size) {
        std::string cut;
        std::istringstream names(full);
        for (std::string name; std::getline(names, name, ';');)
            cut += name.substr(0, static_cast<std::size_t>(size)) + ";";
        const std::unique_ptr<char[]> buffer(new char[cut.size() + 1]);  // no byte more
        int told = size;
        check(buffer.get(), told);
        EXPECT_EQ(buffer.get(), cut);
        EXPECT_EQ(told, size);
    }
}

// Deliberate: each bounded by the whole size, as other names are.
TEST_F(FileCheck, cutsTheNameOfAMissingDescriptionAtTheSizeAndThenItsSeparator) {
    const std::string name = "Cali-12345679.xml";
    for (int size = 0; size <= static_cast<int>(name.size()) + 2; ++size) {
        const auto chars = static_cast<std::size_t>(size);
        const std::unique_ptr<char[]> buffer(new char[chars + 2]);
        int told = size;
        check(buffer.get(), told, kOtherSerial);
        EXPECT_EQ(buffer.get(), name.substr(0, chars) + (size == 0 ? "" : ";"));
    }
}

// Completeness is judged by the list, and nothing fits into this one.
TEST_F(FileCheck, takesAListWithoutRoomForComplete) {
    describeUsualCamera();
    for (int size : {0, -1, std::numeric_limits<int>::min()}) {
        char terminator[] = "?";
        EXPECT_TRUE(check(terminator, size));
        EXPECT_STREQ(terminator, "");
        EXPECT_FALSE(check(terminator, size, kOtherSerial));
        EXPECT_STREQ(terminator, "");
    }
}

TEST_F(FileCheck, emptiesTheBufferBeforeItListsAnything) {
    describeUsualCamera();
    std::vector<char> buffer(400, '?');
    std::strcpy(buffer.data(), "what was there;");
    int size = 399;
    check(buffer.data(), size);
    EXPECT_EQ(buffer.data(), missing());
}

TEST_F(FileCheck, usesTheSeparatorAfterTheDescriptionOnly) {
    Names names;
    names.separator = " | ";
    EXPECT_EQ(list(kSerial, names), "Cali-12345678.xml | ");
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250")));
    EXPECT_EQ(list(kSerial, names), "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;");
    names.separator = "";
    EXPECT_EQ(list(kOtherSerial, names), "Cali-12345679.xml");
    names.separator = nullptr;
    int size = 64;
    char buffer[64];
    EXPECT_FALSE(check(buffer, size, kSerial, names));
    EXPECT_STREQ(buffer, "Cali-12345678-33-0-250.dat;Kennlinie-12345678-33-0-250.prn;");
}

TEST_F(FileCheck, composesNamesInTheFormatsGiven) {
    const Names names{"camera%i", "%s.bin", "curve of %s", ";"};
    EXPECT_EQ(list(kSerial, names), "camera12345678;");
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250", {27})));
    EXPECT_EQ(list(kSerial, names), "12345678-33-0-250-27.bin;curve of 12345678-33-0-250-27;");
    provide("curve of 12345678-33-0-250-27");
    EXPECT_EQ(list(kSerial, names), "12345678-33-0-250-27.bin;");
    EXPECT_EQ(list(kSerial, {"", "%s 100%%", "%.4s", ""}), "12345678-33-0-250-27 100%;1234;");
    EXPECT_EQ(list(kSerial, {"", "data", "100%%", ""}), "data;100%;");
}

TEST_F(FileCheck, cutsTheDescriptionsNameTo19Characters) {
    const Names names{"Calibration-of-%i.xml", "", "", ";"};
    int size = -1;
    EXPECT_FALSE(check(nullptr, size, kSerial, names));
    EXPECT_EQ(size, 20);
    EXPECT_EQ(list(kSerial, names), "Calibration-of-1234;");
}

TEST_F(FileCheck, countsNothingForADescriptionWithoutAName) {
    const Names names{"", "", "", ";"};
    int size = -1;
    EXPECT_FALSE(check(nullptr, size, kSerial, names));
    EXPECT_EQ(size, 0);
    char buffer[2] = {'?', '?'};
    size = 1;
    EXPECT_FALSE(check(buffer, size, kSerial, names));
    EXPECT_STREQ(buffer, ";");
}

TEST_F(FileCheck, cutsNamesTo259Characters) {
    describe(kSerial, samplePointOpticsElement(33, std::string(400, 't'), rangeElement("0", "1")));
    EXPECT_EQ(missing(), "Cali-12345678-33-" + std::string(259 - 17, 't') + ";");
    const std::string prefix(300, 'p');
    Names names;
    names.data = prefix.c_str();
    EXPECT_EQ(list(kSerial, names), std::string(259, 'p') + ";");
}

TEST_F(FileCheck, loadsTheOtherSerialsDescription) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("0", "250")));
    describe(kOtherSerial, samplePointOpticsElement(60, "", rangeElement("0", "100")));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;");
    EXPECT_EQ(missing(kOtherSerial), "Cali-12345679-60-0-100.dat;");
    EXPECT_TRUE(ConfigCali::getInstance()->isLoaded(kOtherSerial));
    EXPECT_EQ(missing(12345670), "Cali-12345670.xml;");
    EXPECT_FALSE(ConfigCali::getInstance()->isLoaded(kOtherSerial));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;");
}

TEST_F(FileCheck, keepsToTheDescriptionThatIsLoadedForTheSerial) {
    describe(kSerial, samplePointOpticsElement(33, "", rangeElement("0", "250")));
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;");
    writeFile(cali() + "/Cali-12345678.xml", "");
    manager().setCalibrationDir(beside("elsewhere").c_str());
    EXPECT_EQ(missing(), "Cali-12345678-33-0-250.dat;");
}

TEST_F(FileCheck, logsNothingOnceTheDescriptionIsLoaded) {
    describeUsualCamera();
    EXPECT_NE(missing(), kComplete);
    LogCapture lines;
    EXPECT_NE(missing(), kComplete);
    EXPECT_EQ(lines.all(), std::vector<std::string>());
}

}  // namespace

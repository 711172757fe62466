// Which names may be used: every rule from both sides.
#include "fetch/FileName.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using thermika::fetch::isPartName;
using thermika::fetch::nameRefusal;

TEST(FileName, takesNamesOfCalibrationFiles) {
    for (const char* const name : {"Cali-14080045.xml", "Cali-14080045-33-M20-100-27.dat",
                                   "Kennlinie-14080045-33-M20-100-27.prn"})
        EXPECT_EQ(nameRefusal(name), "") << name;
}

TEST(FileName, takesWhatOnlyAShellWouldMind) {
    for (const char* const name :
         {"$(reboot)", "`id`", "a b", "it's", "say \"x\"", "back\\slash", "a;b|c&d", "-rf", "..."})
        EXPECT_EQ(nameRefusal(name), "") << name;
}

TEST(FileName, refusesWhatIsNoSinglePathComponent) {
    EXPECT_EQ(nameRefusal(""), "the file name is empty");
    EXPECT_EQ(nameRefusal("."), "the file name means a directory");
    EXPECT_EQ(nameRefusal(".."), "the file name means a directory");
    for (const char* const name : {"/", "a/b", "../a", "/etc/passwd", "a/"})
        EXPECT_EQ(nameRefusal(name), "the file name contains \"/\"") << name;
}

TEST(FileName, refusesEveryControlByteAndTakesTheBytesBesideThem) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string name = std::string("a") + static_cast<char>(byte) + "b";
        const bool isControl = byte < 0x20 || byte == 0x7f;
        if (byte == '/') continue;
        EXPECT_EQ(nameRefusal(name), isControl ? "the file name contains a control byte" : "")
            << byte;
    }
}

TEST(FileName, takes255BytesAndRefuses256) {
    EXPECT_EQ(nameRefusal(std::string(255, 'a')), "");
    EXPECT_EQ(nameRefusal(std::string(256, 'a')), "the file name is longer than 255 bytes");
}

TEST(FileName, refusesNamesOfPartFilesWhichTheNextCallWouldRemove) {
    EXPECT_EQ(nameRefusal(".thermika-fetch-0123456789abcdef.part"),
              "the file name is one of those used for unfinished files");
    EXPECT_TRUE(isPartName(".thermika-fetch-x.part"));
    for (const char* const name :
         {".thermika-fetch-.part", ".thermika-fetch-x.par", "thermika-fetch-x.part",
          ".thermika-fetch-", "x.part", ".thermika-fetch-0123456789abcdef.par",
          "thermika-fetch-0123456789abcdef.part"})
        EXPECT_FALSE(isPartName(name)) << name;
}

}  // namespace

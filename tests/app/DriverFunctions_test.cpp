// The three functions that the tool exports and never calls.
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/Driver.h"
#include "support/BuildPaths.h"
#include "support/Sandbox.h"

namespace {

namespace fs = std::filesystem;
using thermika_test::inSandbox;

/// What `printUsage` writes for a program of that name.
thermika_test::RunResult usageOf(std::string program) {
    return thermika_test::runInProcess([&program] {
        printUsage(program.data());
        return 0;
    });
}

TEST(DriverFunctions, printsTheUsageToStandardOutput) {
    EXPECT_EQ(usageOf("./genconfig"),
              (thermika_test::RunResult{
                  "Usage: ./genconfig {-d} [-t]\n"
                  " -d: find specific device\n"
                  " -t: specify source directory with calibration files (optional)\n"
                  "\n"
                  "  examples\n"
                  "  --------\n"
                  "   $ ./genconfig\n"
                  "   $ ./genconfig -d14080045\n"
                  "   $ ./genconfig -d14080045 -t /tmp\n",
                  "", 0}));
}

TEST(DriverFunctions, printsAnyProgramNameAsItStands) {
    const std::string name = "%s%n" + std::string(9000, 'n');
    const std::string out = usageOf(name).out;
    EXPECT_EQ(out.substr(0, name.size() + 20), "Usage: " + name + " {-d} [-t]\n -");
    const std::string end = "\n   $ " + name + " -d14080045 -t /tmp\n";
    EXPECT_EQ(out.substr(out.size() - end.size()), end);
}

/// In a sandbox: a working directory whose path has `length` characters.
void enterFolderWithPathOf(std::size_t length) {
    std::string path = "/usr/share/";
    path += std::string(length - path.size(), 'd');
    fs::create_directory(path);
    fs::current_path(path);
}

TEST(DriverFunctions, storesAWorkingDirectoryThatFitsExactly) {
    inSandbox([] {
        enterFolderWithPathOf(20);
        std::vector<char> buffer(21, 'x');
        EXPECT_EQ(dax::getFolderPath(buffer.data(), 10), buffer.data());
        EXPECT_STREQ(buffer.data(), "/usr/share/ddddddddd");
    });
}

TEST(DriverFunctions, givesNullForAWorkingDirectoryOneCharacterTooLong) {
    inSandbox([] {
        enterFolderWithPathOf(21);
        std::vector<char> buffer(21);
        errno = 0;
        EXPECT_EQ(dax::getFolderPath(buffer.data(), 10), nullptr);
        EXPECT_EQ(errno, ERANGE);
    });
}

TEST(DriverFunctions, givesNullForALengthOfZero) {
    inSandbox([] {
        fs::current_path("/");
        char buffer[1];
        errno = 0;
        EXPECT_EQ(dax::getFolderPath(buffer, 0), nullptr);
        EXPECT_EQ(errno, ERANGE);
    });
}

TEST(DriverFunctions, storesTheRootInThreeBytes) {
    inSandbox([] {
        fs::current_path("/");
        char buffer[3];
        EXPECT_EQ(dax::getFolderPath(buffer, 1), buffer);
        EXPECT_STREQ(buffer, "/");
    });
}

TEST(DriverFunctions, takesTheLongestLength) {
    inSandbox([] {
        enterFolderWithPathOf(200);
        std::vector<char> buffer(2 * SHRT_MAX + 1);
        EXPECT_EQ(dax::getFolderPath(buffer.data(), SHRT_MAX), buffer.data());
        EXPECT_EQ(std::strlen(buffer.data()), 200U);
    });
}

TEST(DriverFunctions, takesANegativeLengthAsASizeThatNoBufferHas) {
    inSandbox([] {
        enterFolderWithPathOf(200);
        for (const short length : {static_cast<short>(-1), static_cast<short>(SHRT_MIN)}) {
            std::vector<char> buffer(PATH_MAX);
            EXPECT_EQ(dax::getFolderPath(buffer.data(), length), buffer.data());
            EXPECT_EQ(std::strlen(buffer.data()), 200U);
        }
    });
}

TEST(DriverFunctions, givesNullWhenTheWorkingDirectoryIsGone) {
    inSandbox([] {
        enterFolderWithPathOf(20);
        fs::remove(fs::current_path());
        char buffer[201];
        errno = 0;
        EXPECT_EQ(dax::getFolderPath(buffer, 100), nullptr);
        EXPECT_EQ(errno, ENOENT);
    });
}

mode_t modeOf(const char* path) {
    struct stat status {};
    EXPECT_EQ(stat(path, &status), 0);
    return status.st_mode & 07777;
}

TEST(DriverFunctions, createsAFolderThatOnlyTheUmaskRestricts) {
    inSandbox([] {
        umask(0);
        EXPECT_EQ(dax::mkDir("/usr/share/all"), 0);
        EXPECT_EQ(modeOf("/usr/share/all"), 0777U);
        umask(027);
        EXPECT_EQ(dax::mkDir("/usr/share/some"), 0);
        EXPECT_EQ(modeOf("/usr/share/some"), 0750U);
    });
}

TEST(DriverFunctions, createsOneLevelOnly) {
    inSandbox([] {
        errno = 0;
        EXPECT_EQ(dax::mkDir("/usr/share/a/b"), -1);
        EXPECT_EQ(errno, ENOENT);
        EXPECT_FALSE(fs::exists("/usr/share/a"));
    });
}

TEST(DriverFunctions, tellsThatAFolderIsThereAlready) {
    inSandbox([] {
        EXPECT_EQ(dax::mkDir("/usr/share/a"), 0);
        errno = 0;
        EXPECT_EQ(dax::mkDir("/usr/share/a"), -1);
        EXPECT_EQ(errno, EEXIST);
    });
}

TEST(DriverFunctions, areExternalSymbolsOfTheTool) {
    const auto symbols = thermika_test::run("nm", {"nm", "--extern-only", THERMIKA_TOOL});
    ASSERT_EQ(symbols.status, 0) << symbols;
    for (const char* const symbol :
         {"_Z10printUsagePc", "_ZN3dax13getFolderPathEPcs", "_ZN3dax5mkDirEPKc"})
        EXPECT_NE(symbols.out.find(std::string(" T ") + symbol + "\n"), std::string::npos)
            << symbol;
}

}  // namespace

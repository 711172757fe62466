// Opening a document by directory and name: the path, its limit, and the directory it creates.
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "sdk/IRCalibrationManager.h"
#include "sdk/SimpleXML.h"
#include "support/LoadedDocument.h"
#include "support/LogText.h"
#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::LogCapture;
using thermika_test::stringOf;
using thermika_test::TempDir;
using thermika_test::WorkingDirectory;
using thermika_test::writeFile;

constexpr std::size_t kLongestPath = 259;

/// One line that names the limit, and nothing else.
constexpr const char* kLimitLine = "^[^\n]*259[^\n]*\n$";

bool openIn(dax::SimpleXML& reader, const std::string& dir, std::string name) {
    return reader.open(dir.c_str(), name.data(), "R");
}

/// Permission bits; 0 when there is no such directory.
mode_t modeOf(const std::string& dir) {
    struct stat status {};
    if (stat(dir.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return 0;
    return status.st_mode & 07777U;
}

/// A new folder below `dir` whose path has exactly `characters`.
std::string nestedFolderOfLength(const TempDir& dir, std::size_t characters) {
    std::string path = dir.path();
    while (path.size() < characters) {
        // Names of 100 at most, and never one character alone for the last "/".
        std::size_t part = std::min<std::size_t>(characters - path.size() - 1, 100);
        if (characters - path.size() - 1 - part == 1) --part;
        path.append("/").append(part, 'd');
    }
    std::filesystem::create_directories(path);
    return path;
}

std::string nameFor(const std::string& dir, std::size_t pathCharacters) {
    return std::string(pathCharacters - dir.size() - std::string("/.xml").size(), 'n');
}

/// Leave to look at the manager's private instance, which getInstance() would create.
template <auto kMember>
struct Reveal {
    friend auto revealedInstance() { return kMember; }
};
auto revealedInstance();
template struct Reveal<&dax::IRCalibrationManager::_this>;

bool isThereAManager() { return *revealedInstance() != nullptr; }

}  // namespace

TEST(SimpleXMLPath, opensTheNamedDocumentInADirectory) {
    const TempDir dir;
    writeFile(dir / "one.xml", "<R>\n<a>1</a>\n</R>\n");
    dax::SimpleXML reader;
    ASSERT_TRUE(openIn(reader, dir.path(), "one"));
    reader.setNode();
    EXPECT_EQ(stringOf(reader, "a"), "1");
}

TEST(SimpleXMLPath, namesTheWholePathWhenItCannotBeOpened) {
    const TempDir dir;
    LogCapture log;
    dax::SimpleXML reader;
    EXPECT_FALSE(openIn(reader, dir.path(), "one"));
    EXPECT_EQ(log.lines(), "DEBUG [SimpleXML] Failed to open file " + (dir / "one.xml") + "\n");
}

TEST(SimpleXMLPath, doesNotOpenNullTexts) {
    const LogCapture quiet;
    const TempDir dir;
    writeFile(dir / "one.xml", "<R>\n");
    std::string name = "one";
    dax::SimpleXML reader;
    EXPECT_FALSE(reader.open(nullptr, name.data(), "R"));
    EXPECT_FALSE(reader.open(dir.path().c_str(), nullptr, "R"));
    EXPECT_FALSE(reader.open(dir.path().c_str(), name.data(), nullptr));
}

TEST(SimpleXMLPath, createsTheDirectoryWithTheModeTheMaskAllows) {
    const LogCapture quiet;
    const TempDir dir;
    const thermika_test::Umask mask(027);
    dax::SimpleXML reader;
    EXPECT_FALSE(openIn(reader, dir / "new", "one"));
    EXPECT_EQ(modeOf(dir / "new"), 0750U);
}

TEST(SimpleXMLPath, createsTheDirectoryWithEveryPermission) {
    const LogCapture quiet;
    const TempDir dir;
    const thermika_test::Umask mask(0);
    dax::SimpleXML reader;
    EXPECT_FALSE(openIn(reader, dir / "new", "one"));
    EXPECT_EQ(modeOf(dir / "new"), 0777U);
}

TEST(SimpleXMLPath, createsOneLevelOnly) {
    const TempDir dir;
    LogCapture log;
    dax::SimpleXML reader;
    EXPECT_FALSE(openIn(reader, dir / "new/newer", "one"));
    EXPECT_EQ(modeOf(dir / "new"), 0U);
    EXPECT_EQ(log.lines(),
              "DEBUG [SimpleXML] Failed to open file " + (dir / "new/newer/one.xml") + "\n");
}

TEST(SimpleXMLPath, looksBelowTheWorkingDirectoryWithoutADirectory) {
    const TempDir dir;
    std::filesystem::create_directory(dir / "Imager");
    writeFile(dir / "Imager/one.xml", "<R>\n<a>1</a>\n</R>\n");
    const WorkingDirectory working(dir.path());
    dax::SimpleXML reader;
    ASSERT_TRUE(openIn(reader, "", "one"));
    reader.setNode();
    EXPECT_EQ(stringOf(reader, "a"), "1");
}

TEST(SimpleXMLPath, createsTheDirectoryBelowTheWorkingDirectory) {
    const TempDir dir;
    const WorkingDirectory working(dir.path());
    LogCapture log;
    dax::SimpleXML reader;
    EXPECT_FALSE(openIn(reader, "", "one"));
    EXPECT_NE(modeOf(dir / "Imager"), 0U);
    EXPECT_EQ(log.lines(), "DEBUG [SimpleXML] Failed to open file " +
                               (std::filesystem::current_path() / "Imager/one.xml").string() +
                               "\n");
}

TEST(SimpleXMLPath, opensNothingWithoutAWorkingDirectory) {
    const TempDir dir;
    std::filesystem::create_directory(dir / "gone");
    const WorkingDirectory working(dir / "gone");
    ASSERT_EQ(rmdir((dir / "gone").c_str()), 0);
    LogCapture log;
    dax::SimpleXML reader;
    EXPECT_FALSE(openIn(reader, "", "one"));
    EXPECT_EQ(log.lines(), "");
}

TEST(SimpleXMLPath, opensNothingBelowAWorkingDirectoryThatIsTooLongToTell) {
    const LogCapture quiet;
    const TempDir dir;
    const WorkingDirectory working(nestedFolderOfLength(dir, kLongestPath + 1));
    dax::SimpleXML reader;
    EXPECT_FALSE(openIn(reader, "", "one"));
    EXPECT_EQ(modeOf("Imager"), 0U);
}

TEST(SimpleXMLPath, opensAPathOfTheGreatestLength) {
    const TempDir dir;
    const std::string folder = nestedFolderOfLength(dir, 200);
    const std::string name = nameFor(folder, kLongestPath);
    writeFile(folder + "/" + name + ".xml", "<R>\n<a>1</a>\n</R>\n");
    dax::SimpleXML reader;
    ASSERT_TRUE(openIn(reader, folder, name));
    reader.setNode();
    EXPECT_EQ(stringOf(reader, "a"), "1");
}

TEST(SimpleXMLPathDeathTest, endsTheProcessForALongerPath) {
    const TempDir dir;
    const std::string folder = nestedFolderOfLength(dir, 200);
    const std::string name = nameFor(folder, kLongestPath + 1);
    dax::SimpleXML reader;
    EXPECT_EXIT(openIn(reader, folder, name), testing::KilledBySignal(SIGABRT), kLimitLine);
    EXPECT_EXIT(openIn(reader, folder, std::string(5000, 'n')), testing::KilledBySignal(SIGABRT),
                kLimitLine);
}

TEST(SimpleXMLPathDeathTest, createsTheDirectoryBeforeAPathTurnsOutTooLong) {
    const TempDir dir;
    dax::SimpleXML reader;
    EXPECT_EXIT(openIn(reader, dir / "new", std::string(259, 'n')),
                testing::KilledBySignal(SIGABRT), kLimitLine);
    EXPECT_NE(modeOf(dir / "new"), 0U);
}

TEST(SimpleXMLPathDeathTest, endsTheProcessForALongerDirectory) {
    const TempDir dir;
    dax::SimpleXML reader;
    for (const std::size_t characters : {kLongestPath, kLongestPath + 1, std::size_t{5000}}) {
        const std::string longDir = "/" + std::string(characters - 1, 'd');
        EXPECT_EXIT(openIn(reader, longDir, ""), testing::KilledBySignal(SIGABRT), kLimitLine);
    }
}

TEST(SimpleXMLPathDeathTest, createsNoDirectoryThatIsItselfTooLong) {
    const TempDir dir;
    const std::string parent = nestedFolderOfLength(dir, 200);
    const std::string longDir = parent + "/" + std::string(59, 'd');
    ASSERT_EQ(longDir.size(), kLongestPath + 1);
    dax::SimpleXML reader;
    EXPECT_EXIT(openIn(reader, longDir, "x"), testing::KilledBySignal(SIGABRT), kLimitLine);
    EXPECT_EQ(modeOf(longDir), 0U);
    EXPECT_EXIT(openIn(reader, longDir.substr(0, kLongestPath), "x"),
                testing::KilledBySignal(SIGABRT), kLimitLine);
    EXPECT_NE(modeOf(longDir.substr(0, kLongestPath)), 0U);
}

TEST(SimpleXMLPathDeathTest, endsTheProcessBelowAWorkingDirectoryThatLeavesNoRoom) {
    const TempDir dir;
    for (const std::size_t characters : {kLongestPath - 3, kLongestPath}) {
        const std::string folder = nestedFolderOfLength(dir, characters);
        const WorkingDirectory working(folder);
        dax::SimpleXML reader;
        EXPECT_EXIT(openIn(reader, "", "x"), testing::KilledBySignal(SIGABRT), kLimitLine);
        EXPECT_EQ(modeOf("Imager"), 0U);
    }
}

TEST(SimpleXMLPath, createsTheCalibrationManager) {
    const LogCapture quiet;
    const TempDir dir;
    delete dax::IRCalibrationManager::getInstance();
    ASSERT_FALSE(isThereAManager());
    dax::SimpleXML reader;
    EXPECT_FALSE(reader.open((dir / "one.xml").c_str(), "R"));
    EXPECT_FALSE(isThereAManager()) << "a whole path needs no manager";
    EXPECT_FALSE(openIn(reader, dir.path(), "one"));
    EXPECT_TRUE(isThereAManager());
}

// The manager itself: the one instance and its two directory arrays.
#include "sdk/IRCalibrationManager.h"

#include <cstddef>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace {

using dax::IRCalibrationManager;

constexpr std::size_t kDirectoryBytes = 260;

/// Each test starts without a manager and leaves none.
class IRCalibrationManagerTest : public testing::Test {
protected:
    void SetUp() override { delete IRCalibrationManager::getInstance(); }
    void TearDown() override { delete IRCalibrationManager::getInstance(); }
};

/// All of a directory array.
std::string bytesOf(const char* array) { return {array, kDirectoryBytes}; }

std::string padded(std::string dir) {
    dir.resize(kDirectoryBytes, '\0');
    return dir;
}

/// A path of so many characters, none of which stands where it stood one character before.
std::string pathOf(std::size_t length) {
    std::string path = "/";
    while (path.size() < length) path += static_cast<char>('a' + path.size() % 26);
    return path;
}

TEST_F(IRCalibrationManagerTest, isTheSameEveryTime) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(IRCalibrationManager::getInstance(), manager);
}

TEST_F(IRCalibrationManagerTest, startsWithTheDefaultDirectories) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    EXPECT_STREQ(manager->getCalibrationDir(), "/usr/share/libthermika/cali");
    EXPECT_STREQ(manager->getFormatsDir(), "/usr/share/libthermika");
}

TEST_F(IRCalibrationManagerTest, startsWithoutOptics) {
    IRCalibrationManager* const first = IRCalibrationManager::getInstance();
    ASSERT_NE(first->getAvailableOptics(0), nullptr);
    EXPECT_TRUE(first->getAvailableOptics(0)->empty());
    first->getAvailableOptics(0)->resize(3);
    EXPECT_EQ(first->getAvailableOptics(0)->size(), 3U);
    delete first;
    EXPECT_TRUE(IRCalibrationManager::getInstance()->getAvailableOptics(0)->empty());
}

TEST_F(IRCalibrationManagerTest, padsItsDirectoriesWithZeroBytes) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    EXPECT_EQ(bytesOf(manager->getCalibrationDir()), padded("/usr/share/libthermika/cali"));
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), padded("/usr/share/libthermika"));
    manager->setCalibrationDir(pathOf(200).c_str());
    manager->setFormatsDir(pathOf(200).c_str());
    manager->setCalibrationDir("/c");
    manager->setFormatsDir("/f");
    EXPECT_EQ(bytesOf(manager->getCalibrationDir()), padded("/c"));
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), padded("/f"));
}

TEST_F(IRCalibrationManagerTest, handsOutItsOwnArrays) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    char* const calibrationDir = manager->getCalibrationDir();
    char* const formatsDir = manager->getFormatsDir();
    EXPECT_NE(calibrationDir, formatsDir);
    std::strcpy(calibrationDir, "/written/by/the/caller");
    manager->setFormatsDir("/formats");
    EXPECT_EQ(manager->getCalibrationDir(), calibrationDir);
    EXPECT_EQ(manager->getFormatsDir(), formatsDir);
    EXPECT_STREQ(calibrationDir, "/written/by/the/caller");
    EXPECT_STREQ(formatsDir, "/formats");
}

TEST_F(IRCalibrationManagerTest, keepsItsDirectoriesWhenGivenNull) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    manager->setCalibrationDir("/c");
    manager->setFormatsDir("/f");
    manager->setCalibrationDir(nullptr);
    manager->setFormatsDir(nullptr);
    EXPECT_EQ(bytesOf(manager->getCalibrationDir()), padded("/c"));
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), padded("/f"));
}

TEST_F(IRCalibrationManagerTest, terminatesADirectoryOf259Characters) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    const std::string dir = pathOf(259);
    manager->setCalibrationDir(dir.c_str());
    manager->setFormatsDir(dir.c_str());
    EXPECT_EQ(bytesOf(manager->getCalibrationDir()), dir + '\0');
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), dir + '\0');
}

TEST_F(IRCalibrationManagerTest, doesNotTerminateADirectoryOf260Characters) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    const std::string dir = pathOf(260);
    manager->setCalibrationDir(dir.c_str());
    manager->setFormatsDir(dir.c_str());
    EXPECT_EQ(bytesOf(manager->getCalibrationDir()), dir);
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), dir);
}

TEST_F(IRCalibrationManagerTest, cutsADirectoryOfMoreThan260Characters) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    for (const std::size_t length : {261U, 300U, 5000U}) {
        const std::string dir = pathOf(length);
        manager->setCalibrationDir(dir.c_str());
        manager->setFormatsDir(dir.c_str());
        EXPECT_EQ(bytesOf(manager->getCalibrationDir()), pathOf(260));
        EXPECT_EQ(bytesOf(manager->getFormatsDir()), pathOf(260));
        manager->setCalibrationDir("");
        manager->setFormatsDir("");
    }
}

TEST_F(IRCalibrationManagerTest, takesDirectoriesAsTheyStand) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    for (const char* const dir : {"", "/", "relative", "/two//", "/not there/at all", "\xff%s\n"}) {
        manager->setCalibrationDir(dir);
        manager->setFormatsDir(dir);
        EXPECT_EQ(bytesOf(manager->getCalibrationDir()), padded(dir));
        EXPECT_EQ(bytesOf(manager->getFormatsDir()), padded(dir));
    }
}

TEST_F(IRCalibrationManagerTest, takesADirectoryFromItsOwnArrays) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    const auto expectFrom = [manager](const char* dir) {
        const std::string copy = dir;
        manager->setCalibrationDir(dir);
        EXPECT_EQ(bytesOf(manager->getCalibrationDir()), padded(copy));
    };
    expectFrom(manager->getCalibrationDir());
    expectFrom(manager->getCalibrationDir() + 4);
    expectFrom(manager->getFormatsDir());
    manager->setFormatsDir(pathOf(260).c_str());
    manager->setFormatsDir(manager->getFormatsDir());
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), pathOf(260));
}

// A full array has no terminator: nothing behind it may be read, which memory checkers watch.
TEST_F(IRCalibrationManagerTest, takesTheRestOfAFullArray) {
    IRCalibrationManager* const manager = IRCalibrationManager::getInstance();
    const std::string full = pathOf(260);
    const std::string rest = full.substr(4);
    manager->setCalibrationDir(full.c_str());
    manager->setCalibrationDir(manager->getCalibrationDir() + 4);
    EXPECT_EQ(bytesOf(manager->getCalibrationDir()), padded(rest));

    manager->setFormatsDir(full.c_str());
    manager->setCalibrationDir(manager->getFormatsDir() + 4);
    EXPECT_EQ(bytesOf(manager->getCalibrationDir()), padded(rest));
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), full);

    manager->setCalibrationDir(full.c_str());
    manager->setFormatsDir(manager->getCalibrationDir() + 259);
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), padded(full.substr(259)));
    manager->setFormatsDir(full.c_str());
    manager->setFormatsDir(manager->getFormatsDir() + 4);
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), padded(rest));
}

TEST_F(IRCalibrationManagerTest, isMadeAnewAfterItsDestruction) {
    IRCalibrationManager* manager = IRCalibrationManager::getInstance();
    manager->setCalibrationDir("/c");
    manager->setFormatsDir("/f");
    delete manager;
    manager = IRCalibrationManager::getInstance();
    EXPECT_EQ(bytesOf(manager->getCalibrationDir()), padded("/usr/share/libthermika/cali"));
    EXPECT_EQ(bytesOf(manager->getFormatsDir()), padded("/usr/share/libthermika"));
    EXPECT_EQ(IRCalibrationManager::getInstance(), manager);
}

TEST_F(IRCalibrationManagerTest, isForgottenWhenAnyOtherIsDestroyed) {
    IRCalibrationManager* const forgotten = IRCalibrationManager::getInstance();
    { const IRCalibrationManager other; }
    IRCalibrationManager* const successor = IRCalibrationManager::getInstance();
    EXPECT_NE(successor, forgotten);
    delete forgotten;
    delete successor;
}

TEST_F(IRCalibrationManagerTest, isNoneThatWasMadeWithoutIt) {
    IRCalibrationManager other;
    other.setCalibrationDir("/other");
    EXPECT_NE(IRCalibrationManager::getInstance(), &other);
    EXPECT_STREQ(IRCalibrationManager::getInstance()->getCalibrationDir(),
                 "/usr/share/libthermika/cali");
    delete IRCalibrationManager::getInstance();
}

}  // namespace

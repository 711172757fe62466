// What the file check does to directories and takes for a file that is there: paths of every
// length, the directory it creates, files that cannot be read, and the check of a single file.
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <system_error>

#include "imgproc/Cali.h"
#include "support/FileCheckTest.h"
#include "support/ProcessState.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;

constexpr const char* kDataFile = "Cali-12345678-33-0-250.dat";

/// While it lives, the modes of files bind root as they bind everybody else.
class WithoutPrivileges {
public:
    WithoutPrivileges() {
        if (syscall(SYS_capget, &m_header, m_former) != 0) fail();
        __user_cap_data_struct none[2] = {m_former[0], m_former[1]};
        none[0].effective = none[1].effective = 0;
        if (syscall(SYS_capset, &m_header, none) != 0) fail();
    }
    ~WithoutPrivileges() { syscall(SYS_capset, &m_header, m_former); }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    static void fail() { throw std::system_error(errno, std::generic_category(), "capabilities"); }

    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_former[2]{};
};

/// Every path below `folder` with what would show that somebody touched it.
std::map<std::string, std::string> snapshot(const std::string& folder) {
    std::map<std::string, std::string> all;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat status {};
        lstat(entry.path().c_str(), &status);
        all[entry.path()] = std::to_string(status.st_mode) + " " + std::to_string(status.st_size) +
                            " " + std::to_string(status.st_ino) + " " +
                            std::to_string(status.st_mtim.tv_sec) + "." +
                            std::to_string(status.st_mtim.tv_nsec);
    }
    return all;
}

/// A new directory below `folder` whose path has exactly `length` characters.
std::string makeDirectoryOfLength(const std::string& folder, std::size_t length) {
    constexpr std::size_t kNameChars = 100;
    std::string path = folder;
    while (length - path.size() > 2 * kNameChars) path += "/" + std::string(kNameChars, 'd');
    if (length - path.size() > kNameChars) path += "/" + std::string(kNameChars / 2, 'd');
    path += "/" + std::string(length - path.size() - 1, 'd');
    fs::create_directories(path);
    return path;
}

class FileCheckPaths : public FileCheckTest {
protected:
    std::string missingIn(const std::string& directory, unsigned long serial = kSerial) const {
        manager().setCalibrationDir(directory.c_str());
        return missing(serial);
    }

    /// A description that asks for kDataFile alone.
    void describeOneFile() const {
        describe(kSerial, samplePointOpticsElement(33, "", rangeElement("0", "250")));
    }

    void loadOneFile() const {
        describeOneFile();
        ASSERT_EQ(ConfigCali::getInstance()->load(cali().c_str(), kSerial), 0);
    }

    /// The bytes that always hold the path, as the header says.
    static int bytesFor(const std::string& directory, short length) {
        return directory.empty() ? 4 * length + 9 : 3 * length + 2;
    }

    /// The path composed, or "" when that is refused and `out` was left alone; `out` is a block of
    /// exactly the bytes that it must have.
    std::string compose(const std::string& directory, short length, const char* name,
                        const char* suffix) const {
        const auto bytes = static_cast<std::size_t>(length > 0 ? bytesFor(directory, length) : 1);
        const std::unique_ptr<char[]> out(new char[bytes]);
        std::memset(out.get(), '?', bytes);
        if (manager().createConfigFilepath(out.get(), directory.c_str(), length, name, suffix))
            return out.get();
        EXPECT_EQ(std::string(out.get(), bytes), std::string(bytes, '?'));
        return "";
    }
};

using FileCheckPathsDeathTest = FileCheckPaths;

TEST_F(FileCheckPaths, createsTheDirectoryThatIsMissingAndNothingElse) {
    describeOneFile();
    const auto before = snapshot(fs::path(cali()).parent_path());
    EXPECT_EQ(missingIn(beside("new"), 12345679), "Cali-12345679.xml;");
    auto after = snapshot(fs::path(cali()).parent_path());
    EXPECT_EQ(after.erase(beside("new")), 1U);
    EXPECT_EQ(after, before);
}

TEST_F(FileCheckPaths, createsTheDirectoryAlsoWhenTheDescriptionIsLoaded) {
    loadOneFile();
    const auto before = snapshot(fs::path(cali()).parent_path());
    EXPECT_EQ(missingIn(beside("new")), std::string(kDataFile) + ";");
    auto after = snapshot(fs::path(cali()).parent_path());
    EXPECT_EQ(after.erase(beside("new")), 1U);
    EXPECT_EQ(after, before);
}

TEST_F(FileCheckPaths, changesNothingInAHalfFullAndAFullDirectory) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250")));
    writeFile(cali() + "/" + kDataFile, "data");
    auto before = snapshot(fs::path(cali()).parent_path());
    EXPECT_EQ(missingIn(cali()), "Kennlinie-12345678-33-0-250.prn;");
    EXPECT_EQ(snapshot(fs::path(cali()).parent_path()), before);

    writeFile(cali() + "/Kennlinie-12345678-33-0-250.prn", "curve");
    before = snapshot(fs::path(cali()).parent_path());
    EXPECT_EQ(missingIn(cali()), kComplete);
    EXPECT_EQ(snapshot(fs::path(cali()).parent_path()), before);
}

TEST_F(FileCheckPaths, createsTheDirectoryForEverybodyLessTheUmask) {
    for (const mode_t mask : {0U, 022U, 077U}) {
        const Umask umask(mask);
        const std::string description = beside("description-" + std::to_string(mask));
        const std::string file = beside("file-" + std::to_string(mask));
        const std::string loaded = beside("loaded-" + std::to_string(mask));
        loadOneFile();
        missingIn(loaded);
        missingIn(description, 12345679);
        compose(file, 260, "name", "");
        for (const std::string& made : {description, loaded, file}) {
            struct stat status {};
            ASSERT_EQ(stat(made.c_str(), &status), 0);
            EXPECT_EQ(status.st_mode, S_IFDIR | (0777U & ~mask));
        }
    }
}

TEST_F(FileCheckPaths, createsNoDirectoryInOneThatIsMissing) {
    loadOneFile();
    const auto before = snapshot(fs::path(cali()).parent_path());
    EXPECT_EQ(missingIn(beside("new/inner")), std::string(kDataFile) + ";");
    EXPECT_EQ(missingIn(beside("new/inner"), 12345679), "Cali-12345679.xml;");
    EXPECT_EQ(snapshot(fs::path(cali()).parent_path()), before);
}

TEST_F(FileCheckPaths, reportsEverythingMissingBelowAFile) {
    loadOneFile();
    writeFile(beside("file"), "text");
    EXPECT_EQ(missingIn(beside("file")), std::string(kDataFile) + ";");
    EXPECT_EQ(readFile(beside("file")), "text");
}

TEST_F(FileCheckPaths, looksIntoImagerBelowTheWorkingDirectoryWhenTheDirectoryIsEmpty) {
    const WorkingDirectory here(fs::path(cali()).parent_path());
    EXPECT_EQ(missingIn(""), "Cali-12345678.xml;");
    EXPECT_TRUE(fs::is_directory(beside("Imager")));
    describeOneFile();
    fs::rename(cali() + "/Cali-12345678.xml", beside("Imager/Cali-12345678.xml"));
    EXPECT_EQ(missingIn(""), std::string(kDataFile) + ";");
    writeFile(beside("Imager/") + kDataFile, "");
    EXPECT_EQ(missingIn(""), kComplete);
    fs::remove_all(beside("Imager"));
    EXPECT_EQ(missingIn(""), std::string(kDataFile) + ";");
    EXPECT_TRUE(fs::is_directory(beside("Imager")));
}

TEST_F(FileCheckPaths, reportsEverythingMissingWithoutAWorkingDirectory) {
    loadOneFile();
    fs::create_directory(beside("gone"));
    const WorkingDirectory here(beside("gone"));
    fs::remove(beside("gone"));
    EXPECT_EQ(missingIn(""), std::string(kDataFile) + ";");
    EXPECT_EQ(compose("", 260, "name", ""), "");
    EXPECT_EQ(missingIn("", 12345679), "Cali-12345679.xml;");
}

TEST_F(FileCheckPaths, takesAFileThatCannotBeReadForMissing) {
    loadOneFile();
    const std::string file = cali() + "/" + kDataFile;
    writeFile(file, "data");
    EXPECT_EQ(missingIn(cali()), kComplete);
    const WithoutPrivileges bound;
    ASSERT_EQ(chmod(file.c_str(), 0200), 0);
    EXPECT_EQ(missingIn(cali()), std::string(kDataFile) + ";");
}

TEST_F(FileCheckPaths, takesADescriptionThatCannotBeReadForMissing) {
    describeOneFile();
    const WithoutPrivileges bound;
    ASSERT_EQ(chmod((cali() + "/Cali-12345678.xml").c_str(), 0200), 0);
    EXPECT_EQ(missingIn(cali()), "Cali-12345678.xml;");
}

// A directory opens for reading, and opening is all that is asked of a file.
TEST_F(FileCheckPaths, takesADirectoryWithAFilesNameForTheFile) {
    loadOneFile();
    fs::create_directory(cali() + "/" + kDataFile);
    EXPECT_EQ(missingIn(cali()), kComplete);
}

TEST_F(FileCheckPaths, doesNotWaitForTheWriterOfAPipe) {
    loadOneFile();
    ASSERT_EQ(mkfifo((cali() + "/" + kDataFile).c_str(), 0600), 0);
    EXPECT_EQ(missingIn(cali()), kComplete);
}

TEST_F(FileCheckPaths, followsLinksToTheirFile) {
    loadOneFile();
    fs::create_symlink(beside("file"), cali() + "/" + kDataFile);
    EXPECT_EQ(missingIn(cali()), std::string(kDataFile) + ";");
    writeFile(beside("file"), "");
    EXPECT_EQ(missingIn(cali()), kComplete);
}

TEST_F(FileCheckPaths, leavesNoFileOpen) {
    describe(kSerial, opticsElement(33, "", rangeElement("0", "250")));
    writeFile(cali() + "/" + kDataFile, "");
    const std::size_t before = openDescriptors();
    missingIn(cali());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FileCheckPaths, loadsFromADirectoryOf241Characters) {
    describeOneFile();
    const std::string directory = makeDirectoryOfLength(beside("x"), 241);
    fs::rename(cali() + "/Cali-12345678.xml", directory + "/Cali-12345678.xml");
    EXPECT_EQ(missingIn(directory), std::string(kDataFile) + ";");
    writeFile(directory + "/" + kDataFile, "");
    EXPECT_EQ(missingIn(directory), kComplete);
}

TEST_F(FileCheckPathsDeathTest, endsTheProcessWhenTheDescriptionsPathIsTooLong) {
    for (const std::size_t length : {242U, 259U, 260U}) {
        const std::string directory = makeDirectoryOfLength(beside(std::to_string(length)), length);
        EXPECT_EXIT(missingIn(directory), testing::KilledBySignal(SIGABRT),
                    "path of [0-9]+ characters exceeds the limit of 259");
    }
}

TEST_F(FileCheckPaths, findsFilesInDirectoriesOfUpTo259CharactersOnceTheDescriptionIsLoaded) {
    loadOneFile();
    for (const std::size_t length : {241U, 242U, 259U}) {
        const std::string directory = makeDirectoryOfLength(beside(std::to_string(length)), length);
        EXPECT_EQ(missingIn(directory), std::string(kDataFile) + ";");
        writeFile(directory + "/" + kDataFile, "");
        EXPECT_EQ(missingIn(directory), kComplete);
    }
}

TEST_F(FileCheckPaths, findsFilesBelowWorkingDirectoriesOfUpTo520Characters) {
    loadOneFile();
    for (const std::size_t length : {500U, 510U, 520U, 521U}) {
        const WorkingDirectory there(makeDirectoryOfLength(beside(std::to_string(length)), length));
        fs::create_directory("Imager");
        EXPECT_EQ(missingIn(""), std::string(kDataFile) + ";") << length;
        writeFile(std::string("Imager/") + kDataFile, "");
        EXPECT_EQ(missingIn(""), length <= 520 ? kComplete : std::string(kDataFile) + ";")
            << length;
    }
}

TEST_F(FileCheckPaths, findsNothingInADirectoryOf260Characters) {
    loadOneFile();
    const std::string directory = makeDirectoryOfLength(beside("x"), 260);
    const std::string cut = directory.substr(0, 259);
    fs::create_directory(cut);
    for (const std::string& each : {directory, cut}) writeFile(each + "/" + kDataFile, "");
    EXPECT_EQ(missingIn(directory), std::string(kDataFile) + ";");
    EXPECT_EQ(missingIn(cut), kComplete);
}

TEST_F(FileCheckPaths, composesDirectoryNameAndSuffix) {
    EXPECT_EQ(compose(cali(), 260, "Cali-1", ".xml"), cali() + "/Cali-1.xml");
    EXPECT_EQ(compose(cali(), 260, "", ""), cali() + "/");
    EXPECT_EQ(compose(cali() + "/", 260, "name", ""), cali() + "//name");
    const WorkingDirectory here(cali());
    EXPECT_EQ(compose("sub", 260, "name", ".txt"), "sub/name.txt");
    EXPECT_TRUE(fs::is_directory(cali() + "/sub"));
    EXPECT_EQ(compose("", 260, "name", ".txt"), cali() + "/Imager/name.txt");
}

TEST_F(FileCheckPaths, refusesLengthsThatAreNotPositive) {
    const WorkingDirectory here(cali());
    for (const short length : {short{0}, short{-1}, short{-32768}}) {
        EXPECT_EQ(compose("d", length, "name", ""), "");
        EXPECT_EQ(compose("", length, "name", ""), "");
    }
    EXPECT_TRUE(fs::is_empty(cali()));
}

TEST_F(FileCheckPaths, cutsDirectoryNameAndSuffixToTheLength) {
    const WorkingDirectory here(cali());
    EXPECT_EQ(compose("d", 4, "123456", ""), "d/1234");
    EXPECT_EQ(compose("d", 4, "", "123456"), "d/1234");
    EXPECT_EQ(compose("d", 4, "12345", "6"), "d/12346");
    EXPECT_EQ(compose("ab", 6, "0123456789", "ABCDEFGHIJ"), "ab/012345ABCDEF");
    EXPECT_EQ(compose("directory", 4, "12345", "67890"), "dire/12346789");
    EXPECT_TRUE(fs::is_directory(cali() + "/dire"));
    EXPECT_FALSE(fs::exists(cali() + "/directory"));
    EXPECT_EQ(compose("directory", 1, "name", ""), "d/n");
    EXPECT_EQ(compose("d", 32767, "name", ""), "d/name");
}

TEST_F(FileCheckPaths, cutsItsOwnDirectorysNameToTheLength) {
    const WorkingDirectory root("/");
    for (const short length : {short{1}, short{5}, short{6}}) {
        const auto bound = static_cast<std::size_t>(length);
        EXPECT_EQ(compose("", length, "name", ""), "//" + std::string("Imager").substr(0, bound) +
                                                       "/" + std::string("name").substr(0, bound));
        std::error_code mayNotEvenLook;  // where the root cannot be written
        fs::remove("/" + std::string("Imager").substr(0, bound), mayNotEvenLook);
    }
}

// A path as long as that fits in no place, but it is composed, and its directory is created.
TEST_F(FileCheckPaths, composesPathsThatNoFileCanHave) {
    const WorkingDirectory here(cali());
    const std::string name(300, 'n');
    EXPECT_EQ(compose("new", 300, name.c_str(), name.c_str()), "new/" + name + name);
    EXPECT_TRUE(fs::is_directory(cali() + "/new"));
}

TEST_F(FileCheckPaths, needsTwiceTheLengthForDirectoryAndName) {
    const WorkingDirectory here(cali());
    char exact[2 * 5 + 1];
    EXPECT_TRUE(manager().createConfigFilepath(exact, "four", 5, "12345", ""));
    EXPECT_STREQ(exact, "four/12345");
}

TEST_F(FileCheckPaths, takesAWorkingDirectoryOfTwiceTheLength) {
    const std::string directory = makeDirectoryOfLength(beside("x"), 102);
    const WorkingDirectory here(directory);
    EXPECT_EQ(compose("", 51, "name", ".txt"), directory + "/Imager/name.txt");
    fs::remove(directory + "/Imager");
    EXPECT_EQ(compose("", 50, "name", ".txt"), "");
    EXPECT_FALSE(fs::exists(directory + "/Imager"));
}

TEST_F(FileCheckPaths, helperAddsToTheSizeAMissingFileNeeds) {
    char name[] = "12345678-33-0-250";
    int size = 100;
    dax::_checkCaliFilesHelper(cali().c_str(), name, "Cali-%s.dat", nullptr, &size);
    EXPECT_EQ(size, 100 + 26 + 1);
    writeFile(cali() + "/" + kDataFile, "");
    dax::_checkCaliFilesHelper(cali().c_str(), name, "Cali-%s.dat", nullptr, &size);
    EXPECT_EQ(size, 127);
    EXPECT_STREQ(name, "12345678-33-0-250");
}

TEST_F(FileCheckPaths, helperAppendsTheNameOfAMissingFile) {
    char name[] = "12345678-33-0-250";
    int size = 41;  // bounds each name, not the list
    const std::unique_ptr<char[]> list(new char[64]);
    std::strcpy(list.get(), "before;");
    writeFile(cali() + "/" + kDataFile, "");
    dax::_checkCaliFilesHelper(cali().c_str(), name, "Cali-%s.dat", list.get(), &size);
    EXPECT_STREQ(list.get(), "before;");
    dax::_checkCaliFilesHelper(cali().c_str(), name, "Kennlinie-%s.prn", list.get(), &size);
    EXPECT_STREQ(list.get(), "before;Kennlinie-12345678-33-0-250.prn;");
    dax::_checkCaliFilesHelper(cali().c_str(), name, "%s", list.get(), &size);
    EXPECT_STREQ(list.get(), "before;Kennlinie-12345678-33-0-250.prn;12345678-33-0-250;");
    EXPECT_EQ(size, 41);
}

}  // namespace

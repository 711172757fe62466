// What is opened, what is not, and what is said of it.
#include "fetch/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "fetch/support/FetchTest.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::Descriptor;
using thermika::fetch::openRegularFile;
using thermika::fetch::RegularFile;

class RegularFileInFolder : public testing::Test {
protected:
    RegularFile openNamed(const std::string& name) const {
        return openRegularFile(m_folder.get(), name);
    }

    TempDir m_home;
    Descriptor m_folder{open(m_home.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
};

TEST_F(RegularFileInFolder, isOpenedAndClosedOnExec) {
    writeFile(m_home / "a.dat", "bytes");
    const OpenWatch watch(m_home / "a.dat");
    const RegularFile file = openNamed("a.dat");
    ASSERT_TRUE(file.file.isOpen());
    EXPECT_TRUE(watch.wasOpened());
    EXPECT_EQ(file.problem, "");
    EXPECT_EQ(file.bytes, 5U);
    EXPECT_EQ(fcntl(file.file.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
    char bytes[8];
    EXPECT_EQ(read(file.file.get(), bytes, sizeof bytes), 5);
}

TEST_F(RegularFileInFolder, isTheOnlyThingThatIsOpened) {
    writeFile(m_home / "target", "bytes");
    fs::create_symlink("target", m_home / "link");
    fs::create_directories(m_home / "folder");
    ASSERT_EQ(mkfifo((m_home / "fifo").c_str(), 0644), 0);
    const OpenWatch target(m_home / "target");
    const OpenWatch folder(m_home / "folder");
    const OpenWatch fifo(m_home / "fifo");
    EXPECT_EQ(openNamed("link").problem, "it is a link");
    EXPECT_EQ(openNamed("folder").problem, "it is no regular file");
    EXPECT_EQ(openNamed("fifo").problem, "it is no regular file");
    for (const OpenWatch* const each : {&target, &folder, &fifo}) EXPECT_FALSE(each->wasOpened());
    EXPECT_FALSE(openNamed("fifo").file.isOpen());
}

TEST_F(RegularFileInFolder, thatCannotBeReadIsSaid) {
    EXPECT_EQ(openNamed("none").problem, "cannot read it: No such file or directory");
    inSandbox([] {
        const TempDir home;
        writeFile(home / "closed", "bytes");
        ASSERT_EQ(chmod((home / "closed").c_str(), 0), 0);
        const Descriptor folder(open(home.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        EXPECT_EQ(openRegularFile(folder.get(), "closed").problem,
                  "cannot read it: Permission denied");
    });
}

}  // namespace

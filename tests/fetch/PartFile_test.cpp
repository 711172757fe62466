// A file on its way into the directory, when others have files of the same name or take it away.
// The getrandom() and flock() of this program stand in for those of the C library and do the same,
// unless a test wants certain names, or something to happen first.
#include "fetch/PartFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/Destination.h"
#include "support/TestFiles.h"

namespace {

std::vector<unsigned long long> g_numbers;  // the last one is given first
std::function<void()> g_onLock;             // once

}  // namespace

extern "C" ssize_t getrandom(void* buffer, std::size_t size, unsigned flags) {
    if (!g_numbers.empty() && size == sizeof g_numbers.back()) {
        std::memcpy(buffer, &g_numbers.back(), size);
        g_numbers.pop_back();
        return static_cast<ssize_t>(size);
    }
    return syscall(SYS_getrandom, buffer, size, flags);
}

extern "C" int flock(int fd, int operation) noexcept {
    if (const auto onLock = std::exchange(g_onLock, nullptr)) onLock();
    return static_cast<int>(syscall(SYS_flock, fd, operation));
}

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::Allowance;
using thermika::fetch::Descriptor;
using thermika::fetch::Destination;
using thermika::fetch::PartFile;

struct PartWorld {
    TempDir folder;
    Destination directory{folder.path()};
    Allowance allowance{100, 100};

    PartWorld() { EXPECT_TRUE(directory.openExisting()); }
    std::string part(int digit) const {
        return folder / (".thermika-fetch-000000000000000" + std::to_string(digit) + ".part");
    }
};

TEST(PartFile, takesNoNameThatIsTaken) {
    PartWorld world;
    writeFile(world.part(1), "somebody's");
    fs::create_symlink(world.part(1), world.part(2));
    g_numbers = {3, 2, 1};
    PartFile part(world.directory, world.allowance);
    EXPECT_TRUE(part.append("bytes"));
    EXPECT_EQ(readFile(world.part(1)), "somebody's");
    EXPECT_EQ(readFile(world.part(3)), "bytes");
}

TEST(PartFile, givesUpWhenEveryNameIsTaken) {
    PartWorld world;
    writeFile(world.part(1), "somebody's");
    g_numbers = std::vector<unsigned long long>(1000, 1);
    PartFile part(world.directory, world.allowance);
    EXPECT_FALSE(part.create());
    EXPECT_EQ(part.problem(), "every name for an unfinished file is taken");
    g_numbers.clear();
}

TEST(PartFile, isLockedWhileItIsWritten) {
    PartWorld world;
    g_numbers = {1};
    PartFile part(world.directory, world.allowance);
    ASSERT_TRUE(part.append("bytes"));
    const Descriptor other(open(world.part(1).c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(flock(other.get(), LOCK_EX | LOCK_NB), -1);
    EXPECT_EQ(errno, EWOULDBLOCK);
}

TEST(PartFile, isMadeAnewWhenAnotherCallLocksIt) {
    PartWorld world;
    g_numbers = {2, 1};
    Descriptor other;
    g_onLock = [&] {
        other = Descriptor(open(world.part(1).c_str(), O_RDONLY | O_CLOEXEC));
        EXPECT_EQ(flock(other.get(), LOCK_EX | LOCK_NB), 0);
    };
    PartFile part(world.directory, world.allowance);
    ASSERT_TRUE(part.append("bytes"));
    EXPECT_EQ(readFile(world.part(2)), "bytes");
}

TEST(PartFile, isMadeAnewWhenItWasTakenForALeftover) {
    PartWorld world;
    g_numbers = {2, 1};
    g_onLock = [&world] { fs::remove(world.part(1)); };
    PartFile part(world.directory, world.allowance);
    ASSERT_TRUE(part.append("bytes"));
    EXPECT_EQ(readFile(world.part(2)), "bytes");
    EXPECT_TRUE(part.install("a.dat"));
    EXPECT_EQ(readFile(world.folder / "a.dat"), "bytes");
}

}  // namespace

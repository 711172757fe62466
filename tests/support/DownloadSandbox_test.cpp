// What the tests of downloads rely on: the server's name leads to this machine whatever /etc holds.
#include "support/DownloadSandbox.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>

#include <cstring>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/Sandbox.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::DownloadSandbox;
using thermika_test::inSandbox;
using thermika_test::mountEmptyFolder;

std::string addressOf(const char* host) {
    addrinfo* found = nullptr;
    const int status = getaddrinfo(host, "80", nullptr, &found);
    if (status != 0) return gai_strerror(status);
    sockaddr_in address{};
    std::memcpy(&address, found->ai_addr, sizeof address);
    freeaddrinfo(found);
    return inet_ntoa(address.sin_addr);
}

TEST(DownloadSandbox, givesTheServersNameThisMachinesAddress) {
    inSandbox([] {
        const DownloadSandbox world;
        EXPECT_EQ(addressOf(THERMIKA_DOWNLOAD_HOST), "127.0.0.1");
    });
}

// The smallest Debian has no /etc/hosts, and no file can be mounted where none is.
TEST(DownloadSandbox, doesWithoutAHostsFileToMountOver) {
    inSandbox([] {
        mountEmptyFolder("/etc");
        thermika_test::writeFile("/etc/some-file", "text");
        std::filesystem::create_symlink("some-file", "/etc/some-link");
        const DownloadSandbox world;
        EXPECT_EQ(addressOf(THERMIKA_DOWNLOAD_HOST), "127.0.0.1");
        EXPECT_EQ(thermika_test::readFile("/etc/some-file"), "text");
        EXPECT_EQ(thermika_test::readFile("/etc/some-link"), "text");
    });
}

}  // namespace

// `thermika fetch` from a server that breaks the rules, and with what it says of names and
// addresses: what the person is told, and that the directory holds whole files only. Every such
// rule on its own is the fetch library's.
#include <sys/mount.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"
#include "support/CameraSet.h"
#include "support/Companion.h"

namespace {

using namespace thermika_test;

/// A server with a new set, and an old set in the calibration directory.
struct HostileWorld {
    FetchSandbox server;
    Files expected;  ///< in the directory, when all but the first data file could be had

    explicit HostileWorld(const std::string& fault, const std::string& argument = "",
                          int times = 1000000)
        : expected(cameraFiles()) {
        for (const auto& [name, bytes] : cameraFiles()) {
            FetchSandbox::add(name, bytes);
            installFiles({{name, "old"}});
        }
        FetchSandbox::setFileFault(kFirstData, fault, argument, times);
        expected[kFirstData] = "old";
    }

    static RunResult fetch(const Texts& more = {"--retries", "0"}) {
        Texts command = {"fetch",     "14080045", "--all",      "--quiet", "--jobs",     "1",
                         "--timeout", "5",        "--max-size", "1000000", "--max-time", "60"};
        command.insert(command.end(), more.begin(), more.end());
        return runCompanion(command);
    }
};

struct Fault {
    std::string name;
    std::string argument;
    Texts reasons;  ///< one of them is given: libcurl's own words differ from version to version
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name << " " << fault.argument; }

const Fault kFaults[] = {
    {"status", "404", {"the server does not have it (404)"}},
    {"status", "500", {"the server answered 500"}},
    {"endless_page", "201", {"the server answered 201"}},
    {"cut",
     "",
     {"the transfer failed: transfer closed with 7 bytes remaining to read",
      "the transfer failed: end of response with 7 bytes missing"}},
    {"reset", "", {"the transfer failed: Recv failure: Connection reset by peer"}},
    {"stall",
     "",
     {"the transfer failed: Operation too slow. Less than 1 bytes/sec transferred the last 5 "
      "seconds"}},
    {"announces_more",
     "",
     {"the transfer failed: Operation too slow. Less than 1 bytes/sec transferred the last 5 "
      "seconds"}},
    {"announces_too_much", "", {"it is larger than 1000000 bytes"}},
    {"endless", "", {"it is larger than 1000000 bytes"}},
    {"no_length", "", {"the server does not say how long it is"}},
    {"empty", "", {"it is empty"}},
    {"gzip_bomb", "Content-Encoding", {"it is sent encoded (gzip), which was not asked for"}},
    {"endless_head", "", {"the head of the answer is too long"}},
    {"other_protocol",
     "",
     {"the transfer failed: Received HTTP/0.9 when not allowed",
      "the transfer failed: Invalid status line"}},
    {"redirect",
     "file:///etc/passwd",
     {"it is redirected to an address that is neither http nor https"}},
    {"redirect",
     "/14/1408/Califiles%20SN14080045/" + kFirstData,
     {"it is redirected more than 5 times"}},
};

class FetchHostileFault : public testing::TestWithParam<Fault> {};

TEST_P(FetchHostileFault, isNamedAndLeavesTheOldFile) {
    inSandbox([] {
        const HostileWorld world(GetParam().name, GetParam().argument);
        const RunResult result = HostileWorld::fetch();
        EXPECT_EQ(result.status, 3);
        EXPECT_EQ(result.out, "4 files fetched, 0 there already\n");
        const Texts& reasons = GetParam().reasons;
        EXPECT_TRUE(std::any_of(reasons.begin(), reasons.end(), [&result](const auto& reason) {
            const std::string beginning = "thermika: " + kFirstData + ": " + reason +
                                          "\nthermika: 1 file could not be had from ";
            return result.err.compare(0, beginning.size(), beginning) == 0;
        })) << result;
        EXPECT_EQ(contents(kCaliDir), world.expected);
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

INSTANTIATE_TEST_SUITE_P(Every, FetchHostileFault, testing::ValuesIn(kFaults),
                         [](const auto& each) {
                             return each.param.name + "_" + std::to_string(each.index);
                         });

TEST(FetchHostile, thatRecoversIsAskedAgain) {
    for (const bool isCut : {false, true})
        inSandbox([isCut] {
            const HostileWorld world(isCut ? "cut" : "status", isCut ? "" : "500", 1);
            EXPECT_EQ(HostileWorld::fetch({"--retries", "1"}),
                      (RunResult{"5 files fetched, 0 there already\n", "", 0}));
            EXPECT_EQ(contents(kCaliDir), cameraFiles());
        });
}

TEST(FetchHostile, failuresOfOneKindGetOneNextStep) {
    inSandbox([] {
        const HostileWorld world("status", "500");
        FetchSandbox::setFileFault(kFirstCurve, "status", "500");
        FetchSandbox::setFileFault(kLastData, "empty");
        const RunResult result = HostileWorld::fetch();
        EXPECT_EQ(result.status, 3);
        const std::string end =
            "(does it answer? thermika online; another source: --from URL or FOLDER)\n";
        ASSERT_GT(result.err.size(), end.size());
        EXPECT_EQ(result.err.substr(result.err.size() - end.size()), end) << result;
    });
}

TEST(FetchHostile, withoutAGoodCertificateIsNotListenedTo) {
    for (const Tls tls : {Tls::kGood, Tls::kOtherHost, Tls::kExpired})
        inSandbox([tls] {
            const FetchSandbox world(tls);
            for (const auto& [name, bytes] : cameraFiles()) FetchSandbox::add(name, bytes);
            const Texts command = {"fetch", "14080045", "--quiet", "--from",
                                   std::string("https://") + THERMIKA_DOWNLOAD_HOST};
            // A stranger's authority; then one that the system trusts.
            const RunResult strange = runCompanion(command);
            EXPECT_EQ(strange.status, 3);
            EXPECT_NE(strange.err.find("certificate"), std::string::npos) << strange;
            EXPECT_EQ(contents(kCaliDir), Files());
            ASSERT_EQ(mount(FetchSandbox::caFile().c_str(), "/etc/ssl/certs/ca-certificates.crt",
                            nullptr, MS_BIND, nullptr),
                      0);
            const RunResult trusted = runCompanion(command);
            EXPECT_EQ(trusted.status, tls == Tls::kGood ? 0 : 3) << trusted;
            EXPECT_EQ(contents(kCaliDir), tls == Tls::kGood ? cameraFiles() : Files());
        });
}

/// What the companion says of a server with this links document, and that nothing changes.
void expectRefusedLinks(const std::string& links, const std::string& reason) {
    inSandbox([links, reason] {
        const FetchSandbox world;
        for (const auto& [name, bytes] : cameraFiles()) FetchSandbox::add(name, bytes);
        FetchSandbox::setLinks(links);
        const RunResult result = runCompanion({"fetch", "14080045", "--quiet"});
        EXPECT_EQ(result.status, 3);
        EXPECT_EQ(result.out, "0 files fetched, 0 there already\n");
        EXPECT_NE(result.err.find(reason), std::string::npos) << result;
        // Line feeds apart: nothing that a terminal acts on.
        EXPECT_TRUE(std::none_of(result.err.begin(), result.err.end(), [](unsigned char byte) {
            return (byte < ' ' && byte != '\n') || byte >= 0x7F;
        })) << result;
        EXPECT_EQ(contents(kCaliDir), Files());
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(FetchHostile, linksWithoutAnAddressAreNone) {
    expectRefusedLinks("", "it is empty");
    expectRefusedLinks(linksDocument(""), "it names no address (is it a links document?)");
    expectRefusedLinks(std::string(70000, ' '), "it is larger than 65536 bytes");
}

TEST(FetchHostile, addressOfItsLinksIsNeverRun) {
    for (const char* const address :
         {"http://$(touch /tmp/trap)/", "http://`touch /tmp/trap`/", "'; touch /tmp/trap; '",
          "\"; touch /tmp/trap; \"", "back\\slash", "http://two words.example/",
          "line\nhttp://x.example/", "../../etc", "file:///etc", "http://x\033[31m.example/"})
        expectRefusedLinks(linksDocument("<string>" + std::string(address) + "</string>\n"),
                           "\" cannot be used: ");
}

/// Fetches the set of a description whose optics has this text, from a server that has the files
/// under their names, percent-encoded.
RunResult fetchWithOptics(const std::string& text, Files& expected) {
    const FetchSandbox world;
    expected = {{kDescriptionName, cameraDescription(text)}};
    for (const char* const rate : {"27", "80"}) {
        const std::string end = "-14080045-33-" + text + "-M20-100-" + rate;
        expected["Cali" + end + ".dat"] = "data";
        expected["Kennlinie" + end + ".prn"] = "curve";
    }
    const bool isPath = text.find('/') != std::string::npos;
    for (const auto& [name, bytes] : expected)
        if (!isPath || name == kDescriptionName) FetchSandbox::add(name, bytes);
    const RunResult result = runCompanion({"fetch", "14080045", "--quiet"});
    EXPECT_EQ(contents("/tmp"), Files());
    return result;
}

TEST(FetchHostile, namesOfItsDescriptionAreNeverRun) {
    for (const char* const text :
         {"$(touch $HOME)", "`touch trap`", "it's", "say \"so\"", "back\\slash", "two words",
          "a;b|c&d", "100%.2e", "*?[a]", "-rf"})
        inSandbox([text] {
            Files expected;
            EXPECT_EQ(fetchWithOptics(text, expected),
                      (RunResult{"5 files fetched, 0 there already\n", "", 0}));
            EXPECT_EQ(contents(kCaliDir), expected);
        });
}

TEST(FetchHostile, namesOfItsDescriptionThatAreNoneAreRefusedOneByOne) {
    for (const char* const text : {"/../../../tmp/trap", "/etc/passwd", "a\033[31mb"})
        inSandbox([text] {
            Files expected;
            const RunResult result = fetchWithOptics(text, expected);
            EXPECT_EQ(result.status, 3);
            EXPECT_EQ(result.out, "1 file fetched, 0 there already\n");
            for (const char* const name : {"27.dat", "27.prn", "80.dat", "80.prn"})
                EXPECT_NE(result.err.find(std::string(name) + ": the file name contains "),
                          std::string::npos)
                    << result;
            EXPECT_EQ(result.err.find('\033'), std::string::npos) << result;
            EXPECT_EQ(contents(kCaliDir),
                      (Files{{kDescriptionName, expected.at(kDescriptionName)}}));
        });
}

}  // namespace

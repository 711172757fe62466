// Connections that cannot be opened, a libcurl that cannot be used, and memory that runs out beside
// a transfer. Links other system calls in, so it belongs to a program of its own. What initialises
// libcurl runs in a process of its own, since that happens once.
#include <arpa/inet.h>
#include <netinet/in.h>

#include <cerrno>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/SpareSockets.h"
#include "fetch/support/FailingCalls.h"
#include "fetch/support/FetchSandbox.h"
#include "support/FailingNew.h"

namespace {

using namespace thermika_test;
using thermika::fetch::Mirror;
using thermika::fetch::Request;
using thermika::fetch::SpareSockets;

constexpr const char* kNoLibrary = "libcurl cannot be initialised";

TEST(FailingNetwork, opensNoConnectionsAheadWithoutDescriptors) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(9);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    SpareSockets spares;
    spares.want(2);
    failNext(SystemCall::kSocket, EMFILE);
    beforeNext(SystemCall::kConnect, [] { ADD_FAILURE() << "connected"; });
    spares.connect("127.0.0.1", 9);
    forgetPlans();
    EXPECT_EQ(spares.take(reinterpret_cast<sockaddr&>(address)), -1);
}

TEST(FailingNetwork, withoutASocketIsTriedAgain) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        Request request = requestFor({"a.dat"}, Mirror{serverAddress("")}, kFetched);
        failNext(SystemCall::kSocket, EMFILE);
        const auto report = thermika::fetch::fetch(request);
        EXPECT_EQ(linesOf(report), "a.dat: fetched\n");
        EXPECT_EQ(report.files.at(0).tries, 2U);
    });
}

TEST(FailingNetwork, withoutMemoryForConnectionsAheadFetchesAllTheSame) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        FetchSandbox::add("b.dat", "bytes");
        Request request = serverRequest({"a.dat"});
        request.following = [] { return std::vector<std::string>{"b.dat"}; };
        std::optional<FailingNew> noMemory;
        beforeNext(SystemCall::kConnect, [&] { noMemory.emplace(Failure::kThrowsBadAlloc); });
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), "a.dat: fetched\nb.dat: fetched\n");
        ASSERT_TRUE(noMemory);
        EXPECT_TRUE(noMemory->hasFailed());
    });
}

TEST(FailingNetwork, withoutItsLibraryIsTheProblemOfServersAlone) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        failNext(SystemCall::kGlobalInit);
        Request request = serverRequest({"a.dat"});
        const std::string lines =
            std::string("problem: ") + kNoLibrary + "\na.dat: not tried, " + kNoLibrary + "\n";
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), lines);
        EXPECT_EQ(thermika::fetch::probe(request).reason, kNoLibrary);
        request.source = Mirror{serverAddress("")};
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), lines);
        EXPECT_FALSE(thermika::fetch::probe(request).answers);
        EXPECT_EQ(FetchSandbox::requests(), Texts());
        request.source = thermika::fetch::Folder{"/usr/share/world/hostile"};
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), "a.dat: fetched\n");
    });
}

}  // namespace

// Certificates: only a server that proves its name is listened to.
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"
#include "support/SilentServer.h"

namespace {

using namespace thermika_test;
using thermika::fetch::Mirror;
using thermika::fetch::Report;
using thermika::fetch::Request;

std::string secureAddress() { return std::string("https://") + THERMIKA_DOWNLOAD_HOST; }

Request secureRequest(const std::vector<std::string>& names) {
    Request request = requestFor(names, Mirror{secureAddress()}, kFetched);
    request.caFile = FetchSandbox::caFile();
    return request;
}

void expectNothing(const Request& request, const std::string& reason) {
    const Report report = thermika::fetch::fetch(request);
    EXPECT_NE(report.files.at(0).reason.find(reason), std::string::npos) << linesOf(report);
    EXPECT_EQ(report.files[0].tries, 1U);
    EXPECT_EQ(contents(kFetched), Files());
    EXPECT_EQ(FetchSandbox::requests(), Texts());
}

TEST(Tls, serverWithAGoodCertificateIsListenedTo) {
    inSandbox([] {
        const FetchSandbox world(Tls::kGood);
        FetchSandbox::add("a.dat", "bytes");
        EXPECT_EQ(linesOf(thermika::fetch::fetch(secureRequest({"a.dat"}))), "a.dat: fetched\n");
        EXPECT_EQ(contents(kFetched), (Files{{"a.dat", "bytes"}}));
    });
}

TEST(Tls, authorityThatIsNotTrustedIsNoGoodAndAskedOnce) {
    inSandbox([] {
        const FetchSandbox world(Tls::kGood);
        Request request = secureRequest({"a.dat"});
        request.caFile.clear();
        expectNothing(request, "SSL certificate problem: unable to get local issuer certificate");
    });
}

TEST(Tls, authorityThatOnlyTheEnvironmentNamesIsNotTrusted) {
    for (const char* const variable : {"CURL_CA_BUNDLE", "SSL_CERT_FILE"})
        inSandbox([variable] {
            const FetchSandbox world(Tls::kGood);
            setenv(variable, FetchSandbox::caFile().c_str(), 1);
            Request request = secureRequest({"a.dat"});
            request.caFile.clear();
            expectNothing(request,
                          "SSL certificate problem: unable to get local issuer certificate");
        });
}

TEST(Tls, otherHostsCertificateIsNoGood) {
    inSandbox([] {
        const FetchSandbox world(Tls::kOtherHost);
        expectNothing(secureRequest({"a.dat"}),
                      "alternative certificate subject name matches target host");
    });
}

TEST(Tls, expiredCertificateIsNoGood) {
    inSandbox([] {
        const FetchSandbox world(Tls::kExpired);
        expectNothing(secureRequest({"a.dat"}), "certificate has expired");
    });
}

TEST(Tls, missingAuthorityFileIsSaid) {
    inSandbox([] {
        const FetchSandbox world(Tls::kGood);
        Request request = secureRequest({"a.dat"});
        request.caFile = "/none.pem";
        expectNothing(request, "/none.pem");
    });
}

TEST(Tls, distrustOfOneFileIsThatOfAll) {
    inSandbox([] {
        const FetchSandbox world(Tls::kOtherHost);
        std::vector<std::string> names;
        for (int i = 0; i < 500; ++i) names.push_back(std::to_string(i) + ".dat");
        const Report report = thermika::fetch::fetch(secureRequest(names));
        unsigned tries = 0;
        for (const auto& file : report.files) {
            EXPECT_EQ(wordFor(file.outcome), "failed");
            EXPECT_NE(file.reason, "");
            tries += file.tries;
        }
        EXPECT_LE(tries, 8U);
    });
}

// All other files were given up with it.
TEST(Tls, distrustBehindARedirectConcernsThatFileAlone) {
    inSandbox([] {
        const FetchSandbox world(Tls::kOtherHost);
        FetchSandbox::add("good.dat", "good");
        FetchSandbox::setFileFault("bad.dat", "redirect", secureAddress() + "/x");
        Request request = serverRequest({"bad.dat", "good.dat"});
        request.caFile = FetchSandbox::caFile();
        request.limits.jobs = 1;
        const Report report = thermika::fetch::fetch(request);
        EXPECT_NE(report.files.at(0).reason.find("alternative certificate subject name"),
                  std::string::npos)
            << linesOf(report);
        EXPECT_EQ(report.files[0].tries, 1U);
        EXPECT_EQ(wordFor(report.files.at(1).outcome), "fetched");
        EXPECT_EQ(contents(kFetched), (Files{{"good.dat", "good"}}));
    });
}

// Asking for each of a thousand files would take as many time limits.
TEST(Tls, serverThatTakesConnectionsAndSecuresNoneIsAskedForOneFile) {
    inSandbox([] {
        const DownloadSandbox world;
        const SilentServer server(443);
        Request request = secureRequest({"a.dat", "b.dat", "c.dat"});
        request.caFile.clear();
        request.limits.idle = std::chrono::seconds(1);
        request.limits.retries = 0;
        request.limits.jobs = 1;
        const Report report = thermika::fetch::fetch(request);
        EXPECT_EQ(report.files.at(0).tries, 1U);
        EXPECT_EQ(report.files.at(1).tries, 0U);
        EXPECT_EQ(report.files.at(2).tries, 0U);
        EXPECT_EQ(report.files[2].reason, report.files[0].reason);
    });
}

TEST(Tls, plainServerBehindASecureAddressIsNone) {
    inSandbox([] {
        const FetchSandbox world;
        Request request = requestFor({"a.dat"}, Mirror{secureAddress() + ":80"}, kFetched);
        request.limits.retries = 0;
        const auto file = thermika::fetch::fetch(request).files.at(0);
        EXPECT_EQ(wordFor(file.outcome), "failed");
        // It answered, and what it said was no handshake.
        EXPECT_NE(file.reason.find("SSL routines"), std::string::npos) << file.reason;
        EXPECT_EQ(contents(kFetched), Files());
    });
}

TEST(Tls, redirectsLeadToSecureServersToo) {
    inSandbox([] {
        const FetchSandbox world(Tls::kGood);
        FetchSandbox::add("a.dat", "bytes");
        FetchSandbox::setFileFault("a.dat", "redirect",
                                   secureAddress() + "/14/1408/Califiles%20SN14080045/a.dat", 1);
        Request request = serverRequest({"a.dat"});
        request.caFile = FetchSandbox::caFile();
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), "a.dat: fetched\n");
        EXPECT_EQ(contents(kFetched), (Files{{"a.dat", "bytes"}}));
    });
}

TEST(Tls, connectionsOpenedAheadAreSecuredToo) {
    inSandbox([] {
        const FetchSandbox world(Tls::kGood);
        FetchSandbox::add("first.dat", "first");
        FetchSandbox::setFileFault("first.dat", "await_connections", "2");
        std::vector<std::string> more;
        for (int i = 0; i < 8; ++i) {
            more.push_back(std::to_string(i) + ".dat");
            FetchSandbox::add(more.back(), "bytes");
        }
        Request request = secureRequest({"first.dat"});
        request.limits.jobs = 2;
        request.following = [more] { return more; };
        EXPECT_EQ(thermika::fetch::fetch(request).files.size(), 9U);
        EXPECT_EQ(contents(kFetched).size(), 9U);
        request = secureRequest({"last.dat"});
        FetchSandbox::add("last.dat", "last");
        EXPECT_TRUE(thermika::fetch::fetch(request).isComplete());
        EXPECT_EQ(FetchSandbox::lastConnection(), 3U);
    });
}

}  // namespace

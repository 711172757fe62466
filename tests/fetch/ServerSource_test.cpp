// Fetching from a server that behaves: the layout, connections, progress, and both kinds of server.
#include "fetch/ServerSource.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::Mirror;
using thermika::fetch::Outcome;
using thermika::fetch::ProbeReport;
using thermika::fetch::Progress;
using thermika::fetch::Report;
using thermika::fetch::Request;

TEST(ServerSource, fetchesFromWhereTheLinksDocumentSays) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes of a");
        FetchSandbox::add("b.dat", "bytes of b");
        const Report report = thermika::fetch::fetch(serverRequest({"a.dat", "b.dat"}));
        EXPECT_EQ(linesOf(report), "a.dat: fetched\nb.dat: fetched\n");
        EXPECT_EQ(contents(kFetched), (Files{{"a.dat", "bytes of a"}, {"b.dat", "bytes of b"}}));
        EXPECT_EQ(report.files[0].source, serverAddress(kEncodedFolder + "a.dat"));
        EXPECT_EQ(report.files[0].httpStatus, 200);
        EXPECT_EQ(report.files[0].bytes, 10U);
        EXPECT_EQ(report.files[0].tries, 1U);
        std::vector<std::string> requests = FetchSandbox::requests();
        std::sort(requests.begin() + 1, requests.end());
        EXPECT_EQ(requests,
                  (Texts{kLinksPath, kEncodedFolder + "a.dat", kEncodedFolder + "b.dat"}));
    });
}

TEST(ServerSource, asksAMirrorForTheFilesAlone) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        for (const char* const end : {"", "/"}) {
            Request request = requestFor({"a.dat"}, Mirror{serverAddress(end)}, kFetched);
            request.replacePresent = true;
            EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), "a.dat: fetched\n");
        }
        EXPECT_EQ(FetchSandbox::requests(),
                  (Texts{kEncodedFolder + "a.dat", kEncodedFolder + "a.dat"}));
    });
}

TEST(ServerSource, asksNoMirrorWhoseAddressIsNone) {
    Request request = requestFor({"a.dat"}, Mirror{"ftp://a.example/"}, kFetched);
    const TempDir home;
    request.directory = home / "cali";
    const std::string problem =
        "the address \"ftp://a.example/\" cannot be used: it is neither http nor https";
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
              "problem: " + problem + "\na.dat: not tried, " + problem + "\n");
}

TEST(ServerSource, asksForNothingThatIsThere) {
    inSandbox([] {
        const FetchSandbox world;
        fs::create_directories(kFetched);
        writeFile(std::string(kFetched) + "/a.dat", "old");
        EXPECT_EQ(fetchLines({"a.dat"}), "a.dat: present\n");
        EXPECT_EQ(FetchSandbox::requests(), Texts());
    });
}

TEST(ServerSource, encodesEveryPieceOfAName) {
    inSandbox([] {
        const FetchSandbox world;
        const std::vector<std::string> names = {
            "$(id >x)",    "`id`.dat", "a b.dat",       "it's \"quoted\".dat", "back\\slash.dat",
            "a;b|c&d.dat", "100%.dat", "who?here#.dat", "%2e%2e%2f.dat",       "\xc3\xa4.dat"};
        Files expected;
        std::string lines;
        for (const std::string& name : names) {
            FetchSandbox::add(name, "bytes of " + name);
            expected[name] = "bytes of " + name;
            lines += name + ": fetched\n";
        }
        EXPECT_EQ(fetchLines(names), lines);
        EXPECT_EQ(contents(kFetched), expected);
        EXPECT_EQ(contents("/tmp"), Files());
    });
}

TEST(ServerSource, refusesNamesThatAreNoneAndFetchesTheOthers) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("good.dat", "bytes");
        EXPECT_EQ(fetchLines({"../evil.dat", "line\nbreak", "good.dat", ".."}),
                  "../evil.dat: refused, the file name contains \"/\"\n"
                  "line\nbreak: refused, the file name contains a control byte\n"
                  "good.dat: fetched\n..: refused, the file name means a directory\n");
        EXPECT_EQ(contents(kFetched), (Files{{"good.dat", "bytes"}}));
    });
}

TEST(ServerSource, usesAConnectionAgainForEachOfItsJobs) {
    inSandbox([] {
        const FetchSandbox world;
        std::vector<std::string> names;
        for (int i = 0; i < 100; ++i) {
            names.push_back(std::to_string(i) + ".dat");
            if (i % 2 == 0) FetchSandbox::add(names.back(), "bytes");
        }
        Request request = serverRequest(names);
        request.limits.jobs = 3;
        const Report report = thermika::fetch::fetch(request);
        EXPECT_EQ(std::count_if(report.files.begin(), report.files.end(),
                                [](const auto& file) { return file.outcome == Outcome::kFetched; }),
                  50);
        EXPECT_EQ(FetchSandbox::requests().size(), 101U);
        EXPECT_LE(FetchSandbox::connections(), 3U);
    });
}

TEST(ServerSource, planAsksForTheLinksDocumentOnlyAndTouchesNothing) {
    inSandbox([] {
        const FetchSandbox world;
        const Report plan = thermika::fetch::plan(serverRequest({"a.dat", "../b"}));
        EXPECT_EQ(linesOf(plan), "a.dat: planned\n../b: refused, the file name contains \"/\"\n");
        EXPECT_EQ(plan.files[0].source, serverAddress(kEncodedFolder + "a.dat"));
        EXPECT_EQ(plan.files[0].destination, std::string(kFetched) + "/a.dat");
        EXPECT_EQ(FetchSandbox::requests(), Texts{kLinksPath});
        EXPECT_FALSE(fs::exists(kFetched));
    });
}

TEST(ServerSource, tellsOfEveryFileAndOfTheBytes) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", std::string(1000, 'x'));
        FetchSandbox::add("b.dat", std::string(500, 'x'));
        Texts ended;
        Progress last;
        Request request = serverRequest({"a.dat", "b.dat", "c.dat"});
        request.progress = [&](const Progress& progress) {
            if (progress.ended != nullptr)
                ended.push_back(progress.ended->name + " " + wordFor(progress.ended->outcome));
            last = progress;
        };
        thermika::fetch::fetch(request);
        std::sort(ended.begin(), ended.end());
        EXPECT_EQ(ended, (Texts{"a.dat fetched", "b.dat fetched", "c.dat missing"}));
        EXPECT_EQ(last.files, 3U);
        EXPECT_EQ(last.filesDone, 3U);
        EXPECT_EQ(last.bytes, 1500U);
        EXPECT_EQ(last.bytesAnnounced, 1500U);
    });
}

TEST(ServerSource, whatProgressThrowsEndsTheTransfersAndLeavesWholeFilesOnly) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        FetchSandbox::add("b.dat", "bytes");
        FetchSandbox::setFileFault("b.dat", "stall");
        Request request = serverRequest({"a.dat", "b.dat"});
        request.progress = [](const Progress& progress) {
            if (progress.ended != nullptr) throw std::string("mine");
        };
        const std::size_t before = openDescriptors();
        EXPECT_THROW(thermika::fetch::fetch(request), std::string);
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_EQ(contents(kFetched), (Files{{"a.dat", "bytes"}}));
    });
}

TEST(ServerSource, probeTellsTheBaseAddressAndHowFastTheServerIs) {
    inSandbox([] {
        const FetchSandbox world;
        const ProbeReport report = thermika::fetch::probe(serverRequest({}));
        EXPECT_TRUE(report.answers);
        EXPECT_EQ(report.reason, "");
        EXPECT_EQ(report.address, serverAddress(kLinksPath));
        EXPECT_EQ(report.base, serverAddress("/"));
        EXPECT_EQ(report.httpStatus, 200);
        EXPECT_GT(report.connected.count(), 0);
        EXPECT_GT(report.answered, report.connected);
    });
}

TEST(ServerSource, probeTellsOfAServerThatAnswersButHasNoLinks) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::setFault(kLinksPath, "status", "503");
        const ProbeReport report = thermika::fetch::probe(serverRequest({}));
        EXPECT_TRUE(report.answers);
        EXPECT_EQ(report.httpStatus, 503);
        EXPECT_EQ(report.reason,
                  "cannot get " + serverAddress(kLinksPath) + ": the server answered 503");
        EXPECT_EQ(FetchSandbox::requests(), Texts{kLinksPath});
    });
}

TEST(ServerSource, probeTakesAnyAnswerOfAMirror) {
    inSandbox([] {
        const FetchSandbox world;
        const ProbeReport report =
            thermika::fetch::probe(requestFor({}, Mirror{serverAddress("/none")}, ""));
        EXPECT_TRUE(report.answers);
        EXPECT_EQ(report.httpStatus, 404);
        EXPECT_EQ(report.reason, "");
    });
}

TEST(ServerSource, probeTellsOfAServerThatDoesNotAnswer) {
    inSandbox([] {
        const DownloadSandbox world;
        const ProbeReport report = thermika::fetch::probe(serverRequest({}));
        EXPECT_FALSE(report.answers);
        EXPECT_EQ(report.httpStatus, 0);
        EXPECT_NE(report.reason.find("connect to server"), std::string::npos) << report.reason;
        const ProbeReport mirror =
            thermika::fetch::probe(requestFor({}, Mirror{serverAddress("")}, ""));
        EXPECT_FALSE(mirror.answers);
        EXPECT_NE(mirror.reason.find("connect to server"), std::string::npos) << mirror.reason;
    });
}

TEST(ServerSource, probeThatIsCancelledSaysSo) {
    inSandbox([] {
        const FetchSandbox world;
        const std::atomic<bool> cancel{true};
        Request request = serverRequest({});
        request.cancel = &cancel;
        const ProbeReport report = thermika::fetch::probe(request);
        EXPECT_FALSE(report.answers);
        EXPECT_EQ(report.reason, "cancelled");
        EXPECT_EQ(FetchSandbox::requests(), Texts());
    });
}

}  // namespace

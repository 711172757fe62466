// Names that follow: what the first files call for, fetched in the same call.
#include "fetch/Call.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"

namespace {

namespace fs = std::filesystem;
using namespace thermika_test;
using thermika::fetch::Folder;
using thermika::fetch::Progress;
using thermika::fetch::Request;

constexpr const char* kRefusal = "refused, the file name contains \"/\"\n";

Request followed(const std::vector<std::string>& names, const std::vector<std::string>& more) {
    Request request = serverRequest(names);
    request.limits.jobs = 1;
    request.following = [more] { return more; };
    return request;
}

void put(const std::string& name, const std::string& bytes) {
    fs::create_directories(kFetched);
    writeFile(std::string(kFetched) + "/" + name, bytes);
}

TEST(Call, fetchesWhatFollowsOverTheSameConnection) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("first.dat", "first");
        FetchSandbox::add("second.dat", "second");
        Request request = followed({"first.dat"}, {"second.dat", "first.dat", "../third"});
        std::string told;
        std::size_t files = 0;
        request.progress = [&](const Progress& progress) {
            if (progress.ended != nullptr) told += progress.ended->name + " ";
            files = progress.files;
        };
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
                  std::string("first.dat: fetched\nsecond.dat: fetched\n../third: ") + kRefusal);
        EXPECT_EQ(contents(kFetched), (Files{{"first.dat", "first"}, {"second.dat", "second"}}));
        EXPECT_EQ(FetchSandbox::requests(),
                  (Texts{kLinksPath, kEncodedFolder + "first.dat", kEncodedFolder + "second.dat"}));
        EXPECT_EQ(FetchSandbox::connections(), 1U);
        EXPECT_EQ(told, "first.dat ../third second.dat ");
        EXPECT_EQ(files, 3U);
    });
}

TEST(Call, opensTheOtherConnectionsForWhatFollowsMeanwhile) {
    inSandbox([] {
        const FetchSandbox world;
        std::vector<std::string> more;
        for (int i = 0; i < 20; ++i) {
            more.push_back(std::to_string(i) + ".dat");
            FetchSandbox::add(more.back(), "bytes");
        }
        FetchSandbox::add("first.dat", "first");
        FetchSandbox::setFileFault("first.dat", "await_connections", "4");
        for (int i = 0; i < 4; ++i)
            FetchSandbox::setFileFault(std::to_string(i) + ".dat", "together", "4");
        Request request = followed({"first.dat"}, more);
        request.limits.jobs = 4;
        EXPECT_TRUE(thermika::fetch::fetch(request).isComplete());
        EXPECT_EQ(contents(kFetched).size(), 21U);
        // Nothing is asked for over them before, and they serve afterwards: no others are opened.
        EXPECT_EQ(FetchSandbox::requests().size(), 22U);
        EXPECT_EQ(FetchSandbox::connections(), 4U);
        FetchSandbox::add("last.dat", "last");
        EXPECT_TRUE(thermika::fetch::fetch(serverRequest({"last.dat"})).isComplete());
        EXPECT_EQ(FetchSandbox::lastConnection(), 5U);
    });
}

TEST(Call, opensNoConnectionAheadWhenNothingFollows) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("first.dat", "first");
        FetchSandbox::add("second.dat", "second");
        FetchSandbox::add("third.dat", "third");
        EXPECT_TRUE(thermika::fetch::fetch(serverRequest({"first.dat"})).isComplete());
        Request request = followed({"first.dat"}, {"second.dat"});
        request.limits.jobs = 4;
        EXPECT_TRUE(thermika::fetch::fetch(request).isComplete());  // the first is there
        EXPECT_TRUE(thermika::fetch::fetch(serverRequest({"third.dat"})).isComplete());
        EXPECT_EQ(FetchSandbox::lastConnection(), 3U);
    });
}

TEST(Call, seesTheFirstFilesWhenItAsksForWhatFollows) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("first.dat", "second.dat");
        FetchSandbox::add("second.dat", "bytes");
        for (const bool fromFolder : {false, true}) {
            fs::remove_all(kFetched);
            Request request = followed({"first.dat"}, {});
            if (fromFolder) request.source = Folder{"/usr/share/world/hostile"};
            request.following = [] {
                return std::vector<std::string>{readFile(std::string(kFetched) + "/first.dat")};
            };
            EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
                      "first.dat: fetched\nsecond.dat: fetched\n");
        }
    });
}

TEST(Call, asksForWhatFollowsAlsoWhenTheFirstFilesAreThereOrNone) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("second.dat", "bytes");
        put("first.dat", "old");
        EXPECT_EQ(linesOf(thermika::fetch::fetch(followed({"first.dat"}, {"second.dat"}))),
                  "first.dat: present\nsecond.dat: fetched\n");
        EXPECT_EQ(linesOf(thermika::fetch::fetch(followed({}, {"second.dat"}))),
                  "second.dat: present\n");
        fs::remove_all(kFetched);
        EXPECT_EQ(linesOf(thermika::fetch::fetch(followed({}, {"second.dat"}))),
                  "second.dat: fetched\n");
    });
}

TEST(Call, doesNotAskForWhatFollowsWhileAFirstFileIsMissing) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("second.dat", "bytes");
        for (const char* const name : {"first.dat", "../first.dat"}) {
            Request request = followed({name, "second.dat"}, {});
            request.following = [] {
                ADD_FAILURE() << "asked";
                return std::vector<std::string>{"third.dat"};
            };
            EXPECT_EQ(thermika::fetch::fetch(request).files.size(), 2U);
        }
    });
}

// The report said that all is well: every file that was asked for by then is there.
TEST(Call, isNotCompleteWhenItEndsBeforeItAsksForWhatFollows) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("first.dat", "bytes");
        std::atomic<bool> cancel{false};
        Request request = followed({"first.dat"}, {"second.dat"});
        request.cancel = &cancel;
        request.progress = [&](const Progress& progress) { cancel = progress.filesDone == 1; };
        const auto report = thermika::fetch::fetch(request);
        EXPECT_EQ(linesOf(report), "problem: cancelled\nfirst.dat: fetched\n");
        EXPECT_FALSE(report.isComplete());
    });
}

// Writing the directory to the disk made the problem forgotten.
TEST(Call, keepsTheProblemThatComesAfterTheFirstFiles) {
    const TempDir home;
    fs::create_directories(home / "medium");
    writeFile(home / "medium/first.dat", "bytes");
    Request request = requestFor({"first.dat"}, Folder{home / "medium"}, home / "cali");
    request.following = [&] {
        fs::rename(home / "medium", home / "gone");
        return std::vector<std::string>{"second.dat"};
    };
    const std::string problem =
        "cannot read the folder " + (home / "medium") + ": No such file or directory";
    EXPECT_EQ(
        linesOf(thermika::fetch::fetch(request)),
        "problem: " + problem + "\nfirst.dat: fetched\nsecond.dat: not tried, " + problem + "\n");
}

TEST(Call, replacesWhatFollowsWhenAsked) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("first.dat", "new");
        FetchSandbox::add("second.dat", "new");
        const auto fetch = [](bool replaceFirst, bool replaceFollowing) {
            put("first.dat", "old");
            put("second.dat", "old");
            Request request = followed({"first.dat"}, {"second.dat"});
            request.replacePresent = replaceFirst;
            request.replaceFollowing = replaceFollowing;
            EXPECT_TRUE(thermika::fetch::fetch(request).isComplete());
            return contents(kFetched);
        };
        EXPECT_EQ(fetch(true, false), (Files{{"first.dat", "new"}, {"second.dat", "old"}}));
        EXPECT_EQ(fetch(false, true), (Files{{"first.dat", "old"}, {"second.dat", "new"}}));
    });
}

TEST(Call, countsFirstFilesAndThoseThatFollowTogether) {
    inSandbox([] {
        const FetchSandbox world;
        for (const char* const name : {"a.dat", "b.dat", "c.dat"}) FetchSandbox::add(name, "12345");
        Request request = followed({"a.dat"}, {"b.dat", "c.dat"});
        request.limits.files = 2;
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
                  "a.dat: fetched\nb.dat: fetched\n"
                  "c.dat: refused, more than 2 files are asked for\n");
        fs::remove_all(kFetched);
        request.limits.files = 3;
        request.limits.totalBytes = 12;
        EXPECT_EQ(linesOf(thermika::fetch::fetch(request)),
                  "a.dat: fetched\nb.dat: fetched\nc.dat: failed, "
                  "with it, all files together would have more bytes than allowed\n");
    });
}

// Each of them was kept with a reason of its own.
TEST(Call, namesBeyondTheLimitOfFilesGetOneEntryThatCountsThem) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        std::vector<std::string> names = {"a.dat", "../b.dat", "a.dat"};
        for (int i = 0; i < 1000; ++i) names.push_back(std::to_string(i));
        names.emplace_back("a.dat");
        Request request = serverRequest(names);
        request.limits.files = 2;
        std::size_t files = 0;
        std::size_t done = 0;
        request.progress = [&](const Progress& progress) {
            files = progress.files;
            done = progress.filesDone;
        };
        const std::string lines = std::string("../b.dat: ") + kRefusal +
                                  "0: refused, more than 2 files are asked for, so this one and "
                                  "999 other names are left out\n";
        const auto report = thermika::fetch::fetch(request);
        EXPECT_EQ(linesOf(report), "a.dat: fetched\n" + lines);
        EXPECT_FALSE(report.isComplete());
        EXPECT_EQ(files, 3U);
        EXPECT_EQ(done, 3U);
        EXPECT_EQ(contents(kFetched), (Files{{"a.dat", "bytes"}}));
        request.replacePresent = true;
        EXPECT_EQ(linesOf(thermika::fetch::plan(request)), "a.dat: planned\n" + lines);
    });
}

TEST(Call, createsNothingWhenItIsCancelledBefore) {
    const TempDir home;
    const std::atomic<bool> cancel{true};
    Request request = requestFor({"a.dat"}, Folder{home.path()}, home / "cali");
    request.cancel = &cancel;
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), "a.dat: not tried, cancelled\n");
    EXPECT_FALSE(fs::exists(home / "cali"));
}

TEST(Call, hasNoTimeLimitWhereItIsZero) {
    const TempDir home;
    writeFile(home / "a.dat", "bytes");
    Request request = requestFor({"a.dat"}, Folder{home.path()}, home / "cali");
    request.limits.total = std::chrono::seconds(0);
    EXPECT_EQ(linesOf(thermika::fetch::fetch(request)), "a.dat: fetched\n");
}

TEST(Call, countsTheOtherNamesBeyondTheLimitInWords) {
    Request request = requestFor({"a", "b", "c"}, Folder{"/"}, "/cali");
    request.limits.files = 1;
    EXPECT_EQ(thermika::fetch::plan(request).files.at(1).reason,
              "more than 1 file is asked for, so this one and 1 other name is left out");
}

TEST(Call, planCallsNobodyBack) {
    inSandbox([] {
        const FetchSandbox world;
        Request request = followed({"first.dat"}, {});
        request.following = [] {
            ADD_FAILURE() << "asked";
            return std::vector<std::string>();
        };
        request.progress = [](const Progress&) { ADD_FAILURE() << "told"; };
        const auto plan = thermika::fetch::plan(request);
        EXPECT_EQ(linesOf(plan), "first.dat: planned\n");
        EXPECT_TRUE(plan.isComplete());
    });
}

TEST(Call, whatTheQuestionForMoreThrowsComesOutAndTheFirstFilesStay) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("first.dat", "bytes");
        Request request = followed({"first.dat"}, {});
        request.following = []() -> std::vector<std::string> { throw std::string("mine"); };
        EXPECT_THROW(thermika::fetch::fetch(request), std::string);
        EXPECT_EQ(contents(kFetched), (Files{{"first.dat", "bytes"}}));
    });
}

TEST(Call, limitsHaveLimitsOfTheirOwn) {
    thermika::fetch::Limits limits;
    limits.jobs = 1000;
    limits.retries = 1000;
    EXPECT_EQ(thermika::fetch::bounded(limits).jobs, 64U);
    EXPECT_EQ(thermika::fetch::bounded(limits).retries, 100U);
    limits.jobs = 0;
    EXPECT_EQ(thermika::fetch::bounded(limits).jobs, 1U);
}

}  // namespace

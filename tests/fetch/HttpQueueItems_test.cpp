// The order in which items get their answers, where some wait, some cannot be had and some come to
// nothing: a client of the queue's own, and addresses that fail each in its way.
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "fetch/HttpQueue.h"
#include "fetch/support/FetchSandbox.h"
#include "support/SilentServer.h"

namespace {

using namespace thermika_test;
using thermika::fetch::Answer;
using thermika::fetch::Body;
using thermika::fetch::HttpClient;
using thermika::fetch::HttpItem;
using thermika::fetch::HttpQueue;
using thermika::fetch::Limits;
using thermika::fetch::Stop;
using Verdict = thermika::fetch::Answer::Verdict;

constexpr const char* kNobody = "http://127.0.0.1:9/";

class CallingBody : public Body {
public:
    CallingBody(std::function<void()> onBytes, std::function<void()> onDiscard)
        : m_onBytes(std::move(onBytes)), m_onDiscard(std::move(onDiscard)) {}
    void discard() override {
        if (m_onDiscard) m_onDiscard();
    }
    void announce(std::uint64_t /*bytes*/) override {}
    bool append(std::string_view /*bytes*/) override {
        if (m_onBytes) m_onBytes();
        return true;
    }
    std::string problem() const override { return ""; }

private:
    std::function<void()> m_onBytes;
    std::function<void()> m_onDiscard;
};

/// Asks for some addresses and keeps the verdicts, "none" where there was no answer.
class Client : public HttpClient {
public:
    explicit Client(std::vector<std::string> addresses)
        : verdicts(addresses.size()), m_addresses(std::move(addresses)) {}

    std::optional<HttpItem> next() override {
        if (begun == m_addresses.size()) return std::nullopt;
        return HttpItem{m_addresses[begun++], 1000,
                        std::make_unique<CallingBody>(onBytes, [this] { ++discarded; })};
    }
    void end(std::size_t number, HttpItem& /*item*/, const Answer& answer,
             unsigned /*tries*/) override {
        verdicts[number] = answer.verdict;
        if (onEnd) onEnd();
    }
    void tick() override {
        if (onTick) onTick();
    }

    std::vector<std::optional<Verdict>> verdicts;
    std::size_t begun = 0;
    int discarded = 0;  // to be tried again
    std::function<void()> onBytes;
    std::function<void()> onEnd;
    std::function<void()> onTick;

private:
    std::vector<std::string> m_addresses;
};

using Verdicts = std::vector<std::optional<Verdict>>;

Limits oneAtATime() {
    Limits limits;
    limits.jobs = 1;
    limits.retries = 0;
    return limits;
}

void serve(Client& client, const Limits& limits, const std::atomic<bool>* cancel = nullptr,
           const std::string& caFile = "") {
    ASSERT_TRUE(thermika::fetch::HttpTransfer::isPossible());
    const Stop stop(std::chrono::seconds(50), cancel);
    HttpQueue queue(limits, caFile, stop);
    queue.run(client);
}

TEST(HttpQueueItems, areAskedForWhereAnotherServerCannotBeReachedLater) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        const std::string good = serverAddress(kEncodedFolder + "a.dat");
        Client client({good, kNobody, good});
        serve(client, oneAtATime());
        EXPECT_EQ(client.verdicts,
                  (Verdicts{Verdict::kGood, Verdict::kUnreachable, Verdict::kGood}));
    });
}

TEST(HttpQueueItems, areNotBegunWhileTheServerMayBeOneThatCannotBeReached) {
    inSandbox([] {
        const DownloadSandbox world;
        Client client({kNobody, kNobody, kNobody});
        Limits limits;
        limits.jobs = 2;
        limits.firstPause = std::chrono::seconds(30);
        std::atomic<bool> cancel{false};
        // There is room for the third then, as both others wait.
        client.onTick = [&] { cancel = client.discarded == 2; };
        serve(client, limits, &cancel);
        EXPECT_EQ(client.discarded, 2);
        EXPECT_EQ(client.begun, 2U);
    });
}

TEST(HttpQueueItems, doNotWaitForAnotherTryOnceTheServerMayNotBeUsed) {
    inSandbox([] {
        const DownloadSandbox world;
        const SilentServer secure(443);
        // Refused at once, it would wait for half a minute; the other cannot be checked meanwhile.
        Client client({kNobody, "https://127.0.0.1/"});
        Limits limits;
        limits.jobs = 2;
        limits.firstPause = std::chrono::seconds(30);
        const auto start = std::chrono::steady_clock::now();
        serve(client, limits, nullptr, "/none.pem");
        EXPECT_LE(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
        EXPECT_EQ(client.verdicts, (Verdicts{Verdict::kUntrusted, Verdict::kUntrusted}));
    });
}

TEST(HttpQueueItems, areNotBegunOnceTheCallIsCancelled) {
    inSandbox([] {
        const FetchSandbox world;
        std::atomic<bool> cancel{false};
        Client client({serverAddress("/a"), serverAddress("/b")});
        client.onEnd = [&cancel] { cancel = true; };
        serve(client, oneAtATime(), &cancel);
        EXPECT_EQ(client.verdicts, (Verdicts{Verdict::kMissing, std::nullopt}));
        EXPECT_EQ(client.begun, 1U);
        EXPECT_EQ(FetchSandbox::requests(), Texts{"/a"});
    });
}

TEST(HttpQueueItems, whatABodyThrowsComesOutOfTheQueue) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        Client client({serverAddress(kEncodedFolder + "a.dat")});
        client.onBytes = [] { throw std::string("mine"); };
        const std::size_t before = openDescriptors();
        EXPECT_THROW(serve(client, oneAtATime()), std::string);
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_EQ(client.verdicts, Verdicts{std::nullopt});
    });
}

}  // namespace

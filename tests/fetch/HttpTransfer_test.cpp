// Answers judged one by one: oddities of their heads, and results that no server brings about.
#include "fetch/HttpTransfer.h"

#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"

namespace {

using namespace thermika_test;
using thermika::fetch::Answer;
using thermika::fetch::Body;
using thermika::fetch::HttpTransfer;
using thermika::fetch::Mirror;
using thermika::fetch::Report;
using thermika::fetch::Request;
using thermika::fetch::SpareSockets;

/// What comes of a.dat, and in how many tries, when its answer has a fault.
Report reportWith(const std::string& fault, const std::string& argument) {
    const FetchSandbox world;
    FetchSandbox::add("a.dat", "bytes");
    FetchSandbox::setFileFault("a.dat", fault, argument);
    Request request = requestFor({"a.dat"}, Mirror{serverAddress("")}, kFetched);
    request.limits.retries = 1;
    return thermika::fetch::fetch(request);
}

TEST(HttpTransfer, takesAnAnswerThatIsSaidToBeEncodedAsItIs) {
    for (const char* const encoding : {"identity", "Identity"})
        inSandbox([encoding] {
            EXPECT_EQ(linesOf(reportWith("encoded", encoding)), "a.dat: fetched\n");
        });
}

TEST(HttpTransfer, takesNoAnswerThatIsSaidToBeEncoded) {
    inSandbox([] {
        EXPECT_EQ(linesOf(reportWith("encoded", "br")),
                  "a.dat: failed, it is sent encoded (br), which was not asked for\n");
    });
}

TEST(HttpTransfer, asksAgainAfterStatusesUpTo599Alone) {
    inSandbox([] {
        const Report last = reportWith("status", "599");
        EXPECT_EQ(linesOf(last), "a.dat: failed, the server answered 599\n");
        EXPECT_EQ(last.files.at(0).tries, 2U);
    });
    inSandbox([] {
        const Report next = reportWith("status", "600");
        EXPECT_EQ(linesOf(next), "a.dat: failed, the server answered 600\n");
        EXPECT_EQ(next.files.at(0).tries, 1U);
    });
}

class NoBody : public Body {
public:
    void discard() override {}
    void announce(std::uint64_t /*bytes*/) override {}
    bool append(std::string_view /*bytes*/) override { return true; }
    std::string problem() const override { return ""; }
};

/// How a request is judged that had this result and no answer.
Answer answerTo(CURLcode result) {
    EXPECT_TRUE(HttpTransfer::isPossible());
    SpareSockets spares;
    HttpTransfer transfer(thermika::fetch::Limits(), "", spares);
    NoBody body;
    transfer.prepare("http://127.0.0.1/", 1, body);
    return transfer.finish(result);
}

TEST(HttpTransfer, endsNoCallWithAHeadThatIsTooLongWhateverTheLibrarySaysOfIt) {
    constexpr auto kTooLarge = static_cast<CURLcode>(100);  // of later versions
    for (const CURLcode result : {CURLE_OUT_OF_MEMORY, kTooLarge}) {
        const Answer answer = answerTo(result);
        EXPECT_EQ(answer.verdict, Answer::Verdict::kBad);
        EXPECT_EQ(answer.reason, "the head of the answer is too long, or there is no memory left");
    }
}

TEST(HttpTransfer, takesNothingForAnAnswerThatHasNoStatus) {
    for (const CURLcode result : {CURLE_OK, CURLE_WRITE_ERROR, CURLE_ABORTED_BY_CALLBACK}) {
        const Answer answer = answerTo(result);
        EXPECT_EQ(answer.verdict, Answer::Verdict::kBad);
        EXPECT_EQ(answer.reason, std::string("the transfer failed: ") + curl_easy_strerror(result));
    }
}

}  // namespace

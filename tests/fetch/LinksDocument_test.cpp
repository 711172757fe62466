// The links document, as the server writes it and as it should not.
#include "fetch/LinksDocument.h"

#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "fetch/support/FetchSandbox.h"

namespace {

using namespace thermika_test;
using thermika::fetch::baseAddressIn;

std::string baseIn(const std::string& document) {
    std::string problem;
    const std::string base = baseAddressIn(document, problem);
    EXPECT_EQ(base.empty(), !problem.empty());
    return base.empty() ? problem : base;
}

std::string withString(const std::string& text) {
    return linksDocument("        <string>" + text + "</string>\n");
}

TEST(LinksDocument, namesTheFirstBaseAddress) {
    EXPECT_EQ(baseIn(linksDocument("<string>http://a.example/x</string>\n"
                                   "<string>http://b.example/y</string>\n")),
              "http://a.example/x");
}

TEST(LinksDocument, mayHaveItsAddressOnALineOfItsOwn) {
    EXPECT_EQ(baseIn(withString("\n   http://a.example/my files\n   ")),
              "http://a.example/my%20files");
}

TEST(LinksDocument, withoutAnAddressIsNone) {
    const std::string none = "it names no address (is it a links document?)";
    EXPECT_EQ(baseIn(""), "it is empty");
    EXPECT_EQ(baseIn("<html><body>Welcome to the hotel's network</body></html>"), none);
    EXPECT_EQ(baseIn(linksDocument("")), none);
    EXPECT_EQ(baseIn("<DownloadLinks>\n</DownloadLinks>\n"), none);
    EXPECT_EQ(baseIn(std::string(1000, '\0')), none);
}

TEST(LinksDocument, withHalfACommentIsNone) {
    EXPECT_EQ(baseIn(linksDocument("<!-- <string>http://a.example</string>\n")),
              "its comments do not pair up");
}

TEST(LinksDocument, addressesThatCannotBeUsedAreNamed) {
    EXPECT_EQ(baseIn(withString("file:///etc")),
              "the address \"file:///etc\" cannot be used: it is neither http nor https");
    EXPECT_EQ(baseIn(withString("")), "the address \"\" cannot be used: it is empty");
    EXPECT_EQ(baseIn(withString("http://$(id)/")).substr(0, 31),
              "the address \"http://$(id)/\" can");
}

TEST(LinksDocument, thatIsWrongIsTheProblemOfAllFiles) {
    inSandbox([] {
        const FetchSandbox world;
        for (const auto& [fault, argument, problem] :
             {std::tuple{"empty", "", "the links document ADDRESS: it is empty"},
              std::tuple{"status", "404", "cannot get ADDRESS: the server does not have it (404)"},
              std::tuple{"announces_too_much", "",
                         "cannot get ADDRESS: it is larger than 65536 bytes"},
              std::tuple{"endless", "", "cannot get ADDRESS: it is larger than 65536 bytes"},
              std::tuple{"redirect", "file:///etc/passwd",
                         "cannot get ADDRESS: it is redirected to an address that is neither http "
                         "nor https"}}) {
            FetchSandbox::setFault(kLinksPath, fault, argument, 1);
            std::string expected = problem;
            expected.replace(expected.find("ADDRESS"), 7, serverAddress(kLinksPath));
            EXPECT_EQ(fetchLines({"a.dat"}),
                      "problem: " + expected + "\na.dat: not tried, " + expected + "\n");
        }
        EXPECT_EQ(contents(kFetched), Files());
    });
}

TEST(LinksDocument, isAskedForAgainWhenThatMayHelp) {
    inSandbox([] {
        const FetchSandbox world;
        FetchSandbox::add("a.dat", "bytes");
        FetchSandbox::setFault(kLinksPath, "cut", "", 2);
        EXPECT_EQ(fetchLines({"a.dat"}), "a.dat: fetched\n");
        EXPECT_EQ(FetchSandbox::requests().size(), 4U);
        EXPECT_EQ(contents(kFetched), (Files{{"a.dat", "bytes"}}));
    });
}

TEST(LinksDocument, addressThatIsNoneIsNotAsked) {
    inSandbox([] {
        const FetchSandbox world;
        auto request = serverRequest({"a.dat"});
        request.source = thermika::fetch::VendorServer{"file:///etc/passwd"};
        EXPECT_EQ(
            thermika::fetch::fetch(request).problem,
            "the address \"file:///etc/passwd\" cannot be used: it is neither http nor https");
        EXPECT_EQ(FetchSandbox::requests(), Texts());
    });
}

}  // namespace

// The library's log on standard error.
#include "cli/LogStream.h"

#include <cstddef>
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "sdk/Logger.h"
#include "support/Sandbox.h"

namespace {

using thermika_test::RunResult;

RunResult logged(bool isShown) {
    return thermika_test::runInProcess([isShown] {
        thermika::cli::configureLog(isShown);
        kelvra::Logger::getInstance()->print(kelvra::kLogDebug, "Test", 7, "a \033[31m\\ \xE9");
        return 0;
    });
}

// It comes in pieces, of which only the last ends a line.
TEST(LogStream, showsLinesThatAreLongerThanItsBuffer) {
    const std::string longText(std::size_t{3} * BUFSIZ, 'a');
    const RunResult result = thermika_test::runInProcess([&longText] {
        thermika::cli::configureLog(true);
        std::fprintf(stderr, "%s\n%s\n", longText.c_str(), "end");
        return 0;
    });
    EXPECT_EQ(result.err, longText + "\nend\n");
}

TEST(LogStream, isSilentUnlessItIsAskedFor) { EXPECT_EQ(logged(false), (RunResult{"", "", 0})); }

TEST(LogStream, showsEveryLineWithoutWhatATerminalActsOn) {
    const RunResult result = logged(true);
    EXPECT_EQ(result.err.substr(0, 16), "DEBUG [Test:7] @");
    EXPECT_EQ(result.err.substr(result.err.find(" :")), " :a \\x1B[31m\\\\ \\xE9\n");
}

}  // namespace

// The library's log on standard error.
#include "cli/LogStream.h"

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

TEST(LogStream, isSilentUnlessItIsAskedFor) { EXPECT_EQ(logged(false), (RunResult{"", "", 0})); }

TEST(LogStream, showsEveryLineWithoutWhatATerminalActsOn) {
    const RunResult result = logged(true);
    EXPECT_EQ(result.err.substr(0, 16), "DEBUG [Test:7] @");
    EXPECT_EQ(result.err.substr(result.err.find(" :")), " :a \\x1B[31m\\\\ \\xE9\n");
}

}  // namespace

// Results for people and programs: colours, numbers, and standard output in one piece.
#include "cli/Output.h"

#include <sys/syscall.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "support/Sandbox.h"

namespace {

using thermika::cli::Color;
using thermika::cli::Json;
using thermika::cli::jsonNumber;
using thermika::cli::numberText;
using thermika::cli::Output;
using thermika::cli::Style;
using thermika_test::RunResult;

TEST(Output, givesEachStyleItsColour) {
    Output output;
    output.color = Color::kAlways;
    EXPECT_EQ(output.styled(Style::kPlain, "a"), "a");
    EXPECT_EQ(output.styled(Style::kHeading, "a"), "\033[1ma\033[0m");
    EXPECT_EQ(output.styled(Style::kGood, "a"), "\033[32ma\033[0m");
    EXPECT_EQ(output.styled(Style::kDoubtful, "a"), "\033[33ma\033[0m");
    EXPECT_EQ(output.styled(Style::kBad, "a"), "\033[31ma\033[0m");
    output.isJson = true;
    EXPECT_EQ(output.styled(Style::kBad, "a"), "a");
}

TEST(Output, writesWhatWasAddedOnceAndNothingThatWasDiscarded) {
    const RunResult result = thermika_test::runInProcess([] {
        Output output;
        output.add("not ");
        output.discard();
        output.add("one\n");
        output.addDocument(Json{{"text", "\u00e4\033"}});
        output.deliver();
        output.deliver();
        output.note("a note");
        output.isQuiet = true;
        output.note("not shown");
        Output::complain("a reason");
        return 0;
    });
    EXPECT_EQ(result, (RunResult{"one\n{\n  \"text\": \"\\u00e4\\u001b\"\n}\n",
                                 "a note\nthermika: a reason\n", 0}));
}

// On a standard error whose position cannot be asked for, as that of some devices.
TEST(Output, complainsWhereThePositionIsNotKnown) {
    const RunResult result = thermika_test::runInProcess([] {
#ifdef SYS__llseek
        thermika_test::failSystemCall(SYS__llseek, EINVAL);
#endif
        thermika_test::failSystemCall(SYS_lseek, EINVAL);
        Output().note("a note");
        Output::complain("a reason");
        Output::complainOfMemory();
        return 0;
    });
    EXPECT_EQ(result, (RunResult{"", "a note\nthermika: a reason\nthermika: out of memory\n", 0}));
}

// Whoever escaped for the terminal before would have every backslash twice.
TEST(Output, escapesNotesAndReasonsOnce) {
    const RunResult result = thermika_test::runInProcess([] {
        Output().note("a\\b\033\n");
        Output::complain("a\\b\033\n");
        Output::complainOfMemory();
        return 0;
    });
    EXPECT_EQ(result, (RunResult{"",
                                 "a\\\\b\\x1B\\x0A\nthermika: a\\\\b\\x1B\\x0A\n"
                                 "thermika: out of memory\n",
                                 0}));
}

TEST(Output, givesNumbersInTheirShortestForm) {
    EXPECT_EQ(numberText(0.1F), "0.1");
    EXPECT_EQ(numberText(-20.0F), "-20");
    EXPECT_EQ(numberText(1e10F), "10000000000");
    EXPECT_EQ(numberText(std::numeric_limits<float>::lowest()).size(), 40U);
    EXPECT_EQ(numberText(std::numeric_limits<float>::denorm_min()).substr(0, 4), "0.00");
    EXPECT_EQ(jsonNumber(-20.0F).dump(), "-20");
    EXPECT_EQ(jsonNumber(0.1F).dump(), "0.1");
    EXPECT_EQ(jsonNumber(1e10F).dump(), "10000000000.0");
    EXPECT_TRUE(jsonNumber(std::nanf("")).is_null());
    EXPECT_TRUE(jsonNumber(-std::numeric_limits<float>::infinity()).is_null());
}

}  // namespace

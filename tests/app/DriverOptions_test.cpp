// The tool's command line: which serial numbers are accepted, what ends the run, and what the real
// executable writes then, to the byte.
#include <unistd.h>

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/ExpectedDocument.h"
#include "support/Sandbox.h"
#include "support/Tool.h"

namespace {

using thermika_test::ExpectedDocument;
using thermika_test::inSandbox;
using thermika_test::kEightDigitsNeeded;
using thermika_test::kNoBus;
using thermika_test::kNoCamera;
using thermika_test::kToolFailure;
using thermika_test::RunResult;
using thermika_test::runTool;

// There is no bus in any of these tests: a run that looks for a camera says so on standard error,
// and one that does not says nothing.
const RunResult kLooksOnTheBus{kNoCamera, kNoBus, kToolFailure};
const RunResult kWrongSerial{"", kEightDigitsNeeded, kToolFailure};
const RunResult kSilentEnd{"", "", kToolFailure};

RunResult delivered(const std::string& serial) {
    ExpectedDocument expected;
    expected.serial = serial;
    return {expected.text() + "\n", "", 0};
}

TEST(DriverOptions, takesTheSerialNumberWithoutTouchingTheBus) {
    inSandbox([] {
        EXPECT_EQ(runTool({"-d", "12345678"}), delivered("12345678"));
        EXPECT_EQ(runTool({"-d12345678"}), delivered("12345678"));
    });
}

TEST(DriverOptions, acceptsTheLowestAndTheHighestSerialNumberOfEightDigits) {
    inSandbox([] {
        EXPECT_EQ(runTool({"-d", "10000000"}), delivered("10000000"));
        EXPECT_EQ(runTool({"-d", "99999999"}), delivered("99999999"));
    });
}

TEST(DriverOptions, refusesSerialNumbersOfSevenAndOfNineDigits) {
    inSandbox([] {
        for (const char* const serial : {"1234567", "9999999", "100000000", "123456789", "5", "0"})
            EXPECT_EQ(runTool({"-d", serial}), kWrongSerial) << serial;
    });
}

TEST(DriverOptions, refusesSerialNumbersThatOverflow) {
    inSandbox([] {
        for (const char* const serial :
             {"2147483648", "4307312974", "9223372036854775808", "18446744073721897294"})
            EXPECT_EQ(runTool({"-d", serial}), kWrongSerial) << serial;
        EXPECT_EQ(runTool({"-d", std::string(5000, '9')}), kWrongSerial);
    });
}

TEST(DriverOptions, acceptsLeadingZerosAndTrailingLetters) {
    inSandbox([] {
        EXPECT_EQ(runTool({"-d", "012345678"}), delivered("12345678"));
        EXPECT_EQ(runTool({"-d", std::string(300, '0') + "12345678"}), delivered("12345678"));
        EXPECT_EQ(runTool({"-d", "12345678abc"}), delivered("12345678"));
        EXPECT_EQ(runTool({"-d", "12345678.9 %s%n\n"}), delivered("12345678"));
    });
}

TEST(DriverOptions, refusesZerosHexadecimalDigitsAndGroupedDigits) {
    inSandbox([] {
        for (const char* const serial : {"00000000", "0x12345678", "12,345,678", "1e7"})
            EXPECT_EQ(runTool({"-d", serial}), kWrongSerial) << serial;
    });
}

TEST(DriverOptions, looksOnTheBusWhenTheSerialNumberDoesNotStartWithADigit) {
    inSandbox([] {
        for (const char* const serial : {"abc", "-12345678", "+12345678", " 12345678", "\t12345678",
                                         ".5", "/12345678", ":12345678", "", "-x", "\xff",
                                         "\xb2"
                                         "12345678",
                                         "\xd9\xa1"
                                         "2345678"})
            EXPECT_EQ(runTool({"-d", serial}), kLooksOnTheBus) << serial;
        EXPECT_EQ(runTool({"-d-12345678"}), kLooksOnTheBus);
    });
}

TEST(DriverOptions, looksOnTheBusWithoutOptions) {
    inSandbox([] { EXPECT_EQ(runTool({}), kLooksOnTheBus); });
}

TEST(DriverOptions, takesTheLastOfSeveralSerialNumbers) {
    inSandbox([] {
        EXPECT_EQ(runTool({"-d", "12345678", "-d", "87654321"}), delivered("87654321"));
    });
}

TEST(DriverOptions, failsOnTheSecondSerialNumberAfterAGoodOne) {
    inSandbox([] { EXPECT_EQ(runTool({"-d", "12345678", "-d", "5"}), kWrongSerial); });
}

TEST(DriverOptions, keepsTheSerialNumberWhenALaterOneIsIgnored) {
    inSandbox([] {
        EXPECT_EQ(runTool({"-d", "12345678", "-d", "abc"}), delivered("12345678"));
        EXPECT_EQ(runTool({"-d", "abc", "-d", "12345678"}), delivered("12345678"));
    });
}

TEST(DriverOptions, stopsAtAWrongSerialNumber) {
    inSandbox([] {
        EXPECT_EQ(runTool({"-d", "5", "-x"}), kWrongSerial);
        EXPECT_EQ(runTool({"-d", "5", "-d", "6"}), kWrongSerial);
        EXPECT_EQ(runTool({"-d", "5", "-d", "12345678"}), kWrongSerial);
    });
}

TEST(DriverOptions, goesOnReadingAfterAnUnknownOption) {
    inSandbox([] {
        const std::string diagnostic = "genconfig: invalid option -- 'x'\n";
        EXPECT_EQ(runTool({"-x", "-d", "5"}),
                  (RunResult{"", diagnostic + kEightDigitsNeeded, kToolFailure}));
        EXPECT_EQ(runTool({"-xd5"}),
                  (RunResult{"", diagnostic + kEightDigitsNeeded, kToolFailure}));
    });
}

TEST(DriverOptions, endsAfterAnUnknownOptionEvenWithASerialNumber) {
    inSandbox([] {
        const RunResult expected{"", "genconfig: invalid option -- 'x'\n", kToolFailure};
        EXPECT_EQ(runTool({"-x"}), expected);
        EXPECT_EQ(runTool({"-x", "-d", "12345678"}), expected);
        EXPECT_EQ(runTool({"-d", "12345678", "-x"}), expected);
        EXPECT_EQ(runTool({"-xd12345678"}), expected);
    });
}

TEST(DriverOptions, reportsEveryUnknownOption) {
    inSandbox([] {
        std::string diagnostics;
        for (const char letter : std::string("-help"))
            diagnostics += std::string("genconfig: invalid option -- '") + letter + "'\n";
        EXPECT_EQ(runTool({"--help"}), (RunResult{"", diagnostics, kToolFailure}));
        EXPECT_EQ(runTool({"-?"}),
                  (RunResult{"", "genconfig: invalid option -- '?'\n", kToolFailure}));
    });
}

TEST(DriverOptions, reportsAMissingArgument) {
    inSandbox([] {
        EXPECT_EQ(runTool({"-d"}),
                  (RunResult{"", "genconfig: option requires an argument -- 'd'\n", kToolFailure}));
        EXPECT_EQ(runTool({"-d", "12345678", "-t"}),
                  (RunResult{"", "genconfig: option requires an argument -- 't'\n", kToolFailure}));
    });
}

TEST(DriverOptions, endsSilentlyWithASourceDirectory) {
    inSandbox([] {
        EXPECT_EQ(runTool({"-t", "/tmp"}), kSilentEnd);
        EXPECT_EQ(runTool({"-d", "12345678", "-t", "/tmp"}), kSilentEnd);
        EXPECT_EQ(runTool({"-t", "/tmp", "-d", "12345678"}), kSilentEnd);
        EXPECT_EQ(runTool({"-d14080045", "-t/tmp/"}), kSilentEnd);
    });
}

TEST(DriverOptions, endsSilentlyWithASourceDirectoryThatIsEmptyOrUnprintable) {
    inSandbox([] {
        for (const char* const dir : {"", "\t", "\x01", "\x7f", "\xff", "%s%n", "/"})
            EXPECT_EQ(runTool({"-d", "12345678", "-t", dir}), kSilentEnd) << dir;
        EXPECT_EQ(runTool({"-d", "12345678", "-t", std::string(5000, 'a')}), kSilentEnd);
    });
}

TEST(DriverOptions, refusesAWrongSerialNumberAfterASourceDirectory) {
    inSandbox([] { EXPECT_EQ(runTool({"-t", "/tmp", "-d", "5"}), kWrongSerial); });
}

TEST(DriverOptions, neverExaminesArgumentsThatAreNoOptions) {
    inSandbox([] {
        EXPECT_EQ(runTool({"5", "-d", "12345678", "x"}), delivered("12345678"));
        EXPECT_EQ(runTool({"-", "-d", "12345678", "--", "-x", "-d", "5"}), delivered("12345678"));
        EXPECT_EQ(runTool({"--", "-d", "12345678"}), kLooksOnTheBus);
        EXPECT_EQ(runTool({"12345678"}), kLooksOnTheBus);
        EXPECT_EQ(runTool({""}), kLooksOnTheBus);
    });
}

TEST(DriverOptions, takesNoNoticeOfTheEnvironmentsLocale) {
    inSandbox([] {
        const auto german = [] { setenv("LC_ALL", "de_DE.UTF-8", 1); };
        EXPECT_EQ(runTool({"-d", "12345678"}, german), delivered("12345678"));
        EXPECT_EQ(runTool({"-d", "5"}, german), kWrongSerial);
        EXPECT_EQ(runTool({"-x"}, german),
                  (RunResult{"", "genconfig: invalid option -- 'x'\n", kToolFailure}));
    });
}

TEST(DriverOptions, endsTheSameWithoutStandardError) {
    inSandbox([] {
        const auto closeErrors = [] { close(STDERR_FILENO); };
        for (const char* const option : {"-d5", "-x", "-t/tmp"})
            EXPECT_EQ(runTool({option}, closeErrors), kSilentEnd) << option;
        EXPECT_EQ(runTool({}, closeErrors), (RunResult{kNoCamera, "", kToolFailure}));
    });
}

}  // namespace

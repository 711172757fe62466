// The listing of a camera's optics and their temperature ranges.
#include <gtest/gtest.h>

#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "imgproc/Cali.h"
#include "support/CaliDescriptions.h"
#include "support/CaliTest.h"
#include "support/LogText.h"
#include "support/ProcessState.h"

namespace {

using dax::IRCalibrationManager;
using dax::OpticsEntry;
using thermika_test::opticsElement;
using thermika_test::rangeElement;
using thermika_test::samplePointOpticsElement;
using thermika_test::TempDir;

constexpr unsigned long kListed = 12345678;
constexpr unsigned long kOtherListed = 12345679;
constexpr const char* kBuiltIn = "30 '' -20..100 0..250 150..900\n";

/// One line an optics: field of view, text and ranges.
std::string lines(const std::vector<OpticsEntry>& list) {
    std::string text;
    for (const OpticsEntry& entry : list) {
        text += std::to_string(entry.fov) + " '" + entry.text + "'";
        for (const auto& [lower, upper] : entry.tempRanges)
            text += " " + std::to_string(lower) + ".." + std::to_string(upper);
        text += "\n";
    }
    return text;
}

class OpticsListing : public thermika_test::CaliTest {
protected:
    std::string listed(unsigned long serial = kListed) const {
        return lines(*manager().getAvailableOptics(serial));
    }
};

using OpticsListingDeathTest = OpticsListing;

TEST_F(OpticsListing, showsOpticsAndRangesInTheDescriptionsOrder) {
    describe(kListed,
             opticsElement(60, "HT", rangeElement("150", "900", {27}) + rangeElement("0", "250")) +
                 samplePointOpticsElement(30, "", rangeElement("-20", "100")) +
                 opticsElement(-5, "O 5", rangeElement("100", "-100")));
    EXPECT_EQ(listed(), "60 'HT' 150..900 0..250\n30 '' -20..100\n-5 'O 5' 100..-100\n");
}

TEST_F(OpticsListing, dropsFractionsTowardZero) {
    describe(kListed,
             opticsElement(33, "",
                           rangeElement("-20.0", "100.0") + rangeElement("-20.5", "149.9") +
                               rangeElement("-0.9", "1.9")));
    EXPECT_EQ(listed(), "33 '' -20..100 -20..149 0..1\n");
}

TEST_F(OpticsListing, saturatesLimitsThatNoIntHolds) {
    describe(kListed, opticsElement(33, "",
                                    rangeElement("-1e30", "1e30") + rangeElement("-inf", "inf") +
                                        rangeElement("nan", "2147483648")));
    EXPECT_EQ(listed(), "33 '' -2147483648..2147483647 -2147483648..2147483647 0..2147483647\n");
}

TEST_F(OpticsListing, readsLimitsWithAPointWhateverTheLocale) {
    const thermika_test::ScopedLocale locale({{LC_NUMERIC, thermika_test::kDecimalCommaLocale},
                                              {LC_CTYPE, thermika_test::kDecimalCommaLocale}});
    describe(kListed, opticsElement(33, "", rangeElement("-2.05e1", "1.9e2")));
    EXPECT_EQ(listed(), "33 '' -20..190\n");
}

TEST_F(OpticsListing, showsOpticsWithoutRanges) {
    describe(kListed, opticsElement(33, "A", "") + opticsElement(60, "", rangeElement("0", "1")));
    EXPECT_EQ(listed(), "33 'A'\n60 '' 0..1\n");
}

TEST_F(OpticsListing, showsTheDefaultRangesOfOpticsThatTellNone) {
    describe(kListed, "<OpticsDef>\n<FOV>33</FOV>\n<Text></Text>\n</OpticsDef>\n");
    EXPECT_EQ(listed(), "33 '' -20..100 0..250 150..900\n");
}

TEST_F(OpticsListing, isEmptyForADescriptionWithoutOptics) {
    describe(kListed, "");
    EXPECT_EQ(listed(), "");
}

TEST_F(OpticsListing, showsTheFirstsRangesForOpticsOfTheSameFieldOfViewAndText) {
    describe(kListed, opticsElement(33, "", rangeElement("0", "1")) +
                          opticsElement(33, "A", rangeElement("0", "2")) +
                          opticsElement(33, "", rangeElement("0", "3") + rangeElement("0", "4")) +
                          opticsElement(33, "A", "") + opticsElement(33, "a", ""));
    EXPECT_EQ(listed(), "33 '' 0..1\n33 'A' 0..2\n33 '' 0..1\n33 'A' 0..2\n33 'a'\n");
}

TEST_F(OpticsListing, keepsRangesWithEqualBounds) {
    describe(kListed,
             opticsElement(
                 33, "", rangeElement("0", "1") + rangeElement("0", "1") + rangeElement("5", "5")));
    EXPECT_EQ(listed(), "33 '' 0..1 0..1 5..5\n");
}

TEST_F(OpticsListing, leavesTheListAloneForSerialZero) {
    describe(kListed, opticsElement(33, "", rangeElement("0", "1")));
    EXPECT_EQ(listed(0), "");
    EXPECT_EQ(listed(), "33 '' 0..1\n");
    EXPECT_EQ(listed(0), "33 '' 0..1\n");
    thermika_test::forgetDescription();
    EXPECT_EQ(listed(0), "33 '' 0..1\n");
    EXPECT_FALSE(ConfigCali::getInstance()->isLoaded(0));
}

TEST_F(OpticsListing, loadsADescriptionOnceAndRebuildsTheList) {
    describe(kListed, opticsElement(33, "", rangeElement("0", "1")));
    EXPECT_EQ(listed(), "33 '' 0..1\n");
    describe(kListed, "");
    manager().getAvailableOptics(0)->front().fov = 1;
    manager().getAvailableOptics(0)->front().tempRanges.emplace_back(7, 8);
    manager().getAvailableOptics(0)->push_back({1, {}, "scribbled"});
    EXPECT_EQ(listed(), "33 '' 0..1\n");
}

TEST_F(OpticsListing, showsOnlyTheOpticsOfASecondSerial) {
    describe(kListed, opticsElement(33, "long", rangeElement("0", "1") + rangeElement("0", "2")) +
                          opticsElement(60, "", rangeElement("0", "3")));
    describe(kOtherListed, opticsElement(90, "", ""));
    EXPECT_EQ(listed(), "33 'long' 0..1 0..2\n60 '' 0..3\n");
    EXPECT_EQ(listed(kOtherListed), "90 ''\n");
    EXPECT_EQ(listed(), "33 'long' 0..1 0..2\n60 '' 0..3\n");
}

TEST_F(OpticsListing, keepsNothingOfTheOpticsListedBefore) {
    describe(kListed, opticsElement(33, "text", rangeElement("0", "1") + rangeElement("0", "2")));
    describe(kOtherListed, "<OpticsDef>\n<FOV>90</FOV>\n<TempRanges></TempRanges>\n</OpticsDef>\n");
    EXPECT_EQ(listed(), "33 'text' 0..1 0..2\n");
    EXPECT_EQ(listed(kOtherListed), "90 ''\n");
}

TEST_F(OpticsListing, showsWhatTheFileCheckLoadedForTheSerial) {
    describe(kListed, opticsElement(33, "", rangeElement("0", "1")));
    delete[] manager().checkCalibration(kListed);
    describe(kListed, "");
    manager().setCalibrationDir(beside("elsewhere").c_str());
    EXPECT_EQ(listed(), "33 '' 0..1\n");
    EXPECT_FALSE(std::filesystem::exists(beside("elsewhere")));
}

TEST_F(OpticsListing, showsTheBuiltInOpticsAfterAReloadThatFailed) {
    describe(kListed, opticsElement(33, "", rangeElement("0", "1")));
    EXPECT_EQ(listed(), "33 '' 0..1\n");
    EXPECT_EQ(listed(kOtherListed), kBuiltIn);
    EXPECT_EQ(listed(kOtherListed), kBuiltIn);
    EXPECT_EQ(listed(), "33 '' 0..1\n");
}

TEST_F(OpticsListing, createsTheCalibrationDirectoryWhenItLoads) {
    manager().setCalibrationDir(beside("new").c_str());
    manager().getAvailableOptics(kListed);
    EXPECT_TRUE(std::filesystem::is_directory(beside("new")));
}

TEST_F(OpticsListing, logsNothingOnceTheDescriptionIsLoaded) {
    describe(kListed, opticsElement(33, "", ""));
    manager().getAvailableOptics(kListed);
    thermika_test::LogCapture lines;
    manager().getAvailableOptics(kListed);
    manager().getAvailableOptics(0);
    EXPECT_EQ(lines.all(), std::vector<std::string>());
}

TEST_F(OpticsListing, handsOutTheManagersOwnList) {
    describe(kListed, opticsElement(33, "", ""));
    const std::vector<OpticsEntry>* const list = manager().getAvailableOptics(0);
    EXPECT_EQ(manager().getAvailableOptics(kListed), list);
    EXPECT_EQ(manager().getAvailableOptics(kOtherListed), list);
}

TEST_F(OpticsListing, isEmptyInAFreshManager) {
    describe(kListed, opticsElement(33, "", rangeElement("0", "1")));
    EXPECT_EQ(listed(), "33 '' 0..1\n");
    delete &manager();
    EXPECT_EQ(listed(0), "");
    EXPECT_STREQ(manager().getCalibrationDir(), "/usr/share/libthermika/cali");
    EXPECT_EQ(listed(), "33 '' 0..1\n");  // what is loaded outlives the manager
}

TEST_F(OpticsListing, keepsTextsWhenTheirDescriptionIsGone) {
    const std::string text(300, 't');
    describe(kListed, opticsElement(33, text, ""));
    const std::vector<OpticsEntry>& list = *manager().getAvailableOptics(kListed);
    thermika_test::forgetDescription();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].text, text);
}

TEST_F(OpticsListing, showsThousandsOfOptics) {
    std::string optics;
    std::string expected;
    for (int i = 0; i < 4500; ++i) {
        const std::string text = "O" + std::to_string(i / 2);
        optics += opticsElement(i % 7, text, rangeElement(std::to_string(-i), std::to_string(i)));
        expected += std::to_string(i % 7) + " '" + text + "' " + std::to_string(-i) + ".." +
                    std::to_string(i) + "\n";
    }
    describe(kListed, optics);
    EXPECT_EQ(listed(), expected);
}

TEST_F(OpticsListingDeathTest, endsTheProcessWhenTheDescriptionsPathIsTooLong) {
    const TempDir parent;
    for (const std::size_t length : {242U, 259U, 260U, 300U}) {
        std::string directory = parent.path() + "/";
        directory.resize(length, 'd');
        manager().setCalibrationDir(directory.c_str());
        EXPECT_EXIT(manager().getAvailableOptics(kListed), testing::KilledBySignal(SIGABRT),
                    "exceeds the limit of 259");
    }
}

/// What a process shows that never loaded a description, nor finds one.
[[noreturn]] void listWithoutDescription() {
    std::string shown;
    {
        const TempDir empty;
        IRCalibrationManager::getInstance()->setCalibrationDir(empty.path().c_str());
        shown = lines(*IRCalibrationManager::getInstance()->getAvailableOptics(kListed));
    }
    std::fprintf(stderr, "listed (%s), held %d\n", shown.c_str(),
                 ConfigCali::getInstance()->getOpticsCount());
    std::exit(0);
}

// Whatever ran before in this process, the statement runs in a program started anew.
TEST(OpticsListingFreshDeathTest, isEmptyWhenNoDescriptionWasEverLoaded) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(listWithoutDescription(), testing::ExitedWithCode(0), "listed \\(\\), held 1");
}

}  // namespace

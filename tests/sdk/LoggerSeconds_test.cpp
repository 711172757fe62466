// A line's seconds beside what a stream in the classic locale shows: hundreds of thousands of times
// of every magnitude, among them those that lie halfway between two texts, and their neighbours.
#include <clocale>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sdk/Logger.h"
#include "sdk/base/WallClock.h"
#include "support/ProcessState.h"
#include "support/TestFiles.h"

namespace {

constexpr std::uint32_t kSeed = 20261115;
constexpr std::int64_t kLogStartUs = 1'794'733'507'000'731;
constexpr std::int64_t kLongestUs = 1'000'000'000'000'000;  // in which a double's steps are small
constexpr int kDigits = 6;

/// Writes a line for each elapsed time, and what the stream shows for the same time.
class Seconds {
public:
    explicit Seconds(std::int64_t startUs) : m_startUs(startUs), m_clock(startUs) {
        kelvra::Logger::releaseInstance();
        m_startMs = kelvra::wallClockMs();
        kelvra::Logger::getInstance()->configure(m_dir / "log", kelvra::Logger::LOGGER_FILE, 3, 3);
        m_expected.imbue(std::locale::classic());
    }
    ~Seconds() { kelvra::Logger::releaseInstance(); }
    Seconds(const Seconds&) = delete;
    Seconds& operator=(const Seconds&) = delete;

    void print(std::int64_t elapsedUs) {
        m_clock.set(m_startUs + elapsedUs);
        kelvra::Logger::getInstance()->print(0, "U", 1, "");
        m_expected << "ERROR [U:1] @ " << (kelvra::wallClockMs() - m_startMs) / 1000.0L << "s :\n";
        ++m_count;
    }

    /// Names the first time that is shown otherwise.
    void expectAlike(std::size_t count) const {
        EXPECT_EQ(m_count, count);
        const auto file = std::filesystem::directory_iterator(m_dir.path())->path();
        std::istringstream shown(thermika_test::readFile(file));
        std::istringstream expected(m_expected.str());
        for (std::size_t number = 0; number < m_count; ++number) {
            std::string shownLine;
            std::string expectedLine;
            std::getline(shown, shownLine);
            std::getline(expected, expectedLine);
            ASSERT_EQ(shownLine, expectedLine) << "line " << number;
        }
        EXPECT_EQ(shown.peek(), std::istringstream::traits_type::eof());
    }

private:
    const thermika_test::TempDir m_dir;
    const std::int64_t m_startUs;
    thermika_test::ScopedClock m_clock;
    long double m_startMs = 0;
    std::ostringstream m_expected;
    std::size_t m_count = 0;
};

/// As many short times as long ones.
std::int64_t anyElapsedUs(std::mt19937& random) {
    std::uniform_real_distribution<double> magnitude(0, std::log10(double(kLongestUs)));
    return static_cast<std::int64_t>(std::pow(10, magnitude(random)));
}

/// The time whose 7 digits are the 6 of `digits`, `places` of them behind the point, and a 5. Five
/// places at most: one more, and the 5 would be a part of a microsecond.
std::int64_t halfwayUs(std::int64_t digits, int places) {
    std::int64_t us = (2 * digits + 1) * 5;
    for (int i = places; i < kDigits - 1; ++i) us *= 10;
    return us;
}

void expectAllMagnitudesAlike(std::int64_t startUs) {
    constexpr std::size_t kTimes = 100'000;
    std::mt19937 random(kSeed);
    Seconds seconds(startUs);
    for (std::size_t i = 0; i < kTimes; ++i) seconds.print(anyElapsedUs(random));
    seconds.expectAlike(kTimes);
}

void expectHalvesAlike(std::int64_t startUs) {
    constexpr std::size_t kHalves = 6'000;  // of each number of places
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<std::int64_t> digits(100'000, 999'999);
    Seconds seconds(startUs);
    for (int places = 0; places < kDigits; ++places)
        for (std::size_t i = 0; i < kHalves; ++i) {
            const std::int64_t half = halfwayUs(digits(random), places);
            for (const int aside : {-1, 0, 1}) seconds.print(half + aside);
        }
    seconds.expectAlike(kHalves * kDigits * 3);
}

TEST(LoggerSeconds, areThoseOfAStreamInEveryMagnitude) {
    expectAllMagnitudesAlike(0);
    expectAllMagnitudesAlike(kLogStartUs);
}

TEST(LoggerSeconds, areThoseOfAStreamHalfwayBetweenTwoTextsAndBeside) {
    expectHalvesAlike(0);
    expectHalvesAlike(kLogStartUs);
}

TEST(LoggerSeconds, areThoseOfAStreamAroundEachPowerOfTenAndBeforeTheStart) {
    Seconds seconds(0);
    std::size_t count = 0;
    for (std::int64_t power = 1; power <= kLongestUs; power *= 10)
        for (std::int64_t aside = -500; aside <= 500; ++aside)
            for (const int sign : {1, -1}) {
                seconds.print(sign * (power + aside));
                ++count;
            }
    // The last that is shown with its digits, the half, and the first that gains one.
    for (std::int64_t scale = 1; scale <= kLongestUs / 10'000'000; scale *= 10)
        for (std::int64_t last = 9'999'984; last <= 10'000'006; ++last) {
            seconds.print(last * scale);
            ++count;
        }
    seconds.expectAlike(count);
}

TEST(LoggerSeconds, leaveTheThreadsLocaleAsItWas) {
    const locale_t before = uselocale(locale_t{});
    Seconds seconds(kLogStartUs);
    seconds.print(2'000'000'000'000);
    EXPECT_EQ(uselocale(locale_t{}), before);
    seconds.expectAlike(1);
}

}  // namespace

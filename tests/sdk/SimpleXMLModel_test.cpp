// The reader beside a plain model of it: the same documents, the same calls, the same answers,
// outputs and log lines.
#include "sdk/SimpleXML.h"

#include <cstdint>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/ProcessState.h"
#include "support/ReaderComparison.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::ReaderCall;
using thermika_test::ReaderComparison;

/// The same numbers on every machine; distributions of the standard library differ.
class Dice {
public:
    explicit Dice(std::uint32_t seed) : m_engine(seed) {}

    /// 0 to `count` - 1.
    int below(int count) { return static_cast<int>(m_engine() % static_cast<unsigned int>(count)); }
    bool once(int in) { return below(in) == 0; }

    template <typename List>
    std::string_view pick(const List& list) {
        return list[static_cast<std::size_t>(below(static_cast<int>(std::size(list))))];
    }

private:
    std::mt19937 m_engine;
};

constexpr std::string_view kRoots[] = {"R", "R", "R", "R", "R",   "R",
                                       "R", "R", "",  "a", "R x", "\n"};
constexpr std::string_view kPlainNames[] = {"a", "a", "a", "b", "b", "ab", "", "R", "a\nb", "c"};
constexpr std::string_view kOddNames[] = {"a",   "b",   "",     "/a",  "b<a", "a><b",
                                          "</a", "!--", "a>\n", "b<b", "R",   "<"};
constexpr std::string_view kFragments[] = {
    "<a>",  "<a>",   "</a>",   "</a>", "<b>", "<b>",       "</b>",   "</b>",    "<ab>",  "</ab>",
    "<!--", "<!--",  "-->",    "-->",  "--",  "->",        "<",      ">",       "/",     "\n",
    "\n",   "\r",    "\r\n",   "0",    "1",   "x",         "<R",     "</R>",    "</R>",  "<>",
    "</>",  "<b<a>", "</b<a>", " ",    "!--", "<R x='1'>", "<a\rb>", "</a\rb>", "<!-->", "<!--->"};
constexpr std::string_view kNumbers[] = {"1",
                                         "0",
                                         "-1",
                                         "+3",
                                         "010",
                                         "-012",
                                         "0x10",
                                         "0X1f",
                                         "1.5",
                                         "-.5",
                                         ".5",
                                         "5.",
                                         "1e3",
                                         "1.5e-2",
                                         " 12",
                                         "\t-7",
                                         "\r8",
                                         "1 2",
                                         "70000",
                                         "-1.5",
                                         "2147483648",
                                         "4294967295",
                                         "-2147483649",
                                         "99999999999",
                                         "nan",
                                         "inf",
                                         "-",
                                         "",
                                         "x",
                                         "1,5",
                                         "00",
                                         "08",
                                         "0x",
                                         "0b1",
                                         "-0",
                                         "- 1",
                                         "123456789",
                                         "1234567890",
                                         "1.5 x",
                                         "1.5x",
                                         "1.5\f",
                                         "+1.25",
                                         "16777217",
                                         "0.1",
                                         "3.4028236e38",
                                         "123456789012345678901234567890"};

/// Elements in elements, with values, comments and line breaks in between.
std::string grown(Dice& dice, int depth) {
    std::string text;
    for (int parts = dice.below(5); parts > 0; --parts) {
        if (dice.once(6)) text += dice.pick(kFragments);
        if (dice.once(5)) text += dice.once(3) ? "<!-- x" : "<!-- <a>1</a> -->";
        if (dice.once(9)) text += "-->";
        if (dice.once(3)) text += dice.once(4) ? "\r\n" : "\n";
        const std::string name(dice.pick(kPlainNames));
        text += "<" + name + ">";
        text +=
            depth > 0 && !dice.once(3) ? grown(dice, depth - 1) : std::string(dice.pick(kNumbers));
        text += "</" + name + ">";
    }
    return text;
}

std::string soup(Dice& dice) {
    std::string text;
    for (int parts = dice.below(40); parts > 0; --parts) {
        if (dice.once(60)) text += '\0';
        text += dice.once(8) ? dice.pick(kNumbers) : dice.pick(kFragments);
    }
    return text;
}

std::string document(Dice& dice) {
    std::string text = dice.once(2) ? soup(dice) : grown(dice, 3);
    if (dice.once(8)) return text;
    const std::string before = dice.once(3) ? soup(dice) : "";
    const std::string after = dice.once(3) ? soup(dice) : "";
    const std::string feed = dice.once(4) ? "\r\n" : "\n";
    return before + "<R" + (dice.once(3) ? " x='1'>" : ">") + feed + text + feed + "</R>" + feed +
           after;
}

/// Lines of nearly the greatest length, one too long now and then, and comments and line breaks
/// wherever the blocks end in which a text is searched and moved.
std::string longDocument(Dice& dice) {
    constexpr std::string_view kParts[] = {"<a>1</a>",
                                           "<a>\n2</a>\r\n",
                                           "<b><a>3</a></b>",
                                           "<!-- x -->",
                                           "<!\n--x--\n>",
                                           "<!-- <!-- --> -->",
                                           "<!-- <a>\n4</a> -\n->",
                                           "<!-- -->-->\n",
                                           "--\n",
                                           "</R\n",
                                           "\n\n"};
    constexpr std::string_view kOdd[] = {"<!--", "\n-->", "\n</R>\n", "<!-\n"};
    constexpr std::size_t kMostChars = 4095;  // of a line
    constexpr int kBlock = 64;
    std::string text = "<R>\n";
    for (int line = 0; line < 10; ++line) {
        for (int parts = dice.below(30); parts > 0; --parts) text += dice.pick(kParts);
        const std::size_t begun = text.size() - text.rfind('\n') - 1;
        text.append(kMostChars - begun - static_cast<std::size_t>(dice.below(kBlock)), ' ');
        if (dice.once(40)) text.append(kBlock, ' ');
        text += '\n';
        if (dice.once(30)) text += dice.pick(kOdd);
    }
    return text + "\n</R>\n";
}

/// A call whose offsets lie in and around a text of about `length` bytes.
template <typename Names>
ReaderCall callOf(Dice& dice, const Names& names, int length) {
    ReaderCall call;
    call.kind = static_cast<ReaderCall::Kind>(dice.below(ReaderCall::kKinds));
    call.name = dice.pick(names);
    call.index = dice.below(6) - 1;
    call.from = dice.below(length + 40) - 20;
    call.limit = dice.once(4) ? length : dice.below(length + 40) - 20;
    call.closing = dice.once(2);
    return call;
}

/// Visits siblings one after the other as callers do, forwards, backwards or to and fro, with
/// other names in between.
template <typename Names>
bool visitSiblings(ReaderComparison& twins, Dice& dice, const Names& names) {
    const std::string name(dice.pick(names));
    const std::string other(dice.pick(names));
    const int way = dice.below(4);
    const auto call = [&](ReaderCall::Kind kind, const std::string& of, int index = 0) {
        return twins.both({kind, of, index, 0, 0, false});
    };
    for (int step = 0; step < 5; ++step) {
        const int index = way == 0 ? step : way == 1 ? 4 - step : dice.below(5);
        if (!call(ReaderCall::kAt, name, index) || !call(ReaderCall::kText, "")) return false;
        if (!call(ReaderCall::kAt, other, dice.below(3)) || !call(ReaderCall::kText, ""))
            return false;
        if (dice.once(2) && !call(ReaderCall::kUp, "")) return false;
        if (!call(ReaderCall::kLong, other) || !call(ReaderCall::kUp, "")) return false;
        if (way == 3 && !call(ReaderCall::kAt, other, step)) return false;
        if (dice.once(7) && !call(ReaderCall::kTop, "")) return false;
    }
    return true;
}

/// One twin for many documents, opened one after the other; stops at the first difference.
template <typename Names>
void compareMany(std::uint32_t firstSeed, int documents, const Names& names) {
    ReaderComparison twins;
    for (int i = 0; i < documents; ++i) {
        const std::uint32_t seed = firstSeed + static_cast<std::uint32_t>(i);
        twins.name("seed " + std::to_string(seed));
        Dice dice(seed);
        const std::string bytes = document(dice);
        const auto length = static_cast<int>(bytes.size());
        if (dice.once(50) && !twins.openMissing()) return;
        if (!twins.open(bytes, std::string(dice.pick(kRoots)))) return;
        if (!dice.once(20) && !twins.both({})) return;
        for (int calls = dice.below(30); calls > 0; --calls)
            if (!twins.both(callOf(dice, names, length))) return;
        if (!twins.both({}) || !visitSiblings(twins, dice, names)) return;
    }
}

/// Everything there is at the top, then down the first of each name.
bool walkDown(ReaderComparison& twins) {
    constexpr const char* kPath[] = {"Temperature", "Optics", "OpticsDef", "TempRanges",
                                     "TemperatureRange"};
    bool isSame = twins.both({}) && twins.both({ReaderCall::kText, "", 0, 0, 0, false});
    for (const char* const name : kPath) {
        isSame = isSame && twins.both({ReaderCall::kCount, name, 0, 0, 0, false}) &&
                 twins.both({ReaderCall::kAt, name, 1, 0, 0, false}) &&
                 twins.both({ReaderCall::kFloat, "TempHi", 0, 0, 0, false}) &&
                 twins.both({ReaderCall::kFirst, name, 0, 0, 0, false});
    }
    return isSame;
}

std::string sample(const char* name) {
    return thermika_test::readFile(std::string(THERMIKA_EXAMPLES "/") + name);
}

void comparePrefixes(const char* name, std::size_t step) {
    const std::string whole = sample(name);
    ReaderComparison twins;
    for (std::size_t length = whole.size() % step; length <= whole.size(); length += step) {
        twins.name(std::string(name) + " cut to " + std::to_string(length) + " bytes");
        if (!twins.open(whole.substr(0, length), "CaliData") || !walkDown(twins)) return;
    }
}

void compareDeletions(const char* name, std::size_t step) {
    const std::string whole = sample(name);
    ReaderComparison twins;
    for (std::size_t at = 0; at < whole.size(); at += step) {
        twins.name(std::string(name) + " without byte " + std::to_string(at));
        if (!twins.open(std::string(whole).erase(at, 1), "CaliData") || !walkDown(twins)) return;
    }
}

}  // namespace

TEST(SimpleXMLModel, agreesOnPseudoRandomDocuments) { compareMany(1, 8000, kPlainNames); }

TEST(SimpleXMLModel, agreesOnDocumentsOfManyBlocks) {
    ReaderComparison twins;
    for (std::uint32_t seed = 1; seed <= 50; ++seed) {
        twins.name("long, seed " + std::to_string(seed));
        Dice dice(seed);
        const std::string bytes = longDocument(dice);
        if (!twins.open(bytes, "R") || !twins.both({}) ||
            !twins.both({ReaderCall::kText, "", 0, 0, 0, false}))
            return;
        for (int calls = 0; calls < 5; ++calls)
            if (!twins.both(callOf(dice, kPlainNames, static_cast<int>(bytes.size())))) return;
    }
}

TEST(SimpleXMLModel, agreesOnNamesThatHoldMarkup) { compareMany(1000001, 8000, kOddNames); }

TEST(SimpleXMLModel, agreesUnderADecimalCommaLocale) {
    const thermika_test::ScopedLocale comma({{LC_ALL, thermika_test::kDecimalCommaLocale}});
    compareMany(2000001, 1500, kPlainNames);
}

TEST(SimpleXMLModel, agreesOnPrefixesOfTheLargeSample) { comparePrefixes("Cali-14080045.xml", 5); }

TEST(SimpleXMLModel, agreesOnEveryPrefixOfTheSmallSample) {
    comparePrefixes("Cali-14080046.xml", 1);
}

TEST(SimpleXMLModel, agreesOnTheLargeSampleWithAByteMissing) {
    compareDeletions("Cali-14080045.xml", 5);
}

TEST(SimpleXMLModel, agreesOnTheSmallSampleWithAnyByteMissing) {
    compareDeletions("Cali-14080046.xml", 1);
}

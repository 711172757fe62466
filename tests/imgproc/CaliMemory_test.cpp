// The calibration data when memory is short.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "imgproc/Cali.h"
#include "support/CaliDescriptions.h"
#include "support/FailingNew.h"
#include "support/LogText.h"
#include "support/TestFiles.h"

namespace thermika_test {
namespace {

constexpr int kOtherSerial = 12345679;

/// Asks every query that hands out a record; calls `ask` with each.
template <typename Ask>
void forEveryRecordQuery(Ask ask) {
    ConfigCali cali;
    OPTICS key{30, nullptr};
    ask("getOptics", [&] { return static_cast<void*>(cali.getOptics(0)); });
    ask("getTempRange by record", [&] { return static_cast<void*>(cali.getTempRange(&key, 0)); });
    ask("getTempRange", [&] { return static_cast<void*>(cali.getTempRange(30, nullptr, 0)); });
    ask("getExtendedTempRange by record",
        [&] { return static_cast<void*>(cali.getExtendedTempRange(&key, 0)); });
    ask("getExtendedTempRange",
        [&] { return static_cast<void*>(cali.getExtendedTempRange(30, nullptr, 0)); });
    ask("getExtendedTempRange by bounds",
        [&] { return static_cast<void*>(cali.getExtendedTempRange(30, nullptr, -20.0F, 100.0F)); });
    ask("getTempRangeOverAll", [&] { return static_cast<void*>(cali.getTempRangeOverAll()); });
    ask("getTempRangeOverAll of one",
        [&] { return static_cast<void*>(cali.getTempRangeOverAll(&key)); });
}

// Deliberate: a thrown character string means null, anything else propagates.
TEST(CaliMemory, handsOutNullWhenOperatorNewThrowsText) {
    forEveryRecordQuery([](const char* name, auto query) {
        const FailingNew failing(Failure::kThrowsText);
        const void* const record = query();
        EXPECT_TRUE(failing.hasFailed()) << name;
        EXPECT_EQ(record, nullptr) << name;
    });
}

TEST(CaliMemory, letsOtherAllocationFailuresOfQueriesPropagate) {
    forEveryRecordQuery([](const char* name, auto query) {
        const auto ask = [&](Failure failure) {
            const FailingNew failing(failure);
            query();
        };
        EXPECT_THROW(ask(Failure::kThrowsBadAlloc), std::bad_alloc) << name;
        EXPECT_THROW(ask(Failure::kThrowsNumber), int) << name;
    });
}

/// What must hold of any description, and reads all of what the queries walk.
void expectConsistent(ConfigCali& cali, int failed) {
    SCOPED_TRACE("allocation " + std::to_string(failed) + " failed");
    ASSERT_GE(cali.getOpticsCount(), 0);
    for (int i = 0; i < cali.getOpticsCount(); ++i) EXPECT_GE(take(cali.getOptics(i)).first, 30);
    for (const int fov : {30, 31, 62, 70}) {
        for (const char* text : {"", "A"}) {
            OPTICS key{fov, asText(text)};
            const int position = cali.getOpticsIndex(&key);
            EXPECT_EQ(cali.getTempRangeCount(&key) < 0, position < 0);
            EXPECT_LT(position, cali.getOpticsCount());
        }
    }
}

/// Without texts, so that what is left of a freed optics still looks like one.
std::string manyOptics(int first, int count) {
    std::string optics;
    for (int i = 0; i < count; ++i)
        optics += "<OpticsDef><FOV>" + std::to_string(first + i) + "</FOV></OpticsDef>\n";
    return opticsList(optics);
}

// The list of optics and the positions kept beside it must stay of one length: otherwise the next
// query reads past the list's end.
TEST(CaliMemory, staysWholeWhicheverAllocationOfALoadFails) {
    const TempDir folder;
    writeDescription(folder, kSerial, manyOptics(31, 40));
    writeDescription(folder, kOtherSerial, manyOptics(61, 3));
    int failed = 0;
    for (bool hasFailed = true; hasFailed; ++failed) {
        ASSERT_LT(failed, 10000) << "loading never ends without a failure";
        ConfigCali cali;
        ASSERT_EQ(cali.load(folder.path().c_str(), kSerial), 0);
        OPTICS last{70, nullptr};
        ASSERT_EQ(cali.getOpticsIndex(&last), 39);
        bool hasThrown = false;
        {
            const FailingNew failing(Failure::kThrowsBadAlloc, failed);
            try {
                cali.load(folder.path().c_str(), kOtherSerial);
            } catch (const std::bad_alloc&) {
                hasThrown = true;
            }
            hasFailed = failing.hasFailed();
        }
        EXPECT_EQ(cali.isLoaded(kOtherSerial), !hasThrown) << failed;
        expectConsistent(cali, failed);
        EXPECT_EQ(cali.load(folder.path().c_str(), kOtherSerial), 0) << failed;
        EXPECT_EQ(cali.getOpticsCount(), 3) << failed;
    }
    EXPECT_GT(failed, 10) << "a load allocates more than that";
}

TEST(CaliMemory, keepsNoParameterOfALoadThatFailed) {
    const TempDir folder;
    writeDescription(folder, kSerial, "<Main><TecA>7</TecA></Main>" + manyOptics(31, 3));
    writeDescription(folder, kOtherSerial, manyOptics(61, 3));
    for (int failed = 0;; ++failed) {
        ASSERT_LT(failed, 10000) << "loading never ends without a failure";
        ConfigCali cali;
        try {
            const FailingNew failing(Failure::kThrowsBadAlloc, failed);
            cali.load(folder.path().c_str(), kSerial);
            EXPECT_GT(failed, 10) << "a load allocates more than that";
            break;
        } catch (const std::bad_alloc&) {
        }
        LogCapture log;
        EXPECT_EQ(cali.load(folder.path().c_str(), kOtherSerial), 0) << failed;
        EXPECT_EQ(log.all().at(2), "DEBUG [Cali] Calibration data A: 3400 B:400 C:400 D:120")
            << failed;
    }
}

}  // namespace
}  // namespace thermika_test

// Every allocation of a public operation fails once: of those that start no program.
#include "faults/EachAllocation.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "imgproc/Cali.h"
#include "sdk/IRCalibrationManager.h"
#include "sdk/IRLogger.h"
#include "sdk/Logger.h"
#include "sdk/SimpleXML.h"
#include "support/BuildPaths.h"
#include "support/TestFiles.h"

namespace {

using thermika_test::failAllocation;
using thermika_test::failEachAllocation;
using thermika_test::failNoAllocation;
using thermika_test::TempDir;
using thermika_test::writeFile;

constexpr int kManyTags = 6000;

std::string owned(char* text) {
    const std::unique_ptr<char[]> owner(text);
    return text == nullptr ? "(null)" : text;
}

class Allocation : public testing::Test {
protected:
    Allocation() {
        writeFile(m_dir / "Cali-14080045.xml", description());
        dax::IRCalibrationManager::getInstance()->setCalibrationDir(m_dir.path().c_str());
        dax::IRLogger::setVerbosity(dax::IRLOG_OFF, dax::IRLOG_OFF, nullptr);
    }

    static std::string description() {
        return thermika_test::readFile(std::string(THERMIKA_EXAMPLES) + "/Cali-14080045.xml");
    }

    TempDir m_dir;
};

TEST_F(Allocation, ofOpeningADocumentReachesTheCaller) {
    EXPECT_GT(failEachAllocation([this] {
                  dax::SimpleXML document;
                  const bool isOpen =
                      document.open((m_dir / "Cali-14080045.xml").c_str(), "CaliData");
                  return std::to_string(static_cast<int>(isOpen));
              }),
              0U);
}

TEST_F(Allocation, ofOpeningADocumentByItsPartsReachesTheCaller) {
    EXPECT_GT(failEachAllocation([this] {
                  dax::SimpleXML document;
                  std::string name = "Cali-14080045";
                  return std::to_string(static_cast<int>(
                      document.open(m_dir.path().c_str(), name.data(), "CaliData")));
              }),
              2U);
}

TEST_F(Allocation, ofReadingValuesReachesTheCaller) {
    writeFile(m_dir / "values.xml",
              "<R>\n<int>0x0000000000000000000000000000001a</int>\n"
              "<float>0000000000000000000001.5e1</float>\n<text>a long enough text</text>\n</R>\n");
    EXPECT_GT(failEachAllocation([this] {
                  dax::SimpleXML document;
                  document.open((m_dir / "values.xml").c_str(), "R");
                  document.setNode();
                  int number = 0;
                  float real = 0;
                  char* text = nullptr;
                  char* all = nullptr;
                  document.getInt("int", &number);
                  document.getFloat("float", &real);
                  document.getString("text", &text);
                  std::string answer = std::to_string(number) + " " + std::to_string(real) + " ";
                  answer += owned(text);
                  document.getNode(&all);
                  return answer + owned(all);
              }),
              4U);
}

/// What a reader that stands on the whole of the document with many tags says of it.
std::string answerOf(dax::SimpleXML& reader) {
    std::string answer = std::to_string(reader.getNodeCount("a"));
    for (const int number : {kManyTags / 2 - 1, 0, kManyTags / 4, kManyTags / 2}) {
        char* value = nullptr;
        if (reader.setNode("a", number)) {
            reader.getNode(&value);
            reader.resetNode();
        }
        answer += " " + owned(value);
    }
    return answer;
}

/// One reader opens the document anew for each allocation of `search` that fails; afterwards it has
/// to answer as a reader that never failed.
void expectAFailedSearchForgotten(const std::string& path,
                                  const std::function<void(dax::SimpleXML&)>& search) {
    dax::SimpleXML reader;
    const auto open = [&path](dax::SimpleXML& opened) {
        return opened.open(path.c_str(), "R") && opened.setNode();
    };
    std::size_t failures = 0;
    for (bool isThrown = true; isThrown; failures += isThrown ? 1 : 0) {
        dax::SimpleXML fresh;
        ASSERT_TRUE(open(fresh));
        ASSERT_TRUE(open(reader));
        isThrown = false;
        failAllocation(failures);
        try {
            search(reader);
        } catch (const std::bad_alloc&) {
            isThrown = true;
        }
        failNoAllocation();
        ASSERT_EQ(answerOf(reader), answerOf(fresh)) << "after allocation " << failures;
    }
    EXPECT_GT(failures, 3U) << "the index was meant to grow while it is built";
}

TEST_F(Allocation, ofASearchInManyTagsLeavesTheReaderAbleToSearch) {
    std::string text;
    for (int i = 0; i < kManyTags / 2; ++i) text += "<a>" + std::to_string(i) + "</a>\n";
    writeFile(m_dir / "tags.xml", "<R>\n" + text + "</R>\n");
    ASSERT_LT(text.size(), std::size_t{16} * kManyTags);
    dax::SimpleXML reader;
    ASSERT_TRUE(reader.open((m_dir / "tags.xml").c_str(), "R"));
    reader.setNode();
    ASSERT_EQ(answerOf(reader), "3000 2999 0 1500 (null)");
    expectAFailedSearchForgotten(m_dir / "tags.xml",
                                 [](dax::SimpleXML& searched) { searched.getNodeCount("a"); });
    expectAFailedSearchForgotten(m_dir / "tags.xml", [](dax::SimpleXML& searched) {
        if (searched.setNode("a", kManyTags / 4)) searched.resetNode();
    });
}

TEST_F(Allocation, ofLoadingADescriptionReachesTheCaller) {
    EXPECT_GT(failEachAllocation([this] {
                  ConfigCali cali;
                  cali.load(m_dir.path().c_str(), 14080045);
                  return std::to_string(cali.getOpticsCount());
              }),
              20U);
}

TEST_F(Allocation, ofAFailedLoadLeavesTheObjectAbleToLoad) {
    ConfigCali cali;
    for (std::size_t n = 0;; ++n) {
        failAllocation(n);
        bool isThrown = false;
        try {
            cali.load(m_dir.path().c_str(), 14080045);
        } catch (const std::bad_alloc&) {
            isThrown = true;
        }
        failNoAllocation();
        if (!isThrown) break;
        ASSERT_FALSE(cali.isLoaded(14080045)) << n;
    }
    EXPECT_TRUE(cali.isLoaded(14080045));
    EXPECT_EQ(cali.getOpticsCount(), 3);
}

TEST_F(Allocation, ofHandingOutRecordsReachesTheCaller) {
    ConfigCali cali;
    EXPECT_EQ(failEachAllocation([&] {
                  const std::unique_ptr<OPTICS> optics(cali.getOptics(0));
                  const std::unique_ptr<Range> range(cali.getTempRange(optics.get(), 0));
                  const std::unique_ptr<Range> extended(cali.getExtendedTempRange(optics.get(), 0));
                  const std::unique_ptr<Range> all(cali.getTempRangeOverAll());
                  const std::unique_ptr<Range> ofOptics(cali.getTempRangeOverAll(optics.get()));
                  return std::string(1, optics && range && extended && all && ofOptics ? 'y' : 'n');
              }),
              5U);
}

TEST_F(Allocation, ofTheManagersCreationLeavesNoManagerBehind) {
    delete dax::IRCalibrationManager::getInstance();
    EXPECT_EQ(failEachAllocation([] {
                  const std::string answer(
                      dax::IRCalibrationManager::getInstance()->getFormatsDir(), 4);
                  delete dax::IRCalibrationManager::getInstance();
                  return answer;
              }),
              4U);  // the object, its list and its two directories
}

TEST(AllocationOrder, makesAndReleasesTheListThenTheCalibrationDirectoryThenTheFormatsDirectory) {
    const auto address = [](const void* at) { return reinterpret_cast<std::uintptr_t>(at); };
    delete dax::IRCalibrationManager::getInstance();
    const thermika_test::BlockTrace trace;
    auto* const manager = dax::IRCalibrationManager::getInstance();
    const std::uintptr_t object = address(manager);
    const std::uintptr_t list = address(manager->getAvailableOptics(0));
    const std::uintptr_t calibrationDir = address(manager->getCalibrationDir());
    const std::uintptr_t formatsDir = address(manager->getFormatsDir());
    delete manager;
    using Blocks = thermika_test::BlockTrace::Blocks;
    EXPECT_EQ(trace.allocated, (Blocks{object, list, calibrationDir, formatsDir}));
    EXPECT_EQ(trace.released, (Blocks{list, calibrationDir, formatsDir, object}));
}

// A description that memory cannot hold counts as unreadable; only the document itself needs it.
TEST_F(Allocation, ofReadingADescriptionLeavesADocumentItsDefaults) {
    const auto generate = [] {
        return dax::IRCalibrationManager::getInstance()->generateConfiguration(14080045);
    };
    const std::string whole = generate();
    const std::string bytes = description();
    std::filesystem::remove(m_dir / "Cali-14080045.xml");
    const std::string unread = generate();
    ASSERT_NE(unread, whole);
    writeFile(m_dir / "Cali-14080045.xml", bytes);
    std::size_t failures = 0;
    std::size_t documents = 0;
    for (bool hasFailed = true; hasFailed; ++failures) {
        std::string text;
        failAllocation(failures);
        try {
            text = generate();
        } catch (const std::bad_alloc&) {
        }
        hasFailed = failNoAllocation();
        EXPECT_TRUE(text.empty() || text == (hasFailed ? unread : whole)) << failures;
        documents += text.empty() ? 0 : 1;
    }
    EXPECT_GE(failures, documents);
    EXPECT_LE(failures, documents + 2);
    EXPECT_GT(documents, 3U);
}

TEST_F(Allocation, ofCheckingFilesReachesTheCaller) {
    EXPECT_GT(
        failEachAllocation([] {
            return owned(dax::IRCalibrationManager::getInstance()->checkCalibration(14080045));
        }),
        5U);
}

TEST_F(Allocation, ofListingOpticsReachesTheCaller) {
    EXPECT_GT(failEachAllocation([] {
                  auto* const list =
                      dax::IRCalibrationManager::getInstance()->getAvailableOptics(14080045);
                  const std::string answer = std::to_string(list->size()) + list->back().text;
                  list->clear();
                  list->shrink_to_fit();
                  return answer;
              }),
              3U);
}

TEST_F(Allocation, ofTheLoggersLifeReachesTheCaller) {
    kelvra::Logger::releaseInstance();
    EXPECT_GT(failEachAllocation([this] {
                  struct Releaser {
                      ~Releaser() { kelvra::Logger::releaseInstance(); }
                  } releaser;
                  dax::IRLogger::setVerbosity(dax::IRLOG_OFF, dax::IRLOG_DEBUG,
                                              (m_dir / "log").c_str());
                  kelvra::Logger::getInstance()->print(0, "A long enough file name", 1,
                                                       "a message that no small string holds");
                  return std::string();
              }),
              4U);
}

}  // namespace

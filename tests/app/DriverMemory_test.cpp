// Runs out of memory in every allocation of a run of the tool.
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "support/BuildPaths.h"
#include "support/ExpectedDocument.h"
#include "support/Sandbox.h"
#include "support/TestFiles.h"
#include "support/Tool.h"
#include "support/UsbTree.h"

int thermikaMain(int argc, char** argv);

namespace {

int g_allocationsLeft = -1;  // the allocation after these fails; negative: none does

void* allocate(std::size_t bytes) {
    if (g_allocationsLeft == 0) throw std::bad_alloc();
    if (g_allocationsLeft > 0) --g_allocationsLeft;
    void* const memory = std::malloc(bytes != 0 ? bytes : 1);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

// For this executable only.
void* operator new(std::size_t bytes) { return allocate(bytes); }
void* operator new[](std::size_t bytes) { return allocate(bytes); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using thermika_test::inSandbox;
using thermika_test::RunResult;

constexpr int kMostAllocations = 500;
const RunResult kOutOfMemory{"", "out of memory\n", thermika_test::kToolFailure};

/// A run of the tool whose memory ends after so many allocations.
RunResult runWithMemoryFor(int allocations, std::string option) {
    return thermika_test::runInProcess([allocations, &option] {
        char name[] = "genconfig";
        char* argv[] = {name, option.data(), nullptr};
        g_allocationsLeft = allocations;
        const int status = thermikaMain(option.empty() ? 1 : 2, argv);
        g_allocationsLeft = -1;
        return status;
    });
}

/// Every run fails with the one message until there is memory enough.
void expectOneMessageUntilDelivered(const std::string& option) {
    thermika_test::ExpectedDocument document;
    document.serial = "14080045";
    document.fovDeg = 33;
    const RunResult delivered{document.text() + "\n", "", 0};

    std::filesystem::create_directories(document.calibrationDir);
    std::filesystem::copy(THERMIKA_EXAMPLES "/Cali-14080045.xml", document.calibrationDir);
    int allocations = 0;
    while (allocations < kMostAllocations) {
        const RunResult result = runWithMemoryFor(allocations, option);
        if (result.status == 0) {
            EXPECT_EQ(result, delivered);
            break;
        }
        EXPECT_EQ(result, kOutOfMemory) << "with memory for " << allocations << " allocations";
        ++allocations;
    }
    EXPECT_GT(allocations, 5);
    EXPECT_LT(allocations, kMostAllocations);
}

TEST(DriverMemory, endsWithOneMessageWhicheverAllocationFails) {
    inSandbox([] { expectOneMessageUntilDelivered("-d14080045"); });
}

TEST(DriverMemory, endsWithOneMessageWhicheverAllocationFailsWhileACameraIsLookedFor) {
    inSandbox([] {
        thermika_test::UsbTree bus;
        bus.addCamera("1-1", "14080045");
        expectOneMessageUntilDelivered("");
    });
}

TEST(DriverMemory, saysThatThereIsNoCameraOnceMemorySufficesToLook) {
    inSandbox([] {
        const thermika_test::UsbTree bus;
        int allocations = 0;
        RunResult result = runWithMemoryFor(allocations, "");
        for (; result == kOutOfMemory && allocations < kMostAllocations; ++allocations)
            result = runWithMemoryFor(allocations + 1, "");
        EXPECT_GT(allocations, 3);
        EXPECT_EQ(result, (RunResult{thermika_test::kNoCamera, "", thermika_test::kToolFailure}));
    });
}

}  // namespace

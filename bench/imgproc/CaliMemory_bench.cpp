// How much memory loading a description takes at its peak, and how much of that the records keep.
// A program of its own, because every allocation in it is counted.
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "imgproc/Cali.h"
#include "support/Descriptions.h"
#include "support/TemporaryFolder.h"

namespace {

std::size_t liveBytes = 0;
std::size_t peakBytes = 0;

}  // namespace

void* operator new(std::size_t bytes) {
    void* const block = std::malloc(bytes);
    if (block == nullptr) throw std::bad_alloc();
    liveBytes += malloc_usable_size(block);
    peakBytes = std::max(peakBytes, liveBytes);
    return block;
}

void operator delete(void* block) noexcept {
    liveBytes -= malloc_usable_size(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace {

void measure(const char* name, std::size_t bytes, bench::Content content) {
    const bench::TemporaryFolder folder;
    std::size_t size = 0;
    {
        const std::string text = bench::makeDescription(bytes, content);
        static_cast<void>(folder.write("Cali-2.xml", text));
        size = text.size();
    }
    ConfigCali cali;
    const std::size_t before = liveBytes;
    peakBytes = before;
    if (cali.load(folder.path().c_str(), 2) != 0) std::exit(1);
    const std::size_t records = liveBytes - before;
    const std::size_t peak = peakBytes - before;
    std::printf(
        "%-14s document %9zu, records %9zu, peak %9zu = records + %.2f x document\n", name, size,
        records, peak,
        (static_cast<double>(peak) - static_cast<double>(records)) / static_cast<double>(size));
}

}  // namespace

int main() {
    measure("11K", bench::kSmallBytes, bench::Content::kPlain);
    measure("100K", bench::kMediumBytes, bench::Content::kPlain);
    measure("1M", bench::kLargeBytes, bench::Content::kPlain);
    measure("16M", bench::kHugeBytes, bench::Content::kPlain);
    measure("comments-16M", bench::kHugeBytes, bench::Content::kComments);
    measure("sparse-16M", bench::kHugeBytes, bench::Content::kSparse);
    return 0;
}

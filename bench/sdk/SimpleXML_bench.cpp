// The reader against other XML libraries: opening a description and reading every value. Before
// anything is timed, all of them must have read the same values.
#include "sdk/SimpleXML.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "support/Descriptions.h"
#include "support/Readers.h"
#include "support/TemporaryFolder.h"

namespace {

using bench::Camera;
using bench::Content;
using bench::Reader;

constexpr std::size_t kSiblingCounts[] = {1000, 10000, 100000};

const Reader* const kReaders[] = {&bench::kSimpleXml, &bench::kRapidxml, &bench::kPugixml,
                                  &bench::kExpat,     &bench::kLibxml2,  &bench::kTinyxml2};

struct Sample {
    const char* name;
    std::size_t bytes;
    Content content;
};

constexpr Sample kSamples[] = {
    {"11K", bench::kSmallBytes, Content::kPlain},
    {"100K", bench::kMediumBytes, Content::kPlain},
    {"1M", bench::kLargeBytes, Content::kPlain},
    {"16M", bench::kHugeBytes, Content::kPlain},
    {"comments-100K", bench::kMediumBytes, Content::kComments},
    {"comments-16M", bench::kHugeBytes, Content::kComments},
    {"sparse-100K", bench::kMediumBytes, Content::kSparse},
    {"sparse-16M", bench::kHugeBytes, Content::kSparse},
};

bool readsAlike(const Sample& sample, const std::string& file) {
    Camera expected;
    if (!kReaders[0]->read(file.c_str(), expected)) return false;
    for (const Reader* const reader : kReaders) {
        Camera camera;
        if (reader->read(file.c_str(), camera) && camera == expected) continue;
        std::fprintf(stderr, "%s reads other values than SimpleXML from %s\n", reader->name,
                     sample.name);
        return false;
    }
    return expected.optics.size() >= 3 && expected.optics[2].ranges.size() == 4;
}

void read(benchmark::State& state, const Reader& reader, const std::string& file,
          std::size_t bytes) {
    for (auto _ : state) {
        Camera camera;
        if (!reader.read(file.c_str(), camera)) {
            state.SkipWithError("not read");
            break;
        }
        benchmark::DoNotOptimize(camera.optics.data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void visitSiblings(benchmark::State& state, const std::string& file, std::size_t expected) {
    dax::SimpleXML document;
    document.open(file.c_str(), "CaliData");
    for (auto _ : state) {
        document.setNode();
        const int count = document.getNodeCount("Item");
        int visited = 0;
        for (int i = 0; i < count; ++i) {
            if (!document.setNode("Item", i)) break;
            ++visited;
            document.resetNode();
        }
        if (static_cast<std::size_t>(visited) != expected) {
            state.SkipWithError("a sibling was not visited");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(expected));
}

}  // namespace

int main(int argc, char** argv) {
    const bench::TemporaryFolder folder;
    for (const Sample& sample : kSamples) {
        const std::string text = bench::makeDescription(sample.bytes, sample.content);
        const std::string file = folder.write(std::string(sample.name) + ".xml", text);
        if (!readsAlike(sample, file)) return 1;
        const std::size_t bytes = text.size();
        for (const Reader* const reader : kReaders) {
            const std::string name = std::string("/") + sample.name + "/" + reader->name;
            benchmark::RegisterBenchmark(("read" + name).c_str(), read, *reader, file, bytes);
        }
    }
    for (const std::size_t count : kSiblingCounts) {
        const std::string number = std::to_string(count);
        const std::string file =
            folder.write("siblings-" + number + ".xml", bench::makeSiblings(count));
        benchmark::RegisterBenchmark(("siblings/" + number).c_str(), visitSiblings, file, count);
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

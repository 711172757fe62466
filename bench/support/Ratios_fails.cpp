// A comparison whose first contestant fails: bench/run must see it fail before it trusts the
// others.
#include <benchmark/benchmark.h>

#include "support/Ratios.h"

namespace {

void failing(benchmark::State& state) {
    state.SkipWithError("fails on purpose");
    for (auto _ : state) break;
}

void working(benchmark::State& state) {
    for (auto _ : state) benchmark::ClobberMemory();
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("group/ours", failing);
    benchmark::RegisterBenchmark("group/theirs", working);
    return bench::runAndCompare(argc, argv);
}

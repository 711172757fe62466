#include "support/Ratios.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace bench {

namespace {

struct Contestant {
    std::int64_t number;  ///< in the order of registration
    std::string name;
    double seconds;  ///< of the processor, in the shortest of its repetitions
};

class Comparison : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred) complain(run.run_name.function_name + ": " + run.error_message);
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const std::string& name = run.run_name.function_name;
            const std::size_t slash = name.rfind('/');
            add(name.substr(0, slash),
                {run.family_index, name.substr(slash + 1),
                 run.cpu_accumulated_time / static_cast<double>(run.iterations)});
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        for (auto& [name, contestants] : m_groups) {
            std::sort(contestants.begin(), contestants.end(),
                      [](const auto& a, const auto& b) { return a.number < b.number; });
            if (contestants.size() < 2) complain(name + ": nothing to compare with");
            const Contestant& first = contestants.front();
            std::printf("%s: %s %.3g us", name.c_str(), first.name.c_str(), first.seconds * 1e6);
            for (auto other = contestants.begin() + 1; other != contestants.end(); ++other)
                std::printf(", %.2f x %s", first.seconds / other->seconds, other->name.c_str());
            std::printf("\n");
        }
        if (m_groups.empty()) complain("nothing was measured");
    }

    bool hasFailed() const { return m_hasFailed; }

private:
    using Contestants = std::vector<Contestant>;

    void complain(const std::string& what) {
        std::fprintf(stderr, "%s\n", what.c_str());
        m_hasFailed = true;
    }

    void add(const std::string& group, const Contestant& run) {
        Contestants& contestants = m_groups[group];
        const auto known =
            std::find_if(contestants.begin(), contestants.end(),
                         [&](const Contestant& each) { return each.number == run.number; });
        if (known == contestants.end())
            contestants.push_back(run);
        else
            known->seconds = std::min(known->seconds, run.seconds);
    }

    std::map<std::string, Contestants> m_groups;
    bool m_hasFailed = false;
};

}  // namespace

int runAndCompare(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    benchmark::Shutdown();
    return comparison.hasFailed() ? 1 : 0;
}

}  // namespace bench

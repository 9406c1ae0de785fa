#include "bench/comparison.h"

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <map>

namespace atdp::bench {
namespace {

constexpr char kSeparator = '|';  // between work and contestant in a benchmark's name

std::string benchmarkName(const Comparison& comparison, const Contestant& contestant) {
    return comparison.work + kSeparator + contestant.name;
}

void run(benchmark::State& state, const Contestant& contestant) try {
    const Work work = contestant.prepare();
    for (auto _ : state) state.SetIterationTime(work());
} catch (const std::exception& error) {
    state.SkipWithError(error.what());
}

// Keeps the times of all repetitions.
class Times final : public benchmark::BenchmarkReporter {
 public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& one : runs) {
            if (one.run_type != Run::RT_Iteration) continue;
            if (one.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", one.run_name.function_name.c_str(),
                             one.error_message.c_str());
                hasFailed_ = true;
                continue;
            }
            seconds_[one.run_name.function_name].push_back(one.real_accumulated_time /
                                                           static_cast<double>(one.iterations));
        }
    }

    bool hasFailed() const { return hasFailed_; }

    // 0 where nothing was timed.
    double median(const std::string& name) const { return quantile(name, 2); }
    double least(const std::string& name) const { return quantile(name, 0); }

 private:
    // So many quarters of the times are less.
    double quantile(const std::string& name, std::size_t quarters) const {
        const auto found = seconds_.find(name);
        if (found == seconds_.end()) return 0;
        std::vector<double> sorted = found->second;
        std::sort(sorted.begin(), sorted.end());
        return sorted[(sorted.size() - 1) * quarters / 4];
    }

    std::map<std::string, std::vector<double>> seconds_;
    bool hasFailed_ = false;
};

void print(const Comparison& comparison, const Times& times) {
    const std::string ours = benchmarkName(comparison, comparison.contestants.front());
    if (times.median(ours) == 0) return;
    for (std::size_t i = 1; i < comparison.contestants.size(); ++i) {
        const std::string other = benchmarkName(comparison, comparison.contestants[i]);
        std::printf("| %s | %.3f | %s | %.3f | %.2f | %.2f |\n", comparison.work.c_str(),
                    1e3 * times.median(ours), comparison.contestants[i].name.c_str(),
                    1e3 * times.median(other), times.median(other) / times.median(ours),
                    times.least(other) / times.least(ours));
    }
    std::fflush(stdout);
}

}  // namespace

// One comparison after the other, so that what else the machine does at the time bears on all
// contestants of one alike.
int compare(const std::vector<Comparison>& comparisons, int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    std::printf("| Work | ours, ms | other | other, ms | ratio of medians | of minima |\n");
    std::printf("|---|---|---|---|---|---|\n");
    Times times;
    for (const Comparison& comparison : comparisons) {
        for (const Contestant& contestant : comparison.contestants) {
            auto* const added = benchmark::RegisterBenchmark(
                benchmarkName(comparison, contestant).c_str(),
                [&](benchmark::State& state) { run(state, contestant); });
            added->UseManualTime();
            if (comparison.isDoneOnce) added->Iterations(1);
        }
        benchmark::RunSpecifiedBenchmarks(&times);
        benchmark::ClearRegisteredBenchmarks();
        print(comparison, times);
    }
    return times.hasFailed() ? 1 : 0;
}

double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

}  // namespace atdp::bench

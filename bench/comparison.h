// Benchmarks that belong together: the same work, done by each decoder that can do it.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace atdp::bench {

// Does the work once and answers the seconds of processor time that it took.
using Work = std::function<double()>;

struct Contestant {
    std::string name;
    std::function<Work()> prepare;  // not timed
};

struct Comparison {
    std::string work;
    std::vector<Contestant> contestants;  // ours first

    // Does the work once in each repetition, for times that are a small part of the work. Else it
    // is done until the times add up.
    bool isDoneOnce = false;
};

// Runs all of them in turns with Google Benchmark, whose flags argv may hold, and prints a table of
// medians and of the ratios of others to ours. 1 where a benchmark fails.
int compare(const std::vector<Comparison>& comparisons, int argc, char** argv);

// Of this thread, so that other programs disturb little. In seconds.
double processorTime();

}  // namespace atdp::bench

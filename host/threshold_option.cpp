#include "host/threshold_option.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <limits>
#include <string>

#include "host/number_text.h"

namespace atdp::host {
namespace {

// What is wrong with a number of decibels; nothing when it is one. A decoder takes it as a float.
std::string whyNoLevel(const std::string& text) {
    const auto decibels = finiteNumber(text);
    if (decibels && std::fabs(*decibels) <= double{std::numeric_limits<float>::max()}) return {};
    return "'" + text + "' is not a number of decibels";
}

}  // namespace

void addThresholdOption(CLI::App& command, std::optional<double>& thresholdDb) {
    command
        .add_option("--threshold-db", thresholdDb,
                    "Level relative to full scale, such as -60, below which leading and\n"
                    "trailing sound counts as silence and is cut from MPEG files; known\n"
                    "gapless counts win over it; 0 is off")
        ->check(CLI::Validator(whyNoLevel, "DB"));
}

}  // namespace atdp::host

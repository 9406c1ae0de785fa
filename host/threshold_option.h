// --threshold-db, the same for every command that opens files.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>

namespace atdp::host {

// Leaves `thresholdDb` without a value when the option is not given.
void addThresholdOption(CLI::App& command, std::optional<double>& thresholdDb);

}  // namespace atdp::host

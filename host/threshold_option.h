// --threshold-db, the same for every command that opens files.
#pragma once

#include <optional>

namespace CLI {
class App;
}

namespace atdp::host {

// Leaves `thresholdDb` without a value when the option is not given.
void addThresholdOption(CLI::App& command, std::optional<double>& thresholdDb);

}  // namespace atdp::host

// The commands of the program, one file each.
#pragma once

#include <functional>

#include "host/plugin_module.h"

namespace CLI {
class App;
}

namespace atdp::host {

// What the command line asked for; answers the exit code. Set while the line is parsed, and run
// once the module is loaded.
using Command = std::function<int(PluginModule&)>;

// Each adds its command to the line's grammar.
void addDescribeCommand(CLI::App& app, Command& chosen);
void addProbeCommand(CLI::App& app, Command& chosen);
void addInfoCommand(CLI::App& app, Command& chosen);
void addDecodeCommand(CLI::App& app, Command& chosen);
void addPlayCommand(CLI::App& app, Command& chosen);
void addEdgesCommand(CLI::App& app, Command& chosen);

}  // namespace atdp::host

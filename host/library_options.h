// FILE and --jobs: what many files to work on, and how many of them at once.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace atdp::host {

struct LibraryOptions {
    std::vector<std::string> paths;  // of files and folders
    std::uint32_t jobs = 1;
};

// Sets `jobs` to the number of processor cores, for when the line says nothing.
void addLibraryOptions(CLI::App& command, LibraryOptions& options);

}  // namespace atdp::host

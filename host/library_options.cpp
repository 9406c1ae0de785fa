#include "host/library_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <thread>

namespace atdp::host {
namespace {

constexpr std::uint32_t kMostJobs = 256;  // each holds files open

}  // namespace

void addLibraryOptions(CLI::App& command, LibraryOptions& options) {
    options.jobs = std::clamp(std::thread::hardware_concurrency(), 1u, kMostJobs);
    command
        .add_option("FILE", options.paths,
                    "Sound files, and folders that are searched for them to their depths")
        ->required()
        ->type_name("PATH");
    command
        .add_option("-j,--jobs", options.jobs,
                    "Files to work on at once, at most 256; else as many as there are\n"
                    "processor cores")
        ->check(CLI::Range(1u, kMostJobs).description("N"));
}

}  // namespace atdp::host

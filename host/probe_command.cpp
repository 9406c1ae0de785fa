// atdp probe: which class decodes a file.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <string>

#include "host/commands.h"
#include "host/console.h"
#include "host/library_options.h"
#include "host/library_work.h"
#include "host/opened_file.h"
#include "host/stop_signal.h"
#include "host/text_escape.h"

namespace atdp::host {
namespace {

FileResult probeFile(PluginModule& module, const SoundNames& sounds, const LibraryFile& file) {
    const DecoderClass* const found = module.plugin().findDecoderClassByPath(file.path);
    FileResult result;
    result.text =
        printableText(file.path) + ": " + (found != nullptr ? found->name : "none") + "\n";
    if (found != nullptr) return result;
    result.outcome = isOtherFile(module, sounds, file) ? Outcome::kNotSound : Outcome::kFailed;
    if (const auto problem = whyUnreadable(file.path)) result.error = file.path + ": " + *problem;
    return result;
}

int probe(PluginModule& module, const LibraryOptions& options) {
    catchStopSignals();
    const SoundNames sounds(module);
    const Library library = findFiles(options.paths);
    LibraryProgress progress(library.files.size(), ::isatty(STDOUT_FILENO) != 1);
    const auto look = [&](const LibraryFile& file) { return probeFile(module, sounds, file); };
    const auto show = [](const LibraryFile&, const FileResult& result) { print(result.text); };
    return workThrough(library, options.jobs, {look, show, ""}, progress);
}

}  // namespace

void addProbeCommand(CLI::App& app, Command& chosen) {
    CLI::App* const command =
        app.add_subcommand("probe", "Show which class decodes each file, or none");
    const auto options = std::make_shared<LibraryOptions>();
    addLibraryOptions(*command, *options);
    command->callback([&chosen, options] {
        chosen = [options](PluginModule& module) { return probe(module, *options); };
    });
}

}  // namespace atdp::host

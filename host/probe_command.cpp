// atdp probe: which class decodes a file.
#include <memory>
#include <string>
#include <vector>

#include "host/commands.h"
#include "host/console.h"
#include "host/exit_codes.h"
#include "host/opened_file.h"
#include "host/text_escape.h"

namespace atdp::host {
namespace {

int probe(PluginModule& module, const std::vector<std::string>& paths) {
    int exitCode = kExitOk;
    for (const std::string& path : paths) {
        const DecoderClass* const found = module.plugin().findDecoderClassByPath(path);
        print(printableText(path) + ": " + (found != nullptr ? found->name : "none") + "\n");
        if (found != nullptr) continue;
        exitCode = kExitFailed;
        if (const auto problem = whyUnreadable(path)) printError(path + ": " + *problem);
    }
    return exitCode;
}

}  // namespace

void addProbeCommand(CLI::App& app, Command& chosen) {
    CLI::App* const command =
        app.add_subcommand("probe", "Show which class decodes each file, or none");
    const auto paths = std::make_shared<std::vector<std::string>>();
    command->add_option("FILE", *paths, "Sound files")->required()->type_name("PATH");
    command->callback([&chosen, paths] {
        chosen = [paths](PluginModule& module) { return probe(module, *paths); };
    });
}

}  // namespace atdp::host

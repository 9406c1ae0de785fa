// atdp info: what each file says of itself.
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/commands.h"
#include "host/console.h"
#include "host/exit_codes.h"
#include "host/failure.h"
#include "host/file_facts.h"
#include "host/number_text.h"
#include "host/threshold_option.h"

namespace atdp::host {
namespace {

struct InfoOptions {
    std::vector<std::string> paths;
    bool asJson = false;
    std::optional<double> thresholdDb;
    std::optional<double> release;
};

std::string whyNoRelease(const std::string& text) {
    return finiteNumber(text) ? "" : "'" + text + "' is not a number";
}

int info(PluginModule& module, const InfoOptions& options) {
    int exitCode = kExitOk;
    if (options.release) module.setRelease(*options.release);
    auto facts = nlohmann::ordered_json::array();
    for (const std::string& path : options.paths) {
        std::string text;
        try {
            OpenedFile file = openFile(module, path, options.thresholdDb);
            if (options.asJson) {
                facts.push_back(factsAsJson(file));
            } else {
                text = factsAsText(file);
            }
        } catch (const Failure& failure) {
            printError(failure.what());
            exitCode = kExitFailed;
        }
        print(text);
    }
    if (options.asJson) print(facts.dump(2) + "\n");
    return exitCode;
}

}  // namespace

void addInfoCommand(CLI::App& app, Command& chosen) {
    CLI::App* const command = app.add_subcommand("info", "Show what each file says of itself");
    const auto options = std::make_shared<InfoOptions>();
    command->add_flag("--json", options->asJson, "Write a JSON array with an object a file");
    command->add_option("FILE", options->paths, "Sound files")->required()->type_name("PATH");
    addThresholdOption(*command, options->thresholdDb);
    command
        ->add_option("--release", options->release,
                     "The platform's release that the module is to believe in; below 1138\n"
                     "it reads the tags of Apple Lossless files from their atoms as well")
        ->check(CLI::Validator(whyNoRelease, "RELEASE"));
    command->footer(
        "The bit rate (bitRate) is in bytes per second, of the file's own uncompressed samples;\n"
        "0 for compressed files. durationNs is in nanoseconds.");
    command->callback([&chosen, options] {
        chosen = [options](PluginModule& module) { return info(module, *options); };
    });
}

}  // namespace atdp::host

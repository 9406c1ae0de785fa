// atdp edges: what is cut from the ends of a file.
#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "host/commands.h"
#include "host/console.h"
#include "host/edge_measurement.h"
#include "host/edge_picture.h"
#include "host/exit_codes.h"
#include "host/output_file.h"
#include "host/stop_signal.h"
#include "host/text_escape.h"
#include "host/threshold_option.h"

namespace atdp::host {
namespace {

struct EdgesOptions {
    std::string path;
    std::string picturePath;  // empty: no picture
    std::optional<double> thresholdDb;
};

bool isCut(const EdgeCut& cut) {
    return cut.countedFrames + cut.silentFrames > 0;
}

std::string measurementText(const EdgeMeasurement& edges) {
    const std::string name = printableText(edges.path) + "\n";
    if (!isCut(edges.start) && !isCut(edges.end)) return name + "  nothing is cut\n";
    return name + "  start: " + edgeCutText(edges.start, edges.rate) + "\n" +
           "  end:   " + edgeCutText(edges.end, edges.rate) + "\n";
}

int edges(PluginModule& module, const EdgesOptions& options) {
    catchStopSignals();
    std::optional<OutputFile> output;
    if (!options.picturePath.empty()) {
        checkInputIsKept(options.picturePath, options.path);
        output.emplace(options.picturePath);
    }
    const EdgeMeasurement measured = measureEdges(module, options.path, options.thresholdDb);
    if (output) {
        const std::string picture = edgePicture(measured);
        output->write(std::as_bytes(std::span(picture)));
        output->commit();
    }
    if (options.picturePath != "-") print(measurementText(measured));
    return kExitOk;
}

}  // namespace

void addEdgesCommand(CLI::App& app, Command& chosen) {
    CLI::App* const command =
        app.add_subcommand("edges", "Show what is cut from both ends of a file");
    const auto options = std::make_shared<EdgesOptions>();
    command->add_option("FILE", options->path, "Sound file")->required()->type_name("PATH");
    command
        ->add_option("-o", options->picturePath,
                     "SVG picture of the first and the last second to write; - for standard\n"
                     "output, instead of the text")
        ->type_name("PATH");
    addThresholdOption(*command, options->thresholdDb);
    command->footer(
        "Frames are cut by counts when the file tells how many were put around its sound, and by\n"
        "threshold when they are silent. Decodes the whole file.");
    command->callback([&chosen, options] {
        chosen = [options](PluginModule& module) { return edges(module, *options); };
    });
}

}  // namespace atdp::host

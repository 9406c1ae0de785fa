// atdp info: what each file says of itself.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>

#include "host/commands.h"
#include "host/console.h"
#include "host/file_facts.h"
#include "host/library_options.h"
#include "host/library_work.h"
#include "host/number_text.h"
#include "host/stop_signal.h"
#include "host/text_escape.h"
#include "host/threshold_option.h"

namespace atdp::host {
namespace {

struct InfoOptions {
    LibraryOptions library;
    bool asJson = false;
    bool asJsonLines = false;
    std::optional<double> thresholdDb;
    std::optional<double> release;
};

std::string whyNoRelease(const std::string& text) {
    return finiteNumber(text) ? "" : "'" + text + "' is not a number";
}

// An element of a JSON array, as it stands there.
std::string indented(const std::string& json) {
    std::string text = "  ";
    for (const char character : json) {
        text += character;
        if (character == '\n') text += "  ";
    }
    return text;
}

std::string factsAsWanted(OpenedFile& file, const InfoOptions& options) {
    if (options.asJsonLines) return factsAsJson(file).dump() + "\n";
    if (options.asJson) return indented(factsAsJson(file).dump(2));
    return factsAsText(file);
}

// A failed file among the lines of JSON. Its error line starts with its path, mostly.
std::string failureAsJson(const std::string& path, const std::string& error) {
    const bool namesPath = error.starts_with(path + ": ");
    const std::string reason = namesPath ? error.substr(path.size() + 2) : error;
    const nlohmann::ordered_json object = {{"path", validUtf8(path)}, {"error", validUtf8(reason)}};
    return object.dump() + "\n";
}

class InfoOutput {
 public:
    explicit InfoOutput(const InfoOptions& options) : options_(options) {}

    void add(const LibraryFile& file, const FileResult& result) {
        if (options_.asJsonLines && result.outcome == Outcome::kFailed)
            print(failureAsJson(file.path, result.error));
        if (result.outcome != Outcome::kDone) return;
        if (options_.asJson) print(isEmpty_ ? "[\n" : ",\n");
        print(result.text);
        isEmpty_ = false;
    }

    void finish() {
        if (options_.asJson) print(isEmpty_ ? "[]\n" : "\n]\n");
    }

 private:
    const InfoOptions& options_;
    bool isEmpty_ = true;
};

int info(PluginModule& module, const InfoOptions& options) {
    catchStopSignals();
    if (options.release) module.setRelease(*options.release);
    const SoundNames sounds(module);
    const Library library = findFiles(options.library.paths);
    // What is printed to a terminal shows how far it is.
    LibraryProgress progress(library.files.size(), ::isatty(STDOUT_FILENO) != 1);
    InfoOutput output(options);
    const auto look = [&](const LibraryFile& found) -> FileResult {
        if (isOtherFile(module, sounds, found)) return {Outcome::kNotSound, {}, {}};
        OpenedFile file = openFile(module, found.path, options.thresholdDb);
        progress.addSound(static_cast<double>(file.decoder->getDuration()) / 1e9);
        return {Outcome::kDone, factsAsWanted(file, options), {}};
    };
    const auto deliver = [&](const LibraryFile& file, const FileResult& result) {
        output.add(file, result);
    };
    const int exitCode = workThrough(library, options.library.jobs,
                                     {look, deliver, library.hasFolders ? "shown" : ""}, progress);
    output.finish();
    return exitCode;
}

}  // namespace

void addInfoCommand(CLI::App& app, Command& chosen) {
    CLI::App* const command = app.add_subcommand("info", "Show what each file says of itself");
    const auto options = std::make_shared<InfoOptions>();
    CLI::Option* const json =
        command->add_flag("--json", options->asJson, "Write a JSON array with an object a file");
    command
        ->add_flag("--json-lines", options->asJsonLines,
                   "Write a JSON object a line for each file, in UTF-8; that of a failed file\n"
                   "has its path and an error")
        ->excludes(json);
    addLibraryOptions(*command, options->library);
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

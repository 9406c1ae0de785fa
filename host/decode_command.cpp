// atdp decode: the samples of files, written to others.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/commands.h"
#include "host/exit_codes.h"
#include "host/failure.h"
#include "host/file_decode.h"
#include "host/library_decode.h"
#include "host/library_options.h"
#include "host/number_text.h"
#include "host/output_file.h"
#include "host/progress_bar.h"
#include "host/stop_signal.h"
#include "host/threshold_option.h"

namespace atdp::host {
namespace {

constexpr std::uint32_t kMostRequestFrames = 1 << 20;

struct DecodeCommandOptions {
    LibraryOptions library;
    std::string outputPath;  // empty: named after the input
    bool force = false;
    DecodeOptions decode;
};

bool isFolder(const std::string& path) {
    std::error_code ignored;  // of paths that do not exist
    return std::filesystem::is_directory(path, ignored);
}

std::string outputPathFor(const std::string& path, const DecodeCommandOptions& options) {
    if (!options.outputPath.empty()) return options.outputPath;
    const std::filesystem::path stem = std::filesystem::path(path).stem();
    return stem.string() + (options.decode.raw ? ".raw" : ".wav");
}

void checkOutputPath(const std::string& outputPath, const std::string& inputPath, bool replaces) {
    if (outputPath == "-") {
        if (::isatty(STDOUT_FILENO) == 1)
            throw UsageError("standard output: will not write sound to a terminal");
        return;
    }
    checkInputIsKept(outputPath, inputPath);
    std::error_code ignored;  // of paths that do not exist
    if (!replaces && std::filesystem::exists(outputPath, ignored)) {
        throw Failure(outputPath, "exists already (to replace it, name it with -o)");
    }
}

int decodeOne(PluginModule& module, const std::string& path, const DecodeCommandOptions& options) {
    if (isFolder(path)) {
        throw Failure(path,
                      "is a directory (to decode the files in it, name a folder for the "
                      "results with -o DIR/)");
    }
    const std::string outputPath = outputPathFor(path, options);
    checkOutputPath(outputPath, path, options.force || !options.outputPath.empty());
    FileDecode decode(module, path, options.decode);
    ProgressBar progress(decode.expectedFrames());
    decode.writeTo(outputPath, [&](std::uint64_t framesDone) { progress.update(framesDone); });
    return kExitOk;
}

int decode(PluginModule& module, const DecodeCommandOptions& options) {
    catchStopSignals();
    if (options.outputPath.ends_with('/') || isFolder(options.outputPath)) {
        return decodeLibrary(module,
                             {options.library, options.outputPath, options.force, options.decode});
    }
    const std::vector<std::string>& paths = options.library.paths;
    if (paths.size() == 1) return decodeOne(module, paths.front(), options);
    throw UsageError("several files need a folder for their results (-o DIR/)");
}

// What is wrong with a number of seconds; nothing when it is one.
std::string whyNoTime(const std::string& text) {
    if (finiteNumber(text).value_or(-1) >= 0) return {};
    return "'" + text + "' is not a number of seconds from 0 up";
}

}  // namespace

void addDecodeCommand(CLI::App& app, Command& chosen) {
    const std::map<std::string, SampleEncoding> encodings = {
        {"f32", SampleEncoding::kFloat32},
        {"s16", SampleEncoding::kSigned16},
        {"s24", SampleEncoding::kSigned24},
    };
    const CLI::Validator isTime(whyNoTime, "SECONDS");
    CLI::App* const command = app.add_subcommand("decode", "Write the samples of files");
    const auto options = std::make_shared<DecodeCommandOptions>();
    DecodeOptions& decoding = options->decode;
    addLibraryOptions(*command, options->library);
    command
        ->add_option("-o", options->outputPath,
                     "File to write, or to replace; - for standard output; else FILE's name\n"
                     "with .wav (.raw for --raw), in the working directory. A folder (DIR/, or\n"
                     "one that exists) takes the results of many files")
        ->type_name("PATH");
    command->add_flag("--force", options->force,
                      "Replace results that exist; in a folder, also those that are complete");
    command->add_flag("--raw", decoding.raw,
                      "Write interleaved little-endian samples without a header");
    const auto setEncoding = [options, encodings](const std::string& name) {
        options->decode.encoding = encodings.at(name);
    };
    command
        ->add_option_function<std::string>("--encoding", setEncoding,
                                           "f32 (the default), s16 or s24")
        ->check(CLI::IsMember(encodings).description("NAME"));
    command->add_option("--from", decoding.fromSeconds, "Start here")->check(isTime);
    command->add_option("--for", decoding.forSeconds, "Decode this much")->check(isTime);
    command->add_option("--request", decoding.requestFrames, "Frames to decode at a time")
        ->check(CLI::Range(1u, kMostRequestFrames).description("FRAMES"));
    addDeliveryOptions(*command, decoding.delivery);
    addThresholdOption(*command, decoding.thresholdDb);
    command->footer(
        "Into a folder, the folders below a named folder are kept. A result that is no older than\n"
        "its file is complete and skipped, whatever file and options it was made of: decoding\n"
        "that was stopped goes on when it is started again. An older one is not replaced.\n"
        "Where two sound files differ in their extensions alone, results have the whole names:\n"
        "a.mp3.wav and a.aiff.wav.");
    command->callback([&chosen, options] {
        chosen = [options](PluginModule& module) { return decode(module, *options); };
    });
}

}  // namespace atdp::host

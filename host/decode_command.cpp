// atdp decode: the samples of a file, written to another.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/commands.h"
#include "host/delivery_options.h"
#include "host/exit_codes.h"
#include "host/failure.h"
#include "host/frame_reader.h"
#include "host/number_text.h"
#include "host/output_file.h"
#include "host/progress_bar.h"
#include "host/stop_signal.h"
#include "host/threshold_option.h"
#include "host/wav_writer.h"

namespace atdp::host {
namespace {

constexpr std::uint32_t kMostRequestFrames = 1 << 20;

struct DecodeOptions {
    std::string path;
    std::string outputPath;  // empty: named after the input
    bool raw = false;
    SampleEncoding encoding = SampleEncoding::kFloat32;
    double fromSeconds = 0;
    std::optional<double> forSeconds;  // nothing: to the end
    std::uint32_t requestFrames = 0;   // 0: what the decoder prefers
    DeliveryOptions delivery;
    std::optional<double> thresholdDb;
};

std::string outputPathFor(const DecodeOptions& options) {
    if (!options.outputPath.empty()) return options.outputPath;
    const std::filesystem::path stem = std::filesystem::path(options.path).stem();
    return stem.string() + (options.raw ? ".raw" : ".wav");
}

void checkOutputPath(const std::string& outputPath, const std::string& inputPath, bool isNamed) {
    if (outputPath == "-") {
        if (::isatty(STDOUT_FILENO) == 1)
            throw UsageError("standard output: will not write sound to a terminal");
        return;
    }
    checkInputIsKept(outputPath, inputPath);
    std::error_code ignored;  // of paths that do not exist
    if (!isNamed && std::filesystem::exists(outputPath, ignored)) {
        throw Failure(outputPath, "exists already (to replace it, name it with -o)");
    }
}

std::uint64_t framesIn(double seconds, float rate) {
    constexpr double kMost = 0x1p62;  // more than any file has
    return static_cast<std::uint64_t>(std::min(std::round(seconds * double{rate}), kMost));
}

// Where decoded frames go: a WAV file, or samples and nothing else.
class SampleSink {
 public:
    SampleSink(OutputFile& output, const DecodeOptions& options, const FrameReader& reader)
        : output_(output), encoding_(options.encoding) {
        if (options.raw) return;
        if (reader.channels() > kMostWavFrameBytes / bytesPerSample(encoding_)) {
            throw Failure(options.path, std::to_string(reader.channels()) +
                                            " channels are too many for a WAV file (use --raw)");
        }
        wav_.emplace(output, encoding_, reader.rate(), reader.channels());
    }

    void write(std::span<const float> samples) {
        encodeSamples(samples, encoding_, bytes_);
        if (wav_) {
            wav_->write(bytes_);
        } else {
            output_.write(bytes_);
        }
    }

    void finish() {
        if (wav_) wav_->finish();
        output_.commit();
    }

 private:
    OutputFile& output_;
    SampleEncoding encoding_;
    std::optional<WavWriter> wav_;
    std::vector<std::byte> bytes_;
};

void copyFrames(FrameReader& reader, SampleSink& sink, std::uint64_t mostFrames,
                ProgressBar& progress) {
    std::uint64_t framesDone = 0;
    while (framesDone < mostFrames) {
        checkForStop();
        const std::span<const float> samples = reader.next();
        if (samples.empty()) return;
        const std::uint64_t frames =
            std::min<std::uint64_t>(samples.size() / reader.channels(), mostFrames - framesDone);
        sink.write(samples.first(frames * reader.channels()));
        framesDone += frames;
        progress.update(framesDone);
    }
}

int decode(PluginModule& module, const DecodeOptions& options) {
    catchStopSignals();
    const std::string outputPath = outputPathFor(options);
    checkOutputPath(outputPath, options.path, !options.outputPath.empty());
    OpenedFile file = openFile(module, options.path, options.thresholdDb);
    applyDelivery(file, options.delivery);
    FrameReader reader(file, module.log(), options.requestFrames);
    const std::uint64_t fromFrame = framesIn(options.fromSeconds, reader.rate());
    std::uint64_t mostFrames = std::numeric_limits<std::uint64_t>::max();
    if (options.forSeconds) mostFrames = framesIn(*options.forSeconds, reader.rate());

    OutputFile output(outputPath);
    SampleSink sink(output, options, reader);
    ProgressBar progress(std::min(static_cast<double>(mostFrames),
                                  reader.fileFrames() - static_cast<double>(fromFrame)));
    if (fromFrame > 0) reader.startAt(fromFrame);
    copyFrames(reader, sink, mostFrames, progress);
    sink.finish();
    return kExitOk;
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
    CLI::App* const command = app.add_subcommand("decode", "Write the samples of a file");
    const auto options = std::make_shared<DecodeOptions>();
    command->add_option("FILE", options->path, "Sound file")->required()->type_name("PATH");
    command
        ->add_option("-o", options->outputPath,
                     "File to write, - for standard output; else FILE's name with .wav (.raw\n"
                     "for --raw), in the working directory")
        ->type_name("PATH");
    command->add_flag("--raw", options->raw,
                      "Write interleaved little-endian samples without a header");
    const auto setEncoding = [options, encodings](const std::string& name) {
        options->encoding = encodings.at(name);
    };
    command
        ->add_option_function<std::string>("--encoding", setEncoding,
                                           "f32 (the default), s16 or s24")
        ->check(CLI::IsMember(encodings).description("NAME"));
    command->add_option("--from", options->fromSeconds, "Start here")->check(isTime);
    command->add_option("--for", options->forSeconds, "Decode this much")->check(isTime);
    command->add_option("--request", options->requestFrames, "Frames to decode at a time")
        ->check(CLI::Range(1u, kMostRequestFrames).description("FRAMES"));
    addDeliveryOptions(*command, options->delivery);
    addThresholdOption(*command, options->thresholdDb);
    command->callback([&chosen, options] {
        chosen = [options](PluginModule& module) { return decode(module, *options); };
    });
}

}  // namespace atdp::host

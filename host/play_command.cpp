// atdp play: files through the sound device, one after the other without a gap.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/commands.h"
#include "host/console.h"
#include "host/delivery_options.h"
#include "host/exit_codes.h"
#include "host/failure.h"
#include "host/frame_reader.h"
#include "host/number_text.h"
#include "host/sound_device.h"
#include "host/stop_signal.h"
#include "host/terminal_line.h"
#include "host/threshold_option.h"

namespace atdp::host {
namespace {

struct PlayOptions {
    std::vector<std::string> paths;
    DeliveryOptions delivery;
    std::optional<double> thresholdDb;
};

void showPosition(TerminalLine& line, OpenedFile& file, std::uint64_t frames, float rate) {
    const double position = static_cast<double>(frames) / double{rate};
    const double length = static_cast<double>(file.decoder->getDuration()) / 1e9;
    line.show(clockText(position) + " / " + clockText(length) + "  " + file.path);
}

// Has the decoder deliver what the device takes. A device counts whole hertz: a fraction is played
// as the nearest whole rate, which nobody hears.
void fitToDevice(OpenedFile& file, SoundDevice& device) {
    SeekableFileDecoder& decoder = *file.decoder;
    const float rate = decoder.getSamplingRate();
    const std::int32_t channels = decoder.getChannels();
    const SoundFormat wanted{static_cast<std::uint32_t>(std::lround(rate)),
                             static_cast<std::uint32_t>(channels)};
    const SoundFormat taken = device.nearest(wanted).value_or(wanted);
    DeliveryOptions delivery;
    if (taken.rate != wanted.rate) delivery.rate = taken.rate;
    if (taken.channels != wanted.channels)
        delivery.channels = static_cast<std::int32_t>(taken.channels);
    applyDelivery(file, delivery);
    if (device.prepare(taken)) return;
    throw Failure(file.path, "the sound device refuses " + plainNumber(rate) + " Hz, " +
                                 std::to_string(channels) + " channels");
}

// Gives the whole file to the device. The file before it may still be playing meanwhile.
void playFile(PluginModule& module, const std::string& path, const PlayOptions& options,
              SoundDevice& device, TerminalLine& line) {
    OpenedFile file = openFile(module, path, options.thresholdDb);
    applyDelivery(file, options.delivery);
    fitToDevice(file, device);
    FrameReader reader(file, module.log());
    std::uint64_t framesGiven = 0;
    for (auto samples = reader.next(); !samples.empty(); samples = reader.next()) {
        device.play(samples);
        framesGiven += samples.size() / reader.channels();
        if (!line.isDue()) continue;
        const std::uint64_t framesHeard =
            framesGiven - std::min(framesGiven, device.framesWaiting());
        showPosition(line, file, framesHeard, reader.rate());
    }
}

int play(PluginModule& module, const PlayOptions& options) {
    catchStopSignals();
    int exitCode = kExitOk;
    SoundDevice device;
    TerminalLine line;
    for (const std::string& path : options.paths) {
        try {
            playFile(module, path, options, device, line);
        } catch (const SoundDeviceFailure&) {
            throw;
        } catch (const Failure& failure) {
            line.clear();
            printError(failure.what());
            exitCode = kExitFailed;
        }
    }
    device.drain();
    return exitCode;
}

}  // namespace

void addPlayCommand(CLI::App& app, Command& chosen) {
    CLI::App* const command =
        app.add_subcommand("play", "Play files on the sound device, without gaps between them");
    const auto options = std::make_shared<PlayOptions>();
    command->add_option("FILE", options->paths, "Sound files")->required()->type_name("PATH");
    addDeliveryOptions(*command, options->delivery);
    addThresholdOption(*command, options->thresholdDb);
    command->callback([&chosen, options] {
        chosen = [options](PluginModule& module) { return play(module, *options); };
    });
}

}  // namespace atdp::host

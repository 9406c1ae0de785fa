#include "host/delivery_options.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <string>

#include "host/failure.h"
#include "host/number_text.h"

namespace atdp::host {
namespace {

constexpr std::int32_t kMostChannels = 64;

// What is wrong with a rate; nothing when it is one. A decoder takes it as a float.
std::string whyNoRate(const std::string& text) {
    const double hertz = finiteNumber(text).value_or(0);
    if (hertz > 0 && hertz <= double{std::numeric_limits<float>::max()}) return {};
    return "'" + text + "' is not a number of hertz above 0";
}

}  // namespace

void addDeliveryOptions(CLI::App& command, DeliveryOptions& delivery) {
    command.add_option("--rate", delivery.rate, "Convert to this sampling rate")
        ->check(CLI::Validator(whyNoRate, "HZ"));
    command
        .add_option("--channels", delivery.channels, "Convert to this many channels, at most 64")
        ->check(CLI::Range(1, kMostChannels).description("N"));
}

void applyDelivery(OpenedFile& file, const DeliveryOptions& delivery) {
    if (delivery.rate) {
        const auto rate = static_cast<float>(*delivery.rate);
        if (!file.decoder->setSamplingRate(rate))
            throw Failure(file.path, "cannot be delivered at " + plainNumber(rate) + " Hz");
    }
    if (delivery.channels && !file.decoder->setChannels(*delivery.channels)) {
        throw Failure(file.path, "cannot be delivered with " + std::to_string(*delivery.channels) +
                                     " channels");
    }
}

}  // namespace atdp::host

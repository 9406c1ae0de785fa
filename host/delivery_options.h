// --rate and --channels: the sound in another form than the file's own.
#pragma once

#include <cstdint>
#include <optional>

#include "host/opened_file.h"

namespace CLI {
class App;
}

namespace atdp::host {

// What has no value stays as the file has it.
struct DeliveryOptions {
    std::optional<double> rate;  // Hz
    std::optional<std::int32_t> channels;
};

void addDeliveryOptions(CLI::App& command, DeliveryOptions& delivery);

// Tells the decoder of a freshly opened file what to deliver. Throws Failure when it cannot.
void applyDelivery(OpenedFile& file, const DeliveryOptions& delivery);

}  // namespace atdp::host

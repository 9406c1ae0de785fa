// The lossless codec alone: the fast versions of its loops give what the plain one gives, and
// nothing is written behind the samples.
#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz/contract.h"
#include "fuzz/input.h"
#include "services/codecs/alac_decoder.h"

namespace {

using namespace atdp;

constexpr float kUntouched = 12345.0F;

struct Decoded {
    std::uint32_t frames;
    std::vector<float> samples;
};

Decoded decode(const services::AlacConfig& config, const services::AlacKernels& kernels,
               services::Bytes packet) {
    const std::size_t room = std::size_t{config.frameLength} * config.channels;
    Decoded decoded{0, std::vector<float>(room + 64, kUntouched)};
    services::AlacDecoder decoder(config, kernels);
    decoded.frames = decoder.decode(packet, decoded.samples.data());
    fuzz::require(decoded.frames <= config.frameLength, "no more frames than a packet has");
    fuzz::require(
        std::all_of(decoded.samples.begin() + static_cast<std::ptrdiff_t>(room),
                    decoded.samples.end(), [](float sample) { return sample == kUntouched; }),
        "nothing is written behind the samples");
    decoded.samples.resize(std::size_t{decoded.frames} * config.channels);
    return decoded;
}

services::AlacConfig configOf(fuzz::Input& input) {
    constexpr std::uint32_t kDepths[] = {16, 20, 24, 32};
    services::AlacConfig config;
    config.frameLength = 1 + input.take<std::uint16_t>() % 4096;
    config.bitDepth = kDepths[input.take<std::uint8_t>() % 4];
    config.channels = 1 + input.take<std::uint8_t>() % 8;
    config.meanFactor = input.take<std::uint8_t>();
    config.initialMean = input.take<std::uint8_t>();
    config.maxCodeBits = 1 + input.take<std::uint8_t>() % 31;
    return config;
}

}  // namespace

// Seven bytes of configuration, then a packet.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::Input input(bytes, size);
    const services::AlacConfig config = configOf(input);
    const auto packet = std::as_bytes(input.rest());
    const Decoded plain = decode(config, services::plainAlacKernels(), packet);
    const Decoded best = decode(config, services::bestAlacKernels(), packet);
    fuzz::require(plain.frames == best.frames, "all versions find the same frames");
    fuzz::require(std::memcmp(plain.samples.data(), best.samples.data(),
                              plain.samples.size() * sizeof(float)) == 0,
                  "all versions give the same samples");
    return 0;
}

#include "services/codecs/alac_packet_decoder.h"

#include <algorithm>
#include <utility>

#include "services/limits.h"

namespace atdp::services {
namespace {

// The longest code of a sample takes 41 bits; the rest is for headers.
std::size_t maxPacketBytes(std::size_t samples) {
    return 6 * samples + 1024;
}

}  // namespace

AlacPacketDecoder::AlacPacketDecoder(std::shared_ptr<ByteSource> source,
                                     std::shared_ptr<const std::vector<PacketPlace>> packets,
                                     const AlacConfig& config)
    : packets_(std::move(packets)),
      framesPerPacket_(config.frameLength),
      channels_(config.channels),
      blocks_(std::move(source),
              std::max(kReadBlockBytes, maxPacketBytes(framesPerPacket_ * channels_)),
              kBytesAfterSeek),
      decoder_(config),
      samples_(framesPerPacket_ * channels_) {}

const float* AlacPacketDecoder::decode(std::uint64_t packet) {
    const PacketPlace place = (*packets_)[packet];
    std::size_t frames = 0;
    if (place.bytes() > 0 && place.bytes() <= maxPacketBytes(framesPerPacket_ * channels_)) {
        const auto bytes = blocks_.at(place.offset(), place.bytes());
        // The packet was there when the file was opened: the file has shrunk, or the disk fails.
        if (!bytes || bytes->size() < place.bytes()) return nullptr;
        frames = std::min<std::size_t>(
            decoder_.decode(bytes->first(place.bytes()), samples_.data()), framesPerPacket_);
    }
    const auto missing = std::span(samples_).subspan(frames * channels_);
    std::fill(missing.begin(), missing.end(), 0.0F);
    return samples_.data();
}

}  // namespace atdp::services

#include "services/codecs/packet_reader.h"

#include <algorithm>
#include <utility>

namespace atdp::services {

PacketReader::PacketReader(std::unique_ptr<PacketDecoder> decoder, const PacketLayout& layout)
    : decoder_(std::move(decoder)),
      layout_(layout),
      packet_(std::size_t{layout.framesPerPacket} * layout.channels) {
    seek(0);
}

Result<std::uint32_t> PacketReader::read(float* samples, std::uint32_t frames) {
    if (frames <= heldFrames_ && frames <= layout_.frames - position_) {
        takeHeld(samples, frames);  // small reads, one after the other, must be cheap
        return frames;
    }
    std::uint32_t done = 0;
    while (done < frames && position_ < layout_.frames) {
        if (heldFrames_ == 0 && !holdPacket()) {
            if (done == 0) return Failure::kUnreadable;
            break;
        }
        const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(
            std::min(frames - done, heldFrames_), layout_.frames - position_));
        takeHeld(samples + std::size_t{done} * layout_.channels, count);
        done += count;
    }
    return done;
}

void PacketReader::takeHeld(float* samples, std::uint32_t frames) {
    const float* held =
        packet_.data() + packet_.size() - std::size_t{heldFrames_} * layout_.channels;
    if (frames == 1 && layout_.channels == 2)  // a copy of known size, without a call
        std::copy_n(held, 2, samples);
    else
        std::copy_n(held, std::size_t{frames} * layout_.channels, samples);
    heldFrames_ -= frames;
    position_ += frames;
}

// Decodes the packet that the position lies in.
bool PacketReader::holdPacket() {
    const std::uint64_t frame = layout_.firstFrame + position_;
    const std::uint64_t packet = frame / layout_.framesPerPacket;
    if (packet + 1 != nextPacket_) {
        nextPacket_ = 0;
        if (!decoder_->decode(packet, packet_.data())) return false;
        nextPacket_ = packet + 1;
    }
    heldFrames_ =
        layout_.framesPerPacket - static_cast<std::uint32_t>(frame % layout_.framesPerPacket);
    return true;
}

void PacketReader::seek(std::uint64_t frame) {
    position_ = std::min(frame, layout_.frames);
    heldFrames_ = 0;
}

}  // namespace atdp::services

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
    std::uint32_t done = 0;
    while (done < frames && position_ < layout_.frames) {
        if (heldFrames_ == 0 && !holdPacket()) {
            if (done == 0) return Failure::kUnreadable;
            break;
        }
        const auto count = static_cast<std::uint32_t>(std::min<std::uint64_t>(
            std::min(frames - done, heldFrames_), layout_.frames - position_));
        const float* held =
            packet_.data() + packet_.size() - std::size_t{heldFrames_} * layout_.channels;
        std::copy_n(held, std::size_t{count} * layout_.channels,
                    samples + std::size_t{done} * layout_.channels);
        heldFrames_ -= count;
        position_ += count;
        done += count;
    }
    return done;
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

#include "services/codecs/packet_reader.h"

#include <algorithm>
#include <utility>

namespace atdp::services {

PacketReader::PacketReader(std::unique_ptr<PacketDecoder> decoder, const PacketLayout& layout)
    : decoder_(std::move(decoder)), layout_(layout) {
    seek(0);
}

bool PacketReader::read(float* samples, std::uint32_t* frames) {
    const std::uint32_t wanted = *frames;
    if (wanted <= heldFrames_) {  // small reads, one after the other, must be cheap
        takeHeld(samples, wanted);
        return true;
    }
    std::uint32_t done = 0;
    while (done < wanted && position_ < layout_.frames) {
        if (heldFrames_ == 0 && !holdPacket()) {
            if (done == 0) return false;
            break;
        }
        const std::uint32_t count = std::min(wanted - done, heldFrames_);
        takeHeld(samples + std::size_t{done} * layout_.channels, count);
        done += count;
    }
    *frames = done;
    return true;
}

void PacketReader::takeHeld(float* samples, std::uint32_t frames) {
    const std::size_t count = std::size_t{frames} * layout_.channels;
    if (count == 2) {  // one frame of stereo, without a call
        samples[0] = held_[0];
        samples[1] = held_[1];
    } else {
        std::copy_n(held_, count, samples);
    }
    held_ += count;
    heldFrames_ -= frames;
    position_ += frames;
}

// Decodes the packet that the position lies in.
bool PacketReader::holdPacket() {
    const std::uint64_t frame = layout_.firstFrame + position_;
    const std::uint64_t packet = frame / layout_.framesPerPacket;
    if (packet + 1 != nextPacket_) {
        nextPacket_ = 0;
        packet_ = decoder_->decode(packet);
        if (packet_ == nullptr) return false;
        nextPacket_ = packet + 1;
    }
    const std::uint64_t spent = frame % layout_.framesPerPacket;
    held_ = packet_ + spent * layout_.channels;
    heldFrames_ = static_cast<std::uint32_t>(
        std::min(layout_.framesPerPacket - spent, layout_.frames - position_));
    return true;
}

void PacketReader::seek(std::uint64_t frame) {
    position_ = std::min(frame, layout_.frames);
    heldFrames_ = 0;
}

}  // namespace atdp::services

#pragma once

#include <memory>

#include "services/codecs/frame_reader.h"
#include "services/codecs/packet_decoder.h"

namespace atdp::services {

// Which frames of a stream of packets are sound, and how they lie in the packets.
struct PacketLayout {
    std::uint32_t channels = 0;
    std::uint32_t framesPerPacket = 0;
    std::uint64_t firstFrame = 0;  // frames before it are the encoder's delay
    std::uint64_t frames = 0;      // frames after them are padding
};

// Delivers the frames of what is decoded in packets, from the first that is sound to the last.
class PacketReader final : public FrameReader {
 public:
    PacketReader(std::unique_ptr<PacketDecoder> decoder, const PacketLayout& layout);

    bool read(float* samples, std::uint32_t* frames) override;
    void seek(std::uint64_t frame) override;

 private:
    bool holdPacket();
    void takeHeld(float* samples, std::uint32_t frames);

    std::unique_ptr<PacketDecoder> decoder_;
    PacketLayout layout_;
    const float* packet_ = nullptr;  // the samples of the packet decoded last
    std::uint64_t position_ = 0;     // next frame to deliver, counted from layout_.firstFrame
    std::uint64_t nextPacket_ = 0;   // the packet after the one in packet_
    const float* held_ = nullptr;    // in packet_, from position_ on
    std::uint32_t heldFrames_ = 0;   // there, that belong to the sound
};

}  // namespace atdp::services

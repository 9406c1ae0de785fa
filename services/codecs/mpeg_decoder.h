#pragma once

#include <array>
#include <memory>
#include <vector>

#include "services/codecs/mpeg_header.h"
#include "services/codecs/mpeg_packets.h"
#include "services/codecs/mpeg_reservoir.h"
#include "services/codecs/packet_decoder.h"
#include "services/io/block_reader.h"
#include "services/result.h"

struct mpg123_handle_struct;

namespace atdp::services {

// Decodes MPEG audio with libmpg123, which is handed whole packets in order and never sees tags
// or junk.
//
// A packet's samples depend on packets before it: layer III takes bits from a reservoir that they
// filled, overlaps its transform with theirs, and all layers have a filterbank with a memory. To
// decode a packet out of order, the library is started anew a packet or two earlier, behind packets
// of silence (carriers) that hold the reservoir and bring the filterbank to where it stands in a
// straight run, whose samples then come out bit for bit.
class MpegDecoder final : public PacketDecoder {
 public:
    // All packets are delivered with the channel count of the first. kUnsupportedFormat when the
    // library is not to be had, kUnreadable when the first packet is not.
    static Result<std::unique_ptr<PacketDecoder>> make(std::shared_ptr<ByteSource> source,
                                                       std::shared_ptr<const MpegPackets> stream,
                                                       std::uint32_t rate, std::uint32_t channels,
                                                       std::uint32_t framesPerPacket);
    ~MpegDecoder() override;

    const float* decode(std::uint64_t packet) override;

 private:
    // Packets handed over ahead of the one to be decoded. Only free format needs any: the library
    // measures its packets by the distance to the next header.
    static constexpr std::uint64_t kMaxPacketsAhead = 3;

    struct HandleDelete {
        void operator()(mpg123_handle_struct* handle) const;
    };
    using Handle = std::unique_ptr<mpg123_handle_struct, HandleDelete>;

    MpegDecoder(std::shared_ptr<ByteSource> source, std::shared_ptr<const MpegPackets> stream,
                std::uint32_t framesPerPacket, std::uint32_t channels, Handle handle);

    enum class Outcome { kSound, kNonsense, kFailure };

    bool makeSilence();
    void makeCarrier();
    Result<Bytes> packetBytes(std::uint64_t packet);
    std::uint32_t channelsOf(std::uint64_t packet);
    bool restart(std::uint64_t packet);
    bool fillReservoir(std::uint64_t packet);
    bool decodeCarriers();
    Bytes carrier(std::uint64_t number);
    bool feedNext();
    bool feedBytes(Bytes bytes);
    Result<Bytes> packetToFeed(std::uint64_t packet);
    Bytes mended(Bytes packet);
    Bytes filledUp(Bytes packet, std::size_t bytes);
    const float* decodeNext();
    Outcome decodeFed(const float** samples);

    BlockReader blocks_;
    std::shared_ptr<const MpegPackets> stream_;
    std::uint32_t channels_;
    std::uint64_t memoryPackets_;
    std::uint64_t filterbankPeriod_;
    std::size_t samplesPerPacket_;
    Handle handle_;
    MpegHeader header_{};             // of the first packet
    std::vector<std::byte> silence_;  // a packet
    MpegHeader carrierHeader_{};
    std::vector<std::byte> carrier_;  // a packet of silence, with room for the reservoir
    std::vector<std::byte> mended_;   // a packet that cannot be handed over as it is
    std::vector<float> zeros_;        // samples of a packet that cannot be decoded
    MpegReservoir reservoir_;         // before nextToFeed_
    std::uint64_t carriers_ = 0;      // with which the library was started
    std::uint64_t carriersFed_ = 0;
    std::uint64_t nextPacket_ = 0;    // that decodeNext decodes
    std::uint64_t nextToFeed_ = 0;    // ahead of nextPacket_ where the library looks ahead
    std::uint64_t packetsAhead_ = 0;  // carriers and packets fed and not yet decoded
    std::array<std::uint32_t, kMaxPacketsAhead + 1> channelsFed_{};  // of the last packets fed
    std::uint32_t previousChannels_ = 0;  // of the packet before nextPacket_; 0: not decoded
    bool endsInSilence_ = false;          // that packet
    bool isOpen_ = false;
};

}  // namespace atdp::services

#include "services/codecs/mpeg_decoder.h"

#include <mpg123.h>

#include <algorithm>
#include <cstring>

#include "services/codecs/mpeg_header.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

// Packets after which the library's filterbank stands as at the start: 16 positions, of which a
// packet of 1152 frames takes 36, one of 576 takes 18 and one of 384 takes 12.
constexpr std::uint64_t kFilterbankPeriodPackets = 8;

// Packets before the wanted one that have to come out right themselves: the transform of one
// overlaps the next, and the filterbank remembers 480 frames.
constexpr std::uint64_t kMemoryPackets = 2;

// A reservoir pointer reaches back 511 bytes at most, and hardly a packet has less than a byte to
// give.
constexpr std::uint64_t kMaxReservoirPackets = 512;

// Packets handed over ahead of the one to be decoded. Only free format needs any: the library
// measures its packets by the distance to the next header.
constexpr std::uint64_t kMaxPacketsAhead = 3;

// The distance from a layer III packet back to where its bits start, in bytes of sound data.
std::uint32_t reservoirBytes(const MpegHeader& header, Bytes packet) {
    if (packet.size() < header.sideInfoOffset() + 2) return 0;
    const auto word = loadBigEndian<std::uint16_t>(packet.data() + header.sideInfoOffset());
    return header.version == MpegVersion::k1 ? word >> 7 : word >> 8;
}

std::uint64_t maxReservoirBytes(const MpegHeader& header) {
    return header.version == MpegVersion::k1 ? 511 : 255;
}

// Makes a layer III packet say that it has no bits of its own, and that the reservoir reaches back
// as far as it does, so that the library keeps all of it.
void blankSideInfo(const MpegHeader& header, std::span<std::byte> packet,
                   std::uint64_t reservoirBytes) {
    const auto sideInfo = packet.subspan(header.sideInfoOffset(), header.sideInfoBytes());
    std::fill(sideInfo.begin(), sideInfo.end(), std::byte{0});
    const std::uint64_t word =
        header.version == MpegVersion::k1 ? reservoirBytes << 7 : reservoirBytes << 8;
    sideInfo[0] = static_cast<std::byte>(word >> 8);
    sideInfo[1] = static_cast<std::byte>(word & 0xFF);
}

// What a packet adds to the reservoir.
std::uint64_t soundBytes(const MpegHeader& header, std::uint64_t packetBytes) {
    const std::uint64_t overhead = header.sideInfoOffset() + header.sideInfoBytes();
    return packetBytes > overhead ? packetBytes - overhead : 0;
}

bool configure(mpg123_handle* handle, std::uint32_t rate, std::uint32_t channels,
               bool isFreeFormat) {
    long flags = MPG123_QUIET | MPG123_FORCE_FLOAT | MPG123_IGNORE_INFOFRAME | MPG123_SKIP_ID3V2 |
                 MPG123_NO_RESYNC;
    flags |= channels == 1 ? MPG123_MONO_MIX : MPG123_FORCE_STEREO;
    if (!isFreeFormat) flags |= MPG123_NO_READAHEAD;
    return mpg123_param(handle, MPG123_REMOVE_FLAGS, MPG123_GAPLESS | MPG123_AUTO_RESAMPLE, 0) ==
               MPG123_OK &&
           mpg123_param(handle, MPG123_ADD_FLAGS, flags, 0) == MPG123_OK &&
           mpg123_param(handle, MPG123_RESYNC_LIMIT, 0, 0) == MPG123_OK &&
           mpg123_format_none(handle) == MPG123_OK &&
           mpg123_format(handle, static_cast<long>(rate),
                         channels == 1 ? MPG123_MONO : MPG123_STEREO,
                         MPG123_ENC_FLOAT_32) == MPG123_OK;
}

}  // namespace

void MpegDecoder::HandleDelete::operator()(mpg123_handle_struct* handle) const {
    mpg123_delete(handle);
}

Result<std::unique_ptr<PacketDecoder>> MpegDecoder::make(std::shared_ptr<ByteSource> source,
                                                         std::shared_ptr<const MpegPackets> stream,
                                                         std::uint32_t rate, std::uint32_t channels,
                                                         std::uint32_t framesPerPacket) {
    Handle handle(mpg123_new(nullptr, nullptr));
    if (!handle || !configure(handle.get(), rate, channels, stream->freeFormatBytes != 0))
        return Failure::kUnsupportedFormat;
    return std::unique_ptr<PacketDecoder>(new MpegDecoder(std::move(source), std::move(stream),
                                                          std::size_t{framesPerPacket} * channels,
                                                          std::move(handle)));
}

MpegDecoder::MpegDecoder(std::shared_ptr<ByteSource> source,
                         std::shared_ptr<const MpegPackets> stream, std::size_t samplesPerPacket,
                         Handle handle)
    : blocks_(std::move(source), kReadBlockBytes),
      stream_(std::move(stream)),
      samplesPerPacket_(samplesPerPacket),
      handle_(std::move(handle)),
      mended_(kMaxFreeFormatBytes + 64),
      unused_(samplesPerPacket) {}

MpegDecoder::~MpegDecoder() = default;

bool MpegDecoder::decode(std::uint64_t packet, float* samples) {
    if (!isOpen_ || packet != nextPacket_) {
        const auto first = firstPacketFor(packet);
        if (!first) return false;
        const bool goesOn = isOpen_ && nextPacket_ >= *first && nextPacket_ <= packet;
        if (!goesOn && !restart(*first)) return false;
        while (nextPacket_ < packet)
            if (!decodeNext(unused_.data())) return false;
    }
    return decodeNext(samples);
}

// The bytes of a packet; too few where the file has shrunk.
Result<Bytes> MpegDecoder::packetBytes(std::uint64_t packet) {
    const MpegPacket& place = stream_->packets[packet];
    const auto bytes = blocks_.at(place.offset(), place.bytes());
    if (!bytes) return bytes;
    if (bytes->size() < place.bytes()) return Failure::kUnreadable;
    return bytes->first(place.bytes());
}

// The packet to start at, so that `packet` comes out as in a straight run.
Result<std::uint64_t> MpegDecoder::firstPacketFor(std::uint64_t packet) {
    std::uint64_t first = packet;
    const std::uint64_t exact = packet - std::min(packet, kMemoryPackets);
    for (std::uint64_t needed = exact; needed <= packet; ++needed) {
        const auto start = reservoirStart(needed);
        if (!start) return start;
        first = std::min(first, *start);
    }
    return first / kFilterbankPeriodPackets * kFilterbankPeriodPackets;
}

// The packet in which the bits of `packet` start.
Result<std::uint64_t> MpegDecoder::reservoirStart(std::uint64_t packet) {
    const auto bytes = packetBytes(packet);
    if (!bytes) return bytes.failure();
    const auto header = parseMpegHeader(*bytes);
    if (!header || header->layer != 3) return packet;
    std::uint64_t missing = reservoirBytes(*header, *bytes);
    const std::uint64_t limit = packet - std::min(packet, kMaxReservoirPackets);
    while (missing > 0 && packet > limit) {
        --packet;
        const std::uint64_t given = soundBytes(*header, stream_->packets[packet].bytes());
        missing -= std::min(missing, given);
    }
    return packet;
}

// Only a fresh open clears the library's filterbank.
bool MpegDecoder::restart(std::uint64_t packet) {
    isOpen_ =
        mpg123_close(handle_.get()) == MPG123_OK && mpg123_open_feed(handle_.get()) == MPG123_OK;
    nextPacket_ = packet;
    nextToFeed_ = packet;
    reservoirBytes_ = 0;
    return isOpen_;
}

// Hands a packet to the library, with as many bytes as its header states: where the stream cuts it
// short, the rest is zeros.
//
// A packet whose bits start before those that the library was given cannot be decoded. The library
// would give up on it half-way, and its filterbank would be out of step for the rest of the run; so
// its side information is blanked, which makes it silence that still fills the reservoir.
bool MpegDecoder::feed(std::uint64_t packet) {
    const auto bytes = packetBytes(packet);
    if (!bytes) return false;
    Bytes whole = *bytes;
    if (const auto header = parseMpegHeader(whole)) {
        const std::uint32_t statedBytes = header->packetBytes(stream_->freeFormatBytes);
        const bool lacksBits =
            header->layer == 3 && reservoirBytes(*header, whole) > reservoirBytes_;
        if (statedBytes != whole.size() || lacksBits) {
            std::fill(std::copy(whole.begin(), whole.end(), mended_.begin()), mended_.end(),
                      std::byte{0});
            if (lacksBits) blankSideInfo(*header, mended_, reservoirBytes_);
            whole = Bytes(mended_).first(statedBytes);
        }
        reservoirBytes_ = std::min(reservoirBytes_ + soundBytes(*header, whole.size()),
                                   maxReservoirBytes(*header));
    }
    return mpg123_feed(handle_.get(), reinterpret_cast<const unsigned char*>(whole.data()),
                       whole.size()) == MPG123_OK;
}

// Decodes the next packet. What the library cannot make sense of is silence.
bool MpegDecoder::decodeNext(float* samples) {
    unsigned char* decoded = nullptr;
    std::size_t decodedBytes = 0;
    int status = MPG123_NEED_MORE;
    const std::uint64_t last =
        std::min<std::uint64_t>(nextPacket_ + kMaxPacketsAhead, stream_->packets.size() - 1);
    for (;;) {
        if (status == MPG123_NEED_MORE) {
            if (nextToFeed_ > last) break;
            if (!feed(nextToFeed_)) {
                isOpen_ = false;  // what was fed is not known any more
                return false;
            }
            ++nextToFeed_;
        } else if (status != MPG123_NEW_FORMAT) {
            break;
        }
        off_t number = 0;
        status = mpg123_decode_frame(handle_.get(), &number, &decoded, &decodedBytes);
    }
    ++nextPacket_;
    if (status == MPG123_OK && decodedBytes == samplesPerPacket_ * sizeof(float)) {
        std::memcpy(samples, decoded, decodedBytes);
        return true;
    }
    std::fill_n(samples, samplesPerPacket_, 0.0F);
    // The library may have stopped anywhere in what it was fed.
    return restart(nextPacket_);
}

}  // namespace atdp::services

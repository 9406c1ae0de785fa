#include "services/codecs/mpeg_decoder.h"

#include <mpg123.h>

#include <algorithm>

#include "services/codecs/mpeg_side_info.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

// Packets after which the library's filterbank stands as at the start. It has 16 positions, of
// which a packet of 1152 frames takes 36, one of 576 takes 18 and one of 384 takes 12.
std::uint64_t filterbankPeriod(std::uint32_t framesPerPacket) {
    return framesPerPacket == 576 ? 8 : 4;
}

// Packets before the wanted one that have to be decoded too. The transform of a granule overlaps
// the one before it, and the filterbank remembers 480 frames: the second granule of a packet of
// 1152 comes out right whatever was before the packet, but a packet of 576 or 384 is not enough.
std::uint64_t memoryPackets(std::uint32_t framesPerPacket) {
    return framesPerPacket == 1152 ? 1 : 2;
}

// Padding included.
constexpr std::size_t kMaxPacketBytes = kMaxFreeFormatBytes + 4;

// Frames that the filterbank makes at a time.
constexpr std::size_t kBlockFrames = 32;

// What a packet adds to the reservoir.
std::uint64_t soundBytes(const MpegHeader& header, std::uint64_t packetBytes) {
    const std::uint64_t overhead = header.sideInfoOffset() + header.sideInfoBytes();
    return packetBytes > overhead ? packetBytes - overhead : 0;
}

// The same where only the kind of stream is known, not the packet: at the least.
std::uint64_t leastSoundBytes(const MpegHeader& stream, std::uint64_t packetBytes) {
    MpegHeader header = stream;
    header.hasChecksum = true;
    header.isMono = false;
    return soundBytes(header, packetBytes);
}

bool isSilence(const float* samples, std::size_t count) {
    return std::all_of(samples, samples + count, [](float sample) { return sample == 0; });
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

bool hasRunOutOfMemory(mpg123_handle* handle) {
    const int error = mpg123_errcode(handle);
    return error == MPG123_OUT_OF_MEM || error == MPG123_NO_BUFFERS;
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
    std::unique_ptr<MpegDecoder> decoder(new MpegDecoder(
        std::move(source), std::move(stream), framesPerPacket, channels, std::move(handle)));
    if (!decoder->makeSilence()) return Failure::kUnreadable;
    decoder->makeCarrier();
    return std::unique_ptr<PacketDecoder>(std::move(decoder));
}

// A packet of silence: the header of the stream's first, and zeros.
bool MpegDecoder::makeSilence() {
    const auto first = packetBytes(0);
    if (!first) return false;
    const auto header = parseMpegHeader(*first);
    if (!header) return false;
    header_ = *header;
    std::copy_n(first->begin(), MpegHeader::kBytes, silence_.begin());
    silence_.resize(header->packetBytes(stream_->freeFormatBytes));
    return parseMpegHeader(silence_).has_value();  // not so where the file was changed
}

// A packet of silence with as much room for sound data as a packet of the stream can have.
void MpegDecoder::makeCarrier() {
    carrier_ = silence_;
    carrierHeader_ = header_;
    if (header_.layer != 3 || header_.isFreeFormat()) return;
    carrier_[2] = (carrier_[2] & std::byte{0x0F}) | std::byte{0xE0};  // the highest bit rate
    carrierHeader_ = *parseMpegHeader(carrier_);
    carrier_.resize(carrierHeader_.packetBytes(0));
}

MpegDecoder::MpegDecoder(std::shared_ptr<ByteSource> source,
                         std::shared_ptr<const MpegPackets> stream, std::uint32_t framesPerPacket,
                         std::uint32_t channels, Handle handle)
    : blocks_(std::move(source), kReadBlockBytes, kBytesAfterSeek),
      stream_(std::move(stream)),
      channels_(channels),
      memoryPackets_(memoryPackets(framesPerPacket)),
      filterbankPeriod_(filterbankPeriod(framesPerPacket)),
      samplesPerPacket_(std::size_t{framesPerPacket} * channels),
      handle_(std::move(handle)),
      silence_(kMaxPacketBytes),
      mended_(kMaxPacketBytes),
      zeros_(samplesPerPacket_) {}

MpegDecoder::~MpegDecoder() = default;

const float* MpegDecoder::decode(std::uint64_t packet) {
    const bool goesOn =
        isOpen_ && nextPacket_ <= packet && packet - nextPacket_ <= memoryPackets_ + 1;
    if (!goesOn && !restart(packet - std::min(packet, memoryPackets_))) return nullptr;
    while (nextPacket_ < packet)
        if (decodeNext() == nullptr) return nullptr;
    return decodeNext();
}

// The bytes of a packet; too few where the file has shrunk.
Result<Bytes> MpegDecoder::packetBytes(std::uint64_t packet) {
    const MpegPacket& place = stream_->packets[packet];
    const auto bytes = blocks_.at(place.offset(), place.bytes());
    if (!bytes) return bytes;
    if (bytes->size() < place.bytes()) return Failure::kUnreadable;
    return bytes->first(place.bytes());
}

// Channels of a packet as it is decoded; 0 where it cannot be read.
std::uint32_t MpegDecoder::channelsOf(std::uint64_t packet) {
    if (packet < nextToFeed_) return channelsFed_[packet % channelsFed_.size()];
    const auto bytes = packetBytes(packet);
    if (!bytes) return 0;
    const auto header = parseMpegHeader(*bytes);
    return header && header->agreesWith(header_) ? header->channels() : header_.channels();
}

// Starts the library anew, so that it decodes `packet` next: with the bits at hand that this one
// reaches back for, and with its filterbank where it stands in a straight run. Only a fresh open
// clears the filterbank.
bool MpegDecoder::restart(std::uint64_t packet) {
    const bool hasReservoir = isOpen_ && packet == nextToFeed_;
    isOpen_ = false;
    if (!hasReservoir && !fillReservoir(packet)) return false;
    if (mpg123_open_feed(handle_.get()) != MPG123_OK) return false;
    nextPacket_ = packet;
    nextToFeed_ = packet;
    packetsAhead_ = 0;
    previousChannels_ = 0;
    endsInSilence_ = false;
    isOpen_ = decodeCarriers();
    return isOpen_;
}

// Gathers what the packets before `packet` leave in the reservoir.
bool MpegDecoder::fillReservoir(std::uint64_t packet) {
    reservoir_ = MpegReservoir(maxReservoirBytes(header_));
    if (header_.layer != 3) return true;
    std::uint64_t first = packet;
    std::uint64_t found = 0;
    while (first > 0 && found < maxReservoirBytes(header_) &&
           packet - first < MpegReservoir::kPackets) {
        // What is no packet of the stream will be replaced by silence.
        const std::size_t bytes = stream_->packets[--first].bytes();
        found += leastSoundBytes(header_, std::min(bytes, silence_.size()));
    }
    for (; first < packet; ++first)
        if (!packetToFeed(first)) return false;
    return true;
}

// Begins with packets of silence: as many as bring the filterbank to where it stands at the next
// packet and have room for the reservoir. By the first two of free format the library measures the
// packets, so nothing that could look like a header may be in the first.
bool MpegDecoder::decodeCarriers() {
    const std::uint64_t room = soundBytes(carrierHeader_, carrier_.size());
    const std::uint64_t empty = stream_->freeFormatBytes != 0 ? 1 : 0;
    carriers_ = nextPacket_ % filterbankPeriod_;
    while (carriers_ < 2 * empty || (carriers_ - empty) * room < reservoir_.reach())
        carriers_ += filterbankPeriod_;
    carriersFed_ = 0;
    for (std::uint64_t i = 0; i < carriers_; ++i) {
        const float* unused = nullptr;
        if (decodeFed(&unused) == Outcome::kFailure) return false;
    }
    return true;
}

// A packet of silence with its share of the reservoir, which ends where the last carrier ends.
Bytes MpegDecoder::carrier(std::uint64_t number) {
    const auto whole = std::span(mended_).first(carrier_.size());
    std::copy(carrier_.begin(), carrier_.end(), whole.begin());
    if (header_.layer != 3) return whole;
    const std::uint64_t room = soundBytes(carrierHeader_, whole.size());
    const std::uint64_t before = number * room;
    blankSideInfo(carrierHeader_, whole,
                  static_cast<std::uint32_t>(
                      std::min<std::uint64_t>(before, maxReservoirBytes(carrierHeader_))));
    const Bytes reservoir = reservoir_.bytes();
    const std::uint64_t zeros = carriers_ * room - reservoir.size();  // in front of it
    for (std::uint64_t at = std::max(zeros, before); at < before + room; ++at)
        whole[whole.size() - room + at - before] = reservoir[at - zeros];
    return whole;
}

// Hands the library what is next; behind the last packet, a header, by which it measures the last
// packet of a free-format stream.
bool MpegDecoder::feedNext() {
    ++packetsAhead_;
    if (carriersFed_ < carriers_) return feedBytes(carrier(carriersFed_++));
    const std::uint64_t packet = nextToFeed_++;
    if (packet == stream_->packets.size()) return feedBytes(silence_);
    const auto bytes = packetToFeed(packet);
    return bytes && feedBytes(*bytes);
}

Result<Bytes> MpegDecoder::packetToFeed(std::uint64_t packet) {
    const auto bytes = packetBytes(packet);
    if (!bytes) return bytes;
    const Bytes whole = mended(*bytes);
    channelsFed_[packet % channelsFed_.size()] = parseMpegHeader(whole)->channels();
    return whole;
}

bool MpegDecoder::feedBytes(Bytes bytes) {
    return mpg123_feed(handle_.get(), reinterpret_cast<const unsigned char*>(bytes.data()),
                       bytes.size()) == MPG123_OK;
}

// The packet as the library gets it. What is no packet of the stream is replaced by silence. One
// that the stream cuts short is filled up with zeros. And a layer III packet whose side information
// is damaged, or whose bits start before those at hand, has its side information blanked, which
// makes it silence that still fills the reservoir.
Bytes MpegDecoder::mended(Bytes packet) {
    const auto header = parseMpegHeader(packet);
    const bool isOurs = header && header->agreesWith(header_);
    if (!isOurs) packet = silence_;
    const MpegHeader stated = isOurs ? *header : header_;
    const std::uint32_t statedBytes = stated.packetBytes(stream_->freeFormatBytes);
    if (statedBytes != packet.size()) packet = filledUp(packet, statedBytes);
    if (stated.layer != 3) return packet;

    const std::uint64_t ownBytes = soundBytes(stated, statedBytes);
    const MpegSideInfo info = parseMpegSideInfo(stated, packet);
    const bool isSound = isOurs && info.isLegal && info.reservoirBytes <= reservoir_.reach() &&
                         info.soundBits <= 8 * (info.reservoirBytes + ownBytes);
    if (!isSound) {
        packet = filledUp(packet, statedBytes);
        blankSideInfo(stated, mended_, reservoir_.reach());
    }
    reservoir_.add(packet.last(ownBytes), isSound ? info.reservoirBytes : reservoir_.reach());
    return packet;
}

// The packet in a buffer of our own, cut or filled up with zeros to that size.
Bytes MpegDecoder::filledUp(Bytes packet, std::size_t bytes) {
    const auto whole = std::span(mended_).first(bytes);
    packet = packet.first(std::min(packet.size(), bytes));
    if (packet.data() != whole.data()) std::copy(packet.begin(), packet.end(), whole.begin());
    const auto behind = whole.subspan(packet.size());
    std::fill(behind.begin(), behind.end(), std::byte{0});
    return whole;
}

// Where mono ends, the library would go on with what the second channel played last, however long
// ago. And a packet that it cannot decode it leaves half-way, or before it has begun: what is
// missing is zeros, and its filterbank is out of step from then on. A packet that ends in zeros may
// be such a one; where it is silence indeed, there is nothing to be lost by starting anew.
const float* MpegDecoder::decodeNext() {
    const bool stereoBegins = previousChannels_ == 1 && channelsOf(nextPacket_) == 2;
    if ((stereoBegins || endsInSilence_) && !restart(nextPacket_)) return nullptr;

    const float* samples = nullptr;
    const Outcome outcome = decodeFed(&samples);
    if (outcome == Outcome::kFailure) {
        isOpen_ = false;  // what was fed is not known any more
        return nullptr;
    }
    if (outcome == Outcome::kNonsense) samples = zeros_.data();
    const std::size_t block = kBlockFrames * channels_;
    endsInSilence_ = isSilence(samples + samplesPerPacket_ - block, block);
    previousChannels_ = channelsFed_[nextPacket_ % channelsFed_.size()];
    ++nextPacket_;
    return samples;
}

// What the library makes of the next packet or carrier.
MpegDecoder::Outcome MpegDecoder::decodeFed(const float** samples) {
    const bool looksAhead = stream_->freeFormatBytes != 0;
    const std::uint64_t end = stream_->packets.size() + (looksAhead ? 1 : 0);
    unsigned char* decoded = nullptr;
    std::size_t sampleBytes = 0;
    int status = MPG123_NEED_MORE;
    while (status == MPG123_NEED_MORE || status == MPG123_NEW_FORMAT) {
        if (status == MPG123_NEED_MORE) {
            const bool isAllFed = carriersFed_ == carriers_ && nextToFeed_ >= end;
            if (isAllFed || packetsAhead_ > (looksAhead ? kMaxPacketsAhead : 0)) break;
            if (!feedNext()) return Outcome::kFailure;
        }
        off_t number = 0;
        status = mpg123_decode_frame(handle_.get(), &number, &decoded, &sampleBytes);
    }
    if (status == MPG123_ERR && hasRunOutOfMemory(handle_.get())) return Outcome::kFailure;
    --packetsAhead_;
    *samples = reinterpret_cast<const float*>(decoded);
    const bool isWhole = status == MPG123_OK && sampleBytes == samplesPerPacket_ * sizeof(float);
    return isWhole ? Outcome::kSound : Outcome::kNonsense;
}

}  // namespace atdp::services

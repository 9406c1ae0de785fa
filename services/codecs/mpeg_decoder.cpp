#include "services/codecs/mpeg_decoder.h"

#include <mpg123.h>

#include <algorithm>
#include <cstring>

#include "services/codecs/mpeg_header.h"
#include "services/codecs/mpeg_side_info.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

// Packets after which the library's filterbank stands as at the start: 16 positions, of which a
// packet of 1152 frames takes 36, one of 576 takes 18 and one of 384 takes 12.
constexpr std::uint64_t kFilterbankPeriodPackets = 8;

// Packets before the wanted one that have to come out right themselves: the transform of one
// overlaps the next, and the filterbank remembers 480 frames.
constexpr std::uint64_t kMemoryPackets = 2;

// Packets that are looked at for the bits that one reaches back for, 511 bytes at most: hardly a
// packet has less than a byte to give.
constexpr std::uint64_t kMaxReservoirPackets = 512;

// Padding included.
constexpr std::size_t kMaxPacketBytes = kMaxFreeFormatBytes + 4;

constexpr std::size_t kGranuleFrames = 576;

// Packets handed over ahead of the one to be decoded. Only free format needs any: the library
// measures its packets by the distance to the next header.
constexpr std::uint64_t kMaxPacketsAhead = 3;

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

bool isSound(const float* samples, std::size_t count) {
    return std::any_of(samples, samples + count, [](float sample) { return sample != 0; });
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
    : blocks_(std::move(source), kReadBlockBytes),
      stream_(std::move(stream)),
      channels_(channels),
      samplesPerPacket_(std::size_t{framesPerPacket} * channels),
      handle_(std::move(handle)),
      silence_(kMaxPacketBytes),
      mended_(kMaxPacketBytes),
      unused_(samplesPerPacket_) {}

MpegDecoder::~MpegDecoder() = default;

// Where an undecodable packet is met on the way, the way is gone again without it.
bool MpegDecoder::decode(std::uint64_t packet, float* samples) {
    for (;;) {
        const std::size_t known = undecodable_.size();
        if (!decodeAsKnown(packet, samples)) return false;
        if (undecodable_.size() == known) return true;
        isOpen_ = false;
    }
}

bool MpegDecoder::decodeAsKnown(std::uint64_t packet, float* samples) {
    const bool goesOn =
        isOpen_ && nextPacket_ <= packet && packet - nextPacket_ <= kFilterbankPeriodPackets;
    if (!goesOn && !restartBefore(packet)) return false;
    while (nextPacket_ < packet)
        if (!decodeNext(unused_.data())) return false;
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

// Channels of a packet as it is decoded; 0 where it cannot be read.
std::uint32_t MpegDecoder::channelsOf(std::uint64_t packet) {
    const auto bytes = packetBytes(packet);
    if (!bytes) return 0;
    const auto header = parseMpegHeader(*bytes);
    return header && header->agreesWith(header_) ? header->channels() : header_.channels();
}

// Starts the library anew, at a packet early enough that `packet` comes out as in a straight run.
bool MpegDecoder::restartBefore(std::uint64_t packet) {
    return restart(packet - std::min(packet, kMemoryPackets));
}

// Starts the library anew, so that it decodes `packet` next: with the bits at hand that this one
// reaches back for, and with its filterbank where it stands in a straight run. Only a fresh open
// clears the filterbank.
bool MpegDecoder::restart(std::uint64_t packet) {
    isOpen_ = false;
    nextPacket_ = packet;
    nextToFeed_ = packet;
    packetsAhead_ = 0;
    carriers_ = 0;
    carriersFed_ = 0;
    previousChannels_ = 0;
    endsInSound_ = false;
    isOpen_ = mpg123_close(handle_.get()) == MPG123_OK &&
              mpg123_open_feed(handle_.get()) == MPG123_OK && fillReservoir(packet) &&
              decodeCarriers();
    return isOpen_;
}

// Gathers what the packets before `packet` leave in the reservoir.
bool MpegDecoder::fillReservoir(std::uint64_t packet) {
    reservoir_.clear();
    reservoirBytes_ = 0;
    if (header_.layer != 3) return true;
    std::uint64_t first = packet;
    std::uint64_t found = 0;
    while (first > 0 && found < maxReservoirBytes(header_) && packet - first < kMaxReservoirPackets)
        found += leastSoundBytes(header_, stream_->packets[--first].bytes());
    for (; first < packet; ++first) {
        const auto bytes = packetToFeed(first);
        if (!bytes) return false;
        const auto sound = bytes->last(soundBytes(*parseMpegHeader(*bytes), bytes->size()));
        reservoir_.insert(reservoir_.end(), sound.begin(), sound.end());
    }
    if (soundBytes(carrierHeader_, carrier_.size()) == 0)
        reservoirBytes_ = 0;  // nothing carries it
    // What nobody can reach back for need not be carried.
    reservoir_.erase(reservoir_.begin(), reservoir_.end() - reservoirBytes_);
    return true;
}

// Begins with packets of silence: as many as bring the filterbank to where it stands at the next
// packet and have room for the reservoir.
bool MpegDecoder::decodeCarriers() {
    const std::uint64_t room = soundBytes(carrierHeader_, carrier_.size());
    carriers_ = nextPacket_ % kFilterbankPeriodPackets;
    while (carriers_ * room < reservoir_.size()) carriers_ += kFilterbankPeriodPackets;
    for (std::uint64_t i = 0; i < carriers_; ++i) {
        const unsigned char* decoded = nullptr;
        if (decodeFed(&decoded) != Outcome::kSound) return false;
    }
    return true;
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
    return mended(*bytes, std::binary_search(undecodable_.begin(), undecodable_.end(), packet));
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
    const std::uint64_t zeros = carriers_ * room - reservoir_.size();  // in front of it
    for (std::uint64_t at = std::max(zeros, before); at < before + room; ++at)
        whole[whole.size() - room + at - before] = reservoir_[at - zeros];
    return whole;
}

bool MpegDecoder::feedBytes(Bytes bytes) {
    return mpg123_feed(handle_.get(), reinterpret_cast<const unsigned char*>(bytes.data()),
                       bytes.size()) == MPG123_OK;
}

// The packet as the library gets it. It gives up half-way on a packet that it cannot decode, and
// its filterbank is then out of step for the rest of the run; so it is not given such a packet, or
// not again.
//
// What is no packet of the stream is replaced by silence. One that the stream cuts short is filled
// up with zeros. And a layer III packet whose side information is damaged, or whose bits start
// before those that the library was given or before those of the packet before it, has its side
// information blanked, which makes it silence that still fills the reservoir. So has one that is to
// be silent.
Bytes MpegDecoder::mended(Bytes packet, bool isSilent) {
    const auto header = parseMpegHeader(packet);
    const bool isOurs = header && header->agreesWith(header_);
    if (!isOurs || (isSilent && header->layer != 3)) packet = silence_;
    const MpegHeader stated = *parseMpegHeader(packet);
    const std::uint32_t statedBytes = stated.packetBytes(stream_->freeFormatBytes);
    const std::uint64_t ownBytes = soundBytes(stated, statedBytes);
    bool isSound = isOurs && !isSilent;
    if (stated.layer == 3) {
        const MpegSideInfo info = parseMpegSideInfo(stated, packet);
        isSound = isSound && info.isLegal && info.reservoirBytes <= reservoirBytes_ &&
                  info.soundBits <= 8 * (info.reservoirBytes + ownBytes);
        if (isSound) reservoirBytes_ = info.reservoirBytes;  // nobody reaches behind this one
    }
    if (!isSound || statedBytes != packet.size()) {
        packet = packet.first(std::min(packet.size(), mended_.size()));
        std::fill(std::copy(packet.begin(), packet.end(), mended_.begin()), mended_.end(),
                  std::byte{0});
        if (stated.layer == 3 && !isSound) blankSideInfo(stated, mended_, reservoirBytes_);
        packet = Bytes(mended_).first(statedBytes);
    }
    reservoirBytes_ = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(reservoirBytes_ + ownBytes, maxReservoirBytes(stated)));
    return packet;
}

// The library gives up on a granule whose bits make no sense, and on the packet with it, leaving
// zeros and its filterbank out of step. Sound never ends so at once: the transform overlaps.
bool MpegDecoder::breaksOff(const float* samples) const {
    if (header_.layer != 3) return false;
    bool afterSound = endsInSound_;
    for (std::size_t at = 0; at < samplesPerPacket_; at += kGranuleFrames * channels_) {
        if (afterSound && !isSound(samples + at, samplesPerPacket_ - at)) return true;
        afterSound = isSound(samples + at + (kGranuleFrames - 1) * channels_, channels_);
    }
    return false;
}

void MpegDecoder::rememberUndecodable(std::uint64_t packet) {
    const auto place = std::lower_bound(undecodable_.begin(), undecodable_.end(), packet);
    const bool isKnown = place != undecodable_.end() && *place == packet;
    if (!isKnown) undecodable_.insert(place, packet);
}

// Decodes the next packet. While packets are mono, the library keeps what the second channel played
// last, however long ago: where stereo begins again, that channel begins from silence.
bool MpegDecoder::decodeNext(float* samples) {
    const std::uint32_t channels = channelsOf(nextPacket_);
    if (previousChannels_ == 1 && channels == 2) {
        const std::uint64_t packet = nextPacket_;
        if (!restartBefore(packet)) return false;
        while (nextPacket_ < packet)
            if (!decodeInStep(unused_.data())) return false;
    }
    if (!decodeInStep(samples)) return false;
    previousChannels_ = channels;
    return true;
}

// What the library makes of the next packet or carrier.
MpegDecoder::Outcome MpegDecoder::decodeFed(const unsigned char** decoded) {
    const bool looksAhead = stream_->freeFormatBytes != 0;
    const std::uint64_t end = stream_->packets.size() + (looksAhead ? 1 : 0);
    unsigned char* samples = nullptr;
    std::size_t sampleBytes = 0;
    int status = MPG123_NEED_MORE;
    while (status == MPG123_NEED_MORE || status == MPG123_NEW_FORMAT) {
        if (status == MPG123_NEED_MORE) {
            if (packetsAhead_ > (looksAhead ? kMaxPacketsAhead : 0) || nextToFeed_ >= end) break;
            if (!feedNext()) return Outcome::kFailure;
        }
        off_t number = 0;
        status = mpg123_decode_frame(handle_.get(), &number, &samples, &sampleBytes);
    }
    if (status == MPG123_ERR && hasRunOutOfMemory(handle_.get())) return Outcome::kFailure;
    --packetsAhead_;
    *decoded = samples;
    const bool isWhole = status == MPG123_OK && sampleBytes == samplesPerPacket_ * sizeof(float);
    return isWhole ? Outcome::kSound : Outcome::kNonsense;
}

// What the library cannot make sense of is silence.
bool MpegDecoder::decodeInStep(float* samples) {
    const unsigned char* decoded = nullptr;
    const Outcome outcome = decodeFed(&decoded);
    if (outcome == Outcome::kFailure) {
        isOpen_ = false;  // what was fed is not known any more
        return false;
    }
    ++nextPacket_;
    if (outcome == Outcome::kNonsense) {
        std::fill_n(samples, samplesPerPacket_, 0.0F);
        return restart(nextPacket_);  // the library may have stopped anywhere in what it was fed
    }
    std::memcpy(samples, decoded, samplesPerPacket_ * sizeof(float));
    if (breaksOff(samples)) rememberUndecodable(nextPacket_ - 1);
    endsInSound_ = isSound(samples + samplesPerPacket_ - channels_, channels_);
    return true;
}

}  // namespace atdp::services

#include "services/containers/mpeg4.h"

#include <array>

#include "services/containers/linear_pcm.h"
#include "services/containers/mpeg.h"
#include "services/containers/mpeg4_atoms.h"
#include "services/containers/mpeg4_track.h"

namespace atdp::services {
namespace {

constexpr std::uint32_t kMpegLayer3Tag = 0x6D73'0055;  // 'ms' and the tag of WAVE files

bool isFileType(Bytes head) {
    constexpr std::uint32_t kSmallest = 12, kLargest = 4096;  // a list of brands
    ByteCursor cursor(head);
    const auto bytes = cursor.bigEndian<std::uint32_t>();
    const auto type = cursor.bigEndian<std::uint32_t>();
    return !cursor.failed() && type == fourCharCode("ftyp") && bytes >= kSmallest &&
           bytes <= kLargest;
}

bool isSoundBrand(std::uint32_t brand) {
    return brand == fourCharCode("M4A ") || brand == fourCharCode("M4B ");
}

// From the major brand, at the start of the file type, and the compatible ones after a version.
Result<std::uint32_t> fileTypeOf(ByteSource& source) {
    const auto body = findAtom(source, {0, source.sizeBytes()}, {fourCharCode("ftyp")});
    if (!body) return body.failure();
    if (!*body) return kAudioFileMPEG4Type;
    constexpr std::size_t kBrandBytes = 4, kVersion = 1;
    for (std::size_t i = 0; i < (*body)->bytes / kBrandBytes; ++i) {
        std::array<std::byte, kBrandBytes> brand{};
        const auto got = source.readAt((*body)->offset + i * kBrandBytes, brand);
        if (!got) return got.failure();
        if (i != kVersion && isSoundBrand(loadBigEndian<std::uint32_t>(brand.data())))
            return kAudioFileM4AType;
    }
    return kAudioFileMPEG4Type;
}

Result<AudioStreamBasicDescription> losslessFormat(ByteSource& source, const SoundTrack& track) {
    const auto config = readAlacConfig(source, track.entry);
    if (!config) return config.failure();
    if (!*config) return Failure::kDamaged;
    return alacFormat(**config);
}

// The code that the encoding goes under here: an 'mp4a' entry may hold several, and MPEG audio has
// more than one.
Result<std::uint32_t> encodingOf(ByteSource& source, const SampleEntry& entry) {
    if (entry.code == kMpegLayer3Tag) return kAudioFormatMPEGLayer3;
    if (entry.code != fourCharCode("mp4a")) return entry.code;
    const auto objectType = readObjectType(source, entry);
    if (!objectType) return objectType.failure();
    switch (*objectType) {
        case 0x40:  // MPEG-4
        case 0x66:  // MPEG-2: main, low complexity, scalable rate
        case 0x67:
        case 0x68:
            return kAudioFormatMPEG4AAC;
        case 0x69:  // MPEG-2 and MPEG-1, layers I to III
        case 0x6B:
            return kAudioFormatMPEGLayer3;
        default:
            return entry.code;
    }
}

// Encodings that this system names but does not decode.
Result<AudioStreamBasicDescription> otherFormat(const SampleEntry& entry, std::uint32_t encoding) {
    if (!isPlausible(entry.rate, entry.channels)) return Failure::kDamaged;
    AudioStreamBasicDescription format{};
    format.mSampleRate = entry.rate;
    format.mFormatID = encoding;
    format.mChannelsPerFrame = entry.channels;
    return format;
}

Result<AudioStreamBasicDescription> formatOf(ByteSource& source, const SoundTrack& track) {
    if (track.entry.code == kAudioFormatAppleLossless) return losslessFormat(source, track);
    const auto encoding = encodingOf(source, track.entry);
    if (!encoding) return encoding.failure();
    if (!isMpegAudio(*encoding)) return otherFormat(track.entry, *encoding);
    const auto header = readFirstHeader(source, track);
    if (!header) return header.failure();
    if (*header) return mpegFormat(**header);
    if (isMpegAudio(track.entry.code)) return Failure::kDamaged;
    return otherFormat(track.entry, track.entry.code);
}

}  // namespace

bool mayBeMpeg4(Bytes head) {
    if (isFileType(head)) return true;
    ByteCursor cursor(head);
    cursor.skip(4);
    switch (cursor.bigEndian<std::uint32_t>()) {
        case fourCharCode("moov"):
        case fourCharCode("mdat"):
        case fourCharCode("free"):
        case fourCharCode("skip"):
        case fourCharCode("wide"):
            return true;
        default:
            return false;
    }
}

bool isMpeg4(const SoundDescription& sound) {
    return sound.fileType == kAudioFileM4AType || sound.fileType == kAudioFileMPEG4Type;
}

Result<SoundDescription> describeMpeg4(ByteSource& source) {
    const auto movie = findMovie(source);
    if (!movie) return movie.failure();
    if (!*movie) {
        std::array<std::byte, 8> head;
        const auto got = source.readAt(0, head);
        if (!got) return got.failure();
        return isFileType(std::span(head).first(*got)) ? Failure::kDamaged
                                                       : Failure::kUnknownFileType;
    }
    const auto track = readSoundTrack(source, **movie);
    if (!track) return track.failure();
    const auto fileType = fileTypeOf(source);
    if (!fileType) return fileType.failure();
    const auto format = formatOf(source, *track);
    if (!format) return format.failure();
    SoundDescription sound;
    sound.fileType = *fileType;
    sound.format = *format;
    if (format->mFormatID == kAudioFormatAppleLossless)
        sound.channelMask = alacChannelMask(format->mChannelsPerFrame);
    return sound;
}

}  // namespace atdp::services

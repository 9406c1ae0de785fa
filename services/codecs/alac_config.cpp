#include "services/codecs/alac_config.h"

#include <array>
#include <string_view>

#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::size_t kAtomBytes = 12;  // of both wrappers: size, type and one word

bool startsWithAtom(Bytes bytes, std::string_view type) {
    return bytes.size() >= kAtomBytes &&
           std::string_view(reinterpret_cast<const char*>(bytes.data()) + 4, 4) == type;
}

Bytes withoutWrapper(Bytes cookie) {
    if (startsWithAtom(cookie, "frma")) cookie = cookie.subspan(kAtomBytes);
    if (startsWithAtom(cookie, "alac")) cookie = cookie.subspan(kAtomBytes);
    return cookie;
}

bool isPossible(const AlacConfig& config) {
    const bool hasDepth = config.bitDepth == 16 || config.bitDepth == 20 || config.bitDepth == 24 ||
                          config.bitDepth == 32;
    return hasDepth && config.channels > 0 && config.channels <= kMaxAlacChannels &&
           config.frameLength > 0 && config.frameLength <= kMaxAlacFrames &&
           config.maxCodeBits > 0 && config.maxCodeBits < 32;
}

std::uint32_t losslessFlags(std::uint32_t bitDepth) {
    return bitDepth == 16   ? kAppleLosslessFormatFlag_16BitSourceData
           : bitDepth == 20 ? kAppleLosslessFormatFlag_20BitSourceData
           : bitDepth == 24 ? kAppleLosslessFormatFlag_24BitSourceData
                            : kAppleLosslessFormatFlag_32BitSourceData;
}

}  // namespace

std::optional<AlacConfig> parseAlacConfig(Bytes cookie) {
    ByteCursor cursor(withoutWrapper(cookie));
    AlacConfig config;
    config.frameLength = cursor.bigEndian<std::uint32_t>();
    const auto version = cursor.bigEndian<std::uint8_t>();
    config.bitDepth = cursor.bigEndian<std::uint8_t>();
    config.meanFactor = cursor.bigEndian<std::uint8_t>();
    config.initialMean = cursor.bigEndian<std::uint8_t>();
    config.maxCodeBits = cursor.bigEndian<std::uint8_t>();
    config.channels = cursor.bigEndian<std::uint8_t>();
    cursor.skip(2);  // longest run of zeros: never needed
    config.maxPacketBytes = cursor.bigEndian<std::uint32_t>();
    config.averageBitRate = cursor.bigEndian<std::uint32_t>();
    config.sampleRate = cursor.bigEndian<std::uint32_t>();
    if (cursor.failed() || version != 0 || !isPossible(config)) return std::nullopt;
    return config;
}

AudioStreamBasicDescription alacFormat(const AlacConfig& config) {
    AudioStreamBasicDescription format{};
    format.mSampleRate = config.sampleRate;
    format.mFormatID = kAudioFormatAppleLossless;
    format.mFormatFlags = losslessFlags(config.bitDepth);
    format.mFramesPerPacket = config.frameLength;
    format.mChannelsPerFrame = config.channels;
    return format;
}

std::uint32_t alacChannelMask(std::uint32_t channels) {
    constexpr std::array<std::uint32_t, kMaxAlacChannels> kMasks = {
        0x04,   // C
        0x03,   // L R
        0x07,   // L R C
        0x107,  // L R C Cs
        0x37,   // L R C Ls Rs
        0x3F,   // L R C LFE Ls Rs
        0x13F,  // L R C LFE Ls Rs Cs
        0xFF,   // L R C LFE Ls Rs Lc Rc
    };
    return kMasks[channels - 1];
}

}  // namespace atdp::services

// The packets of Apple Lossless in an MPEG-4 or CAF file in memory.
#pragma once

#include <string>

#include "services/containers/caf.h"
#include "services/containers/mpeg4_packets.h"
#include "tests/support/described_sound.h"

namespace atdp::test {

inline services::Result<services::LosslessTrack> lossless(const std::string& file) {
    MemorySource source(file);
    return file.starts_with("caff") ? services::readCafLosslessTrack(source)
                                    : services::readLosslessTrack(source);
}

// "bytes of packets: priming, valid", so that a whole track is compared at once.
inline std::string summary(const std::string& file) {
    const auto described = describe(file);
    if (!described) return "not described";
    const auto track = lossless(file);
    if (!track) return "not read";
    std::string text;
    for (const auto& packet : track->packets)
        text += file.substr(packet.offset(), packet.bytes() ? 1 : 0) +
                std::to_string(packet.bytes()) + " ";
    return text + ": " + std::to_string(track->primingFrames) + ", " +
           std::to_string(track->validFrames);
}

}  // namespace atdp::test

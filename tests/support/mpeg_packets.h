// The packets of MPEG audio in a file in memory.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "services/containers/mpeg.h"
#include "tests/support/described_sound.h"

namespace atdp::test {

inline std::optional<services::MpegPackets> packetsOf(const std::string& bytes) {
    auto source = std::make_shared<MemorySource>(bytes);
    const auto described = services::describeSound(*source);
    if (!described) return std::nullopt;
    auto packets = services::findMpegPackets(source, *described);
    if (!packets) return std::nullopt;
    return std::move(*packets);
}

// "priming remainder", or "none".
inline std::string gaplessCountsOf(const std::string& bytes) {
    const auto found = packetsOf(bytes);
    if (!found) return "not found";
    if (!found->hasGaplessCounts) return "none";
    return std::to_string(found->primingFrames) + ' ' + std::to_string(found->remainderFrames);
}

}  // namespace atdp::test

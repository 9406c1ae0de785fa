// The packets of compressed sound, and what decodes them.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/core_audio_types.h"
#include "services/codecs/packet_reader.h"
#include "services/containers/sound_description.h"

namespace atdp::services {

struct PacketStream {
    PacketLayout layout;
    std::optional<AudioFilePacketTableInfo> gaplessCounts;  // none where the file does not tell

    // May be called any number of times, and what it makes may outlive this record.
    std::function<Result<std::unique_ptr<PacketDecoder>>()> makeDecoder;
};

// Whether sound of that description comes as a stream of packets that can be decoded.
bool isPacketStream(const SoundDescription& sound);

// Finds all packets, which may mean to walk over the whole file.
Result<PacketStream> findPacketStream(const std::shared_ptr<ByteSource>& source,
                                      const SoundDescription& sound);

}  // namespace atdp::services

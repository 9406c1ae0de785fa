// What an MPEG-4 or QuickTime file says of the encoding of a sound track.
#pragma once

#include <cstdint>
#include <optional>

#include "services/codecs/alac_config.h"
#include "services/io/byte_source.h"

namespace atdp::services {

struct SampleEntry {
    std::uint32_t code = 0;  // four-character code
    std::uint32_t channels = 0;
    double rate = 0;       // Hz; 0 where the field is too narrow for it
    ByteRange extensions;  // atoms
};

// The first entry of a sample description ('stsd'), of any version; none where it is cut short.
Result<std::optional<SampleEntry>> readSampleEntry(ByteSource& source, ByteRange description);

// The configuration of Apple Lossless, none where there is none or it cannot be.
Result<std::optional<AlacConfig>> readAlacConfig(ByteSource& source, const SampleEntry& entry);

// What an 'mp4a' entry holds (ISO 14496-1, objectTypeIndication); 0 where it does not tell.
Result<std::uint8_t> readObjectType(ByteSource& source, const SampleEntry& entry);

}  // namespace atdp::services

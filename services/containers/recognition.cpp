#include "services/containers/recognition.h"

#include <array>

#include "services/containers/aiff.h"
#include "services/containers/mpeg.h"
#include "services/containers/wave.h"
#include "services/io/block_cache.h"

namespace atdp::services {

Result<SoundDescription> describeSound(ByteSource& source) {
    BlockCache headers(source);
    std::array<std::byte, 12> head;
    const auto got = headers.readAt(0, head);
    if (!got) return got.failure();
    const Bytes known = std::span(head).first(*got);
    if (isWave(known)) return describeWave(headers);
    if (isAiff(known)) return describeAiff(headers);
    return describeMpeg(source);
}

}  // namespace atdp::services

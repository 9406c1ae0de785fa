#include "services/containers/recognition.h"

#include <array>

#include "services/containers/aiff.h"
#include "services/containers/au.h"
#include "services/containers/caf.h"
#include "services/containers/mpeg.h"
#include "services/containers/mpeg4.h"
#include "services/containers/wave.h"
#include "services/containers/wave64.h"
#include "services/io/block_cache.h"

namespace atdp::services {

namespace {

constexpr std::size_t kHeadBytes = 40;  // what containers are told apart by

}  // namespace

Result<SoundDescription> describeSound(ByteSource& source) {
    BlockCache headers(source);
    std::array<std::byte, kHeadBytes> head;
    const auto got = headers.readAt(0, head);
    if (!got) return got.failure();
    const Bytes known = std::span(head).first(*got);
    if (isWave(known)) return describeWave(headers);
    if (isAiff(known)) return describeAiff(headers);
    if (startsAsCaf(known)) return describeCaf(headers);
    if (isWave64(known)) return describeWave64(headers);
    if (isAu(known)) return describeAu(headers);
    if (mayBeMpeg4(known)) {
        const auto sound = describeMpeg4(headers);
        if (sound || sound.failure() != Failure::kUnknownFileType) return sound;
    }
    return describeMpeg(source);
}

}  // namespace atdp::services

// The packets of the sound track of an MPEG-4 or QuickTime file.
#pragma once

#include <memory>

#include "services/codecs/lossless_track.h"
#include "services/codecs/mpeg_packets.h"
#include "services/io/byte_source.h"

namespace atdp::services {

// Both read the tables of a file that was described with that encoding.
Result<LosslessTrack> readLosslessTrack(ByteSource& source);
Result<MpegPackets> readMpegTrack(const std::shared_ptr<ByteSource>& source);

}  // namespace atdp::services

// MPEG audio as it is, layers I to III: frames one after the other, with tags before and after them
// and whatever else got in between.
#pragma once

#include <memory>

#include "services/codecs/mpeg_header.h"
#include "services/codecs/mpeg_packets.h"
#include "services/containers/sound_description.h"

namespace atdp::services {

// Whether a format code is that of MPEG audio.
bool isMpegAudio(std::uint32_t format);

// The format of a stream whose first frame has that header.
AudioStreamBasicDescription mpegFormat(const MpegHeader& header);

// Recognises a file by several headers in a row that agree. kUnknownFileType when there are none.
Result<SoundDescription> describeMpeg(ByteSource& source);

// The same for MPEG audio within another container, whose type the description gets. kDamaged when
// there are none.
Result<SoundDescription> describeMpegData(ByteSource& source, std::uint32_t fileType,
                                          ByteRange data);

// Walks over the whole stream that was described and finds its packets, whatever a header says of
// their number.
Result<MpegPackets> findMpegPackets(std::shared_ptr<ByteSource> source,
                                    const SoundDescription& sound);

}  // namespace atdp::services

// The sound track of an MPEG-4 or QuickTime file.
#pragma once

#include <optional>

#include "services/codecs/mpeg_header.h"
#include "services/containers/mpeg4_sample_entry.h"

namespace atdp::services {

// The first sound track, where its atoms are and how it is encoded.
struct SoundTrack {
    ByteRange movie;
    ByteRange track;
    ByteRange sampleTable;
    SampleEntry entry;
};

// The movie ('moov') of a file, wherever it is; none where there is none.
Result<std::optional<ByteRange>> findMovie(ByteSource& source);

// kDamaged when the movie has no sound track, or one that does not tell what it is.
Result<SoundTrack> readSoundTrack(ByteSource& source, ByteRange movie);

// The header at the start of the first packet of MPEG audio; none where there is no such packet.
Result<std::optional<MpegHeader>> readFirstHeader(ByteSource& source, const SoundTrack& track);

}  // namespace atdp::services

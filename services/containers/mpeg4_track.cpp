#include "services/containers/mpeg4_track.h"

#include <array>

#include "platform/core_audio_types.h"
#include "services/containers/mpeg4_atoms.h"
#include "services/containers/mpeg4_sample_table.h"
#include "services/io/read_start.h"

namespace atdp::services {
namespace {

Result<bool> isSound(ByteSource& source, ByteRange track) {
    const auto handler = findAtom(source, track, {fourCharCode("mdia"), fourCharCode("hdlr")});
    if (!handler) return handler.failure();
    if (!*handler) return false;
    std::array<std::byte, 12> room;
    const auto body = readStart(source, **handler, room);
    if (!body) return body.failure();
    ByteCursor cursor(*body);
    cursor.skip(8);  // version and flags, component type
    return cursor.bigEndian<std::uint32_t>() == fourCharCode("soun");
}

Result<std::optional<ByteRange>> findSoundTrack(ByteSource& source, ByteRange movie) {
    AtomWalk walk(source, movie);
    for (;;) {
        const auto atom = walk.next();
        if (!atom) return atom.failure();
        if (!*atom) return std::optional<ByteRange>();
        if ((*atom)->type != fourCharCode("trak")) continue;
        const auto found = isSound(source, (*atom)->body);
        if (!found) return found.failure();
        if (*found) return std::optional((*atom)->body);
    }
}

}  // namespace

Result<std::optional<ByteRange>> findMovie(ByteSource& source) {
    return findAtom(source, {0, source.sizeBytes()}, {fourCharCode("moov")});
}

Result<SoundTrack> readSoundTrack(ByteSource& source, ByteRange movie) {
    SoundTrack sound;
    sound.movie = movie;
    const auto track = findSoundTrack(source, movie);
    if (!track) return track.failure();
    if (!*track) return Failure::kDamaged;
    sound.track = **track;
    const auto table = findAtom(source, sound.track,
                                {fourCharCode("mdia"), fourCharCode("minf"), fourCharCode("stbl")});
    if (!table) return table.failure();
    if (!*table) return Failure::kDamaged;
    sound.sampleTable = **table;
    const auto description = findAtom(source, sound.sampleTable, {fourCharCode("stsd")});
    if (!description) return description.failure();
    if (!*description) return Failure::kDamaged;
    const auto entry = readSampleEntry(source, **description);
    if (!entry) return entry.failure();
    if (!*entry) return Failure::kDamaged;
    sound.entry = **entry;
    return sound;
}

Result<std::optional<MpegHeader>> readFirstHeader(ByteSource& source, const SoundTrack& track) {
    const auto offset = firstPacketOffset(source, track.sampleTable);
    if (!offset) return offset.failure();
    if (!*offset) return std::optional<MpegHeader>();
    std::array<std::byte, MpegHeader::kBytes> bytes;
    const auto got = source.readAt(**offset, bytes);
    if (!got) return got.failure();
    return parseMpegHeader(std::span(bytes).first(*got));
}

}  // namespace atdp::services

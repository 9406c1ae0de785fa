#include "services/containers/mpeg4_timing.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "platform/core_audio_types.h"
#include "services/containers/mpeg4_atoms.h"
#include "services/containers/mpeg4_table.h"
#include "services/io/read_start.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();

// A length in units of its own.
struct Duration {
    std::uint64_t units = 0;
    std::uint32_t unitsPerSecond = 0;  // 0 where nothing is known
};

// value * numerator / denominator, rounded; the largest number where it does not fit.
std::uint64_t scaled(std::uint64_t value, std::uint32_t numerator, std::uint32_t denominator) {
    if (numerator == denominator) return value;
    const std::uint64_t whole = value / denominator;
    const std::uint64_t rest = value % denominator;
    if (whole >= kMost / numerator) return kMost;
    return whole * numerator + (rest * numerator + denominator / 2) / denominator;
}

// The header of a movie ('mvhd') or of its media ('mdhd').
Result<Duration> readHeader(ByteSource& source, ByteRange region,
                            std::initializer_list<std::uint32_t> path) {
    const auto body = findAtom(source, region, path);
    if (!body) return body.failure();
    if (!*body) return Duration();
    std::array<std::byte, 32> room;
    const auto bytes = readStart(source, **body, room);
    if (!bytes) return bytes.failure();
    ByteCursor cursor(*bytes);
    const bool isLarge = cursor.bigEndian<std::uint32_t>() >> 24 == 1;
    cursor.skip(isLarge ? 16 : 8);  // times of creation and change
    Duration duration;
    duration.unitsPerSecond = cursor.bigEndian<std::uint32_t>();
    duration.units =
        isLarge ? cursor.bigEndian<std::uint64_t>() : cursor.bigEndian<std::uint32_t>();
    return cursor.failed() ? Duration() : duration;
}

// What the edit list says, apart from its empty edits.
struct Edits {
    std::uint64_t start = 0;   // of the first, in media time
    std::uint64_t length = 0;  // of all, in movie time; 0: to the end
};

Result<Edits> readEdits(ByteSource& source, ByteRange track) {
    constexpr std::uint32_t kHeadBytes = 8;
    const auto body = findAtom(source, track, {fourCharCode("edts"), fourCharCode("elst")});
    if (!body) return body.failure();
    if (!*body) return Edits();
    auto table = AtomTable::open(source, **body, kHeadBytes, 12);
    if (table && table->version() == 1) table = AtomTable::open(source, **body, kHeadBytes, 20);
    if (!table) return table.failure();
    const bool isLarge = table->version() == 1;
    std::optional<Edits> edits;
    for (std::uint64_t index = 0; index < table->count(); ++index) {
        auto entry = table->at(index);
        if (!entry) return entry.failure();
        const std::uint64_t length =
            isLarge ? entry->bigEndian<std::uint64_t>() : entry->bigEndian<std::uint32_t>();
        const std::int64_t start =
            isLarge ? entry->bigEndian<std::int64_t>() : entry->bigEndian<std::int32_t>();
        if (start < 0) continue;  // empty
        if (!edits) edits = Edits{static_cast<std::uint64_t>(start), 0};
        edits->length += std::min(length, kMost - edits->length);
    }
    return edits.value_or(Edits());
}

// Frames of all packets, of which the last may have fewer than the others. A total that has another
// number of packets is not theirs.
std::uint64_t totalFrames(const SampleTable& table, const Duration& media,
                          std::uint32_t framesPerPacket, std::uint32_t rate) {
    const std::uint64_t most = table.packets.size() * framesPerPacket;
    std::uint64_t total = most;
    if (media.unitsPerSecond == 0) return total;
    const auto believe = [&](std::uint64_t units) {
        const std::uint64_t frames = scaled(units, rate, media.unitsPerSecond);
        if (frames < total && frames + framesPerPacket > most) total = frames;
    };
    believe(table.duration);
    if (!table.isCutShort) believe(media.units);
    return total;
}

// Cuts the sound at the end of its edits. Movie time may be coarser than a frame: what agrees with
// the packets within a unit of it cuts nothing.
std::uint64_t cutToEdits(std::uint64_t frames, const Edits& edits, const Duration& movie,
                         std::uint32_t rate) {
    if (edits.length == 0 || movie.unitsPerSecond == 0) return frames;
    const std::uint64_t lastUnit = edits.length == kMost ? kMost : edits.length + 1;
    if (scaled(lastUnit, rate, movie.unitsPerSecond) > frames) return frames;
    return std::min(frames, scaled(edits.length, rate, movie.unitsPerSecond));
}

}  // namespace

Result<SoundSpan> findSoundSpan(ByteSource& source, ByteRange movie, ByteRange track,
                                const SampleTable& table, std::uint32_t framesPerPacket,
                                std::uint32_t rate) {
    const auto movieTime = readHeader(source, movie, {fourCharCode("mvhd")});
    if (!movieTime) return movieTime.failure();
    const auto media = readHeader(source, track, {fourCharCode("mdia"), fourCharCode("mdhd")});
    if (!media) return media.failure();
    const auto edits = readEdits(source, track);
    if (!edits) return edits.failure();
    const std::uint64_t total = totalFrames(table, *media, framesPerPacket, rate);
    SoundSpan span;
    span.validFrames = total;
    const std::uint64_t priming =
        media->unitsPerSecond == 0 ? 0 : scaled(edits->start, rate, media->unitsPerSecond);
    constexpr std::uint64_t kMaxPriming = std::numeric_limits<std::int32_t>::max();
    if (priming >= total || priming > kMaxPriming) return span;  // the edits are not of this sound
    span.primingFrames = priming;
    span.validFrames = cutToEdits(total - priming, *edits, *movieTime, rate);
    return span;
}

}  // namespace atdp::services

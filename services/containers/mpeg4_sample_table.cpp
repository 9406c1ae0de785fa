#include "services/containers/mpeg4_sample_table.h"

#include <algorithm>
#include <utility>

#include "platform/core_audio_types.h"
#include "services/containers/mpeg4_atoms.h"
#include "services/containers/mpeg4_table.h"
#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::uint32_t kHeadBytes = 8;
constexpr std::uint32_t kSizesHeadBytes = 12;

Result<ByteRange> bodyOf(ByteSource& source, ByteRange table, std::uint32_t type) {
    const auto atom = findAtom(source, table, {type});
    if (!atom) return atom.failure();
    return (*atom).value_or(ByteRange{});
}

Result<AtomTable> openTable(ByteSource& source, ByteRange table, std::uint32_t type,
                            std::uint32_t entryBytes) {
    const auto body = bodyOf(source, table, type);
    if (!body) return body.failure();
    return AtomTable::open(source, *body, kHeadBytes, entryBytes);
}

// Bytes of each packet: one number for all, or a table of 8, 16 or 32 bits an entry. (Entries of 4
// bits cannot hold the size of a packet of sound.)
class PacketSizes {
 public:
    static Result<PacketSizes> open(ByteSource& source, ByteRange table) {
        const auto plain = bodyOf(source, table, fourCharCode("stsz"));
        if (!plain) return plain.failure();
        return plain->bytes > 0 ? openPlain(source, *plain) : openCompact(source, table);
    }

    std::uint64_t count() const { return count_; }

    // The size of packet `index`, below count().
    Result<std::uint32_t> at(std::uint64_t index) {
        if (commonBytes_ > 0) return commonBytes_;
        auto entry = entries_.at(index);
        if (!entry) return entry.failure();
        switch (entry->remainingBytes()) {
            case 1:
                return entry->bigEndian<std::uint8_t>();
            case 2:
                return entry->bigEndian<std::uint16_t>();
            default:
                return entry->bigEndian<std::uint32_t>();
        }
    }

 private:
    PacketSizes(AtomTable entries, std::uint64_t count, std::uint32_t commonBytes)
        : entries_(std::move(entries)),
          count_(std::min(count, kMaxPackets)),
          commonBytes_(commonBytes) {}

    static Result<PacketSizes> openPlain(ByteSource& source, ByteRange body) {
        const auto entries = AtomTable::open(source, body, kSizesHeadBytes, 4);
        if (!entries) return entries.failure();
        const std::uint32_t common = entries->field();
        if (common == 0) return PacketSizes(*entries, entries->count(), 0);
        // The count has no entries to show for it, but the packets have to be in the file.
        const std::uint64_t fitting =
            common < kMinCommonPacketBytes ? 0 : source.sizeBytes() / common;
        return PacketSizes(*entries, std::min<std::uint64_t>(entries->statedCount(), fitting),
                           common);
    }

    static Result<PacketSizes> openCompact(ByteSource& source, ByteRange table) {
        const auto body = bodyOf(source, table, fourCharCode("stz2"));
        if (!body) return body.failure();
        auto entries = AtomTable::open(source, *body, kSizesHeadBytes, 1);
        if (!entries) return entries.failure();
        const std::uint32_t bits = entries->field() & 0xFF;
        if (bits == 16) entries = AtomTable::open(source, *body, kSizesHeadBytes, 2);
        if (!entries) return entries.failure();
        return PacketSizes(*entries, bits == 8 || bits == 16 ? entries->count() : 0, 0);
    }

    AtomTable entries_;
    std::uint64_t count_;
    std::uint32_t commonBytes_;
};

// Where the chunks start that the packets lie in, one after the other.
class ChunkOffsets {
 public:
    static Result<ChunkOffsets> open(ByteSource& source, ByteRange table) {
        const auto narrow = openTable(source, table, fourCharCode("stco"), 4);
        if (!narrow) return narrow.failure();
        if (narrow->count() > 0) return ChunkOffsets(*narrow);
        const auto wide = openTable(source, table, fourCharCode("co64"), 8);
        if (!wide) return wide.failure();
        return ChunkOffsets(*wide);
    }

    std::uint64_t count() const { return entries_.count(); }

    Result<std::uint64_t> at(std::uint64_t chunk) {
        auto entry = entries_.at(chunk);
        if (!entry) return entry.failure();
        if (entry->remainingBytes() == 4) return entry->bigEndian<std::uint32_t>();
        return entry->bigEndian<std::uint64_t>();
    }

 private:
    explicit ChunkOffsets(AtomTable entries) : entries_(std::move(entries)) {}

    AtomTable entries_;
};

// Chunks in a row that have as many packets each.
struct ChunkRun {
    std::uint64_t firstChunk = 0;  // from 1 on
    std::uint32_t packetsPerChunk = 0;
};

Result<ChunkRun> runAt(AtomTable& runs, std::uint64_t index) {
    auto entry = runs.at(index);
    if (!entry) return entry.failure();
    ChunkRun run;
    run.firstChunk = entry->bigEndian<std::uint32_t>();
    run.packetsPerChunk = entry->bigEndian<std::uint32_t>();
    return run;
}

// Puts the three tables together.
class PacketWalk {
 public:
    PacketWalk(ByteSource& source, PacketSizes sizes, ChunkOffsets offsets, AtomTable runs)
        : fileBytes_(source.sizeBytes()),
          sizes_(std::move(sizes)),
          offsets_(std::move(offsets)),
          runs_(std::move(runs)) {}

    Result<SampleTable> run() {
        for (std::uint64_t index = 0; index < runs_.count(); ++index) {
            const auto chunks = runAt(runs_, index);
            if (!chunks) return chunks.failure();
            std::uint64_t end = offsets_.count();
            if (index + 1 < runs_.count()) {
                const auto next = runAt(runs_, index + 1);
                if (!next) return next.failure();
                end = std::min(end, std::max<std::uint64_t>(next->firstChunk, 1) - 1);
            }
            for (; chunk_ < end && collected() < sizes_.count(); ++chunk_)
                if (!addChunk(chunks->packetsPerChunk)) return Failure::kUnreadable;
        }
        found_.isCutShort = whole_ < collected();
        found_.packets.resize(whole_);
        return std::move(found_);
    }

 private:
    std::uint64_t collected() const { return found_.packets.size(); }

    bool addChunk(std::uint32_t packets) {
        const auto start = offsets_.at(chunk_);
        if (!start) return false;
        std::uint64_t offset = std::min(*start, PacketPlace::kMaxOffset + 1);
        for (; packets > 0 && collected() < sizes_.count(); --packets) {
            const auto bytes = sizes_.at(collected());
            if (!bytes) return false;
            addPacket({offset, *bytes});
            offset += *bytes;
        }
        return true;
    }

    void addPacket(ByteRange range) {
        const bool isWhole = range.end() <= fileBytes_ && range.offset <= PacketPlace::kMaxOffset;
        // Larger than any that is decoded: it stands for its frames, without its bytes.
        const bool isKept = isWhole && range.bytes <= PacketPlace::kMaxBytes;
        found_.packets.push_back(isKept ? PacketPlace(range.offset, range.bytes) : PacketPlace());
        if (isWhole) whole_ = collected();
    }

    std::uint64_t fileBytes_;
    PacketSizes sizes_;
    ChunkOffsets offsets_;
    AtomTable runs_;
    SampleTable found_;
    std::uint64_t chunk_ = 0;  // the next
    std::uint64_t whole_ = 0;  // packets up to the last that the file holds
};

Result<SampleTable> findPackets(ByteSource& source, ByteRange table) {
    const auto sizes = PacketSizes::open(source, table);
    if (!sizes) return sizes.failure();
    const auto offsets = ChunkOffsets::open(source, table);
    if (!offsets) return offsets.failure();
    const auto runs = openTable(source, table, fourCharCode("stsc"), 12);
    if (!runs) return runs.failure();
    return PacketWalk(source, *sizes, *offsets, *runs).run();
}

// How long the first `packets` take.
Result<std::uint64_t> durationOf(ByteSource& source, ByteRange table, std::uint64_t packets) {
    auto runs = openTable(source, table, fourCharCode("stts"), 8);
    if (!runs) return runs.failure();
    std::uint64_t duration = 0;
    for (std::uint64_t index = 0; index < runs->count() && packets > 0; ++index) {
        auto entry = runs->at(index);
        if (!entry) return entry.failure();
        const auto count = std::min<std::uint64_t>(packets, entry->bigEndian<std::uint32_t>());
        duration += count * entry->bigEndian<std::uint32_t>();
        packets -= count;
    }
    return duration;
}

}  // namespace

Result<SampleTable> readSampleTable(ByteSource& source, ByteRange table) {
    auto found = findPackets(source, table);
    if (!found) return found;
    const auto duration = durationOf(source, table, found->packets.size());
    if (!duration) return duration.failure();
    found->duration = *duration;
    return found;
}

Result<std::optional<std::uint64_t>> firstPacketOffset(ByteSource& source, ByteRange table) {
    const auto sizes = PacketSizes::open(source, table);
    if (!sizes) return sizes.failure();
    auto offsets = ChunkOffsets::open(source, table);
    if (!offsets) return offsets.failure();
    if (sizes->count() == 0 || offsets->count() == 0) return std::optional<std::uint64_t>();
    const auto offset = offsets->at(0);
    if (!offset) return offset.failure();
    return std::optional(*offset);
}

}  // namespace atdp::services

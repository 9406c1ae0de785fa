#include "mp4/atom_analysis.h"

#include <algorithm>
#include <span>

#include "mp4/atom_reader.h"
#include "mp4/m4a_record.h"
#include "platform/core_audio_types.h"

namespace atdp {

const std::uint8_t* treeEnd = nullptr;

namespace {

struct Counter {
    std::uint32_t type;
    std::uint32_t* count;
};

// There is none for stco: its count stays 0.
const Counter kCounters[] = {
    {fourCharCode("ftyp"), &m4a.ftyp.count}, {fourCharCode("moov"), &m4a.moov.count},
    {fourCharCode("mvhd"), &m4a.mvhd.count}, {fourCharCode("trak"), &m4a.trak.count},
    {fourCharCode("tkhd"), &m4a.tkhd.count}, {fourCharCode("mdia"), &m4a.mdia.count},
    {fourCharCode("mdhd"), &m4a.mdhd.count}, {fourCharCode("hdlr"), &m4a.hdlr.count},
    {fourCharCode("minf"), &m4a.minf.count}, {fourCharCode("smhd"), &m4a.smhd.count},
    {fourCharCode("dinf"), &m4a.dinf.count}, {fourCharCode("dref"), &m4a.dref.count},
    {fourCharCode("stbl"), &m4a.stbl.count}, {fourCharCode("stsd"), &m4a.stsd.count},
    {fourCharCode("stts"), &m4a.stts.count}, {fourCharCode("stsc"), &m4a.stsc.count},
    {fourCharCode("stsz"), &m4a.stsz.count}, {fourCharCode("udta"), &m4a.udta.count},
    {fourCharCode("meta"), &m4a.meta.count}, {fourCharCode("ilst"), &m4a.ilst.count},
};

struct Tag {
    std::uint32_t type;
    std::uint32_t* count;
    std::uint32_t* length;
    std::uint8_t* data;
};

template <std::size_t kDataBytes>
constexpr Tag tagOf(std::uint32_t type, M4aTag<kDataBytes>& group) {
    return {type, &group.count, &group.length, group.data};
}

const Tag kTags[] = {
    tagOf(fourCharCode("\251nam"), m4a.nam), tagOf(fourCharCode("\251ART"), m4a.ART),
    tagOf(fourCharCode("\251wrt"), m4a.wrt), tagOf(fourCharCode("\251alb"), m4a.alb),
    tagOf(fourCharCode("\251day"), m4a.day), tagOf(fourCharCode("\251too"), m4a.too),
    tagOf(fourCharCode("gnre"), m4a.gnre),   tagOf(fourCharCode("trkn"), m4a.trkn),
    tagOf(fourCharCode("disk"), m4a.disk),   tagOf(fourCharCode("cpil"), m4a.cpil),
    tagOf(fourCharCode("pgap"), m4a.pgap),
};

// A run of fields that stand side by side in the atom and in the record.
struct Fields {
    std::uint32_t type;
    std::uint16_t from;  // byte of the body
    std::uint16_t bytes;
    void* field;
};

// The fields of mdhd are two bytes longer than their group: these go over the first two of hdlr's
// counter, which therefore is no count where an mdhd atom follows. This is kept as it is.
const Fields kFields[] = {
    {fourCharCode("ftyp"), 0, 8, &m4a.ftyp.majorBrand},
    {fourCharCode("mvhd"), 0, 26, &m4a.mvhd.versionFlags},
    {fourCharCode("mvhd"), 36, 36, &m4a.mvhd.matrix},
    {fourCharCode("mvhd"), 72, 28, &m4a.mvhd.predefined},
    {fourCharCode("tkhd"), 0, 16, &m4a.tkhd.versionFlags},
    {fourCharCode("tkhd"), 20, 4, &m4a.tkhd.duration},
    {fourCharCode("tkhd"), 32, 6, &m4a.tkhd.layer},
    {fourCharCode("tkhd"), 40, 36, &m4a.tkhd.matrix},
    {fourCharCode("tkhd"), 76, 8, &m4a.tkhd.width},
    {fourCharCode("mdhd"), 0, 26, &m4a.mdhd.versionFlags},
    {fourCharCode("hdlr"), 0, 28, &m4a.hdlr.words},
    {fourCharCode("dref"), 0, 24, &m4a.dref.words},
    {fourCharCode("stsd"), 0, 16, &m4a.stsd.versionFlags},
    {fourCharCode("stsd"), 22, 2, &m4a.stsd.dataReferenceIndex},
    {fourCharCode("stsd"), 24, 20, &m4a.stsd.soundEntry},
    {fourCharCode("stts"), 0, 8, &m4a.stts.versionFlags},
    {fourCharCode("stsc"), 0, 8, &m4a.stsc.versionFlags},
    {fourCharCode("stco"), 0, 8, &m4a.stco.versionFlags},
    {fourCharCode("stsz"), 0, 12, &m4a.stsz.versionFlags},
};

using Body = std::span<const std::uint8_t>;  // all that may be read from the body's start on

void copy(Body body, std::size_t from, std::size_t bytes, void* field) {
    copyToRecord(body.subspan(std::min(from, body.size())), bytes, field);
}

void copyConfiguration(Body body) {
    if (dGet4bytes(&m4a.stsd.entryFormat) != kAudioFormatAppleLossless) return;
    ++m4a.alac.count;
    copy(body, 44, 36, &m4a.alac.configurationSize);
    const std::uint32_t size = dGet4bytes(&m4a.alac.configurationSize);
    copy(body, 44, std::min(size, kConfigurationBytes), m4a.alac.configuration);
}

// The first entries of a table whose count is signed: a negative one is none.
void copyTimeEntries(Body body, const std::uint32_t& entryCount, std::uint32_t entryBytes,
                     void* entries) {
    const std::uint32_t count = dGet4bytes(&entryCount);
    if (count <= 0x7FFFFFFF)
        copy(body, 8, std::size_t{std::min(count, kTimeEntries)} * entryBytes, entries);
}

void copyTag(Body body, std::uint32_t length) {
    for (const Tag& tag : kTags) {
        if (tag.type != m4a.currentType) continue;
        copy(body, 0, length, tag.data);
        for (unsigned i = 0; i < 4; ++i)
            reinterpret_cast<std::uint8_t*>(tag.length)[i] =
                static_cast<std::uint8_t>(length >> (24 - 8 * i));
    }
}

}  // namespace

void vAnalizeAtomType(std::uint32_t type) {
    if (type == fourCharCode("data") || type == fourCharCode("mean") ||
        type == fourCharCode("name"))
        return;
    for (const Counter& counter : kCounters)
        if (counter.type == type) ++*counter.count;
    for (const Tag& tag : kTags)
        if (tag.type == type) ++*tag.count;
    m4a.currentType = type;
}

// A file with one size for all samples has no table of sizes: what follows is taken for one.
void vAnalizeAtomBody(std::uint32_t length, std::uint32_t type, const std::uint8_t* body) {
    const Body bytes(body, treeEnd ? static_cast<std::size_t>(treeEnd - body) : length);
    for (const Fields& fields : kFields)
        if (fields.type == type) copy(bytes, fields.from, fields.bytes, fields.field);
    switch (type) {
        case fourCharCode("stsd"):
            return copyConfiguration(bytes);
        case fourCharCode("stts"):
            return copyTimeEntries(bytes, m4a.stts.entryCount, 8, m4a.stts.entries);
        case fourCharCode("stsc"):
            return copyTimeEntries(bytes, m4a.stsc.entryCount, 12, m4a.stsc.entries);
        case fourCharCode("stco"):
            return copy(bytes, 8,
                        std::size_t{4} * std::min(dGet4bytes(&m4a.stco.entryCount), kChunkOffsets),
                        m4a.stco.offsets);
        case fourCharCode("stsz"):
            return copy(bytes, 12,
                        std::size_t{4} * std::min(dGet4bytes(&m4a.stsz.sampleCount), kSampleSizes),
                        m4a.stsz.sizes);
        case fourCharCode("data"):
            return copyTag(bytes, length);
        default:
            return;
    }
}

long lBitStreamPosition(std::uint32_t time, std::uint32_t* sample, std::uint32_t* sampleBytes) {
    *sampleBytes = 0;
    const std::uint32_t delta = dGet4bytes(&m4a.stts.entries[0].sampleDelta);
    if (delta == 0 || time % delta != 0) return -1;
    const std::uint32_t number = time / delta;
    *sample = number;
    const std::uint32_t perChunk = dGet4bytes(&m4a.stsc.entries[0].samplesPerChunk);
    if (perChunk == 0 || number / perChunk >= kChunkOffsets || number >= kSampleSizes) return -1;
    const std::uint32_t chunk = number / perChunk;
    const std::uint32_t first = perChunk * chunk;
    const std::uint32_t before = (number - first) % 65'536;
    std::uint64_t offset = dGet4bytes(&m4a.stco.offsets[chunk]);
    for (std::uint32_t i = first; i < first + before; ++i) offset += dGet4bytes(&m4a.stsz.sizes[i]);
    *sampleBytes = dGet4bytes(&m4a.stsz.sizes[number]);
    return static_cast<long>(offset);
}

}  // namespace atdp

// What the atom reader found in a file: the m4a record.
//
// Counters (`count`) are native and count an atom wherever it stands in the tree. Every other field
// is the file's bytes as they stand, big-endian: read it with dGet4bytes or wGet2bytes. Where an
// atom occurs more than once, its last occurrence is kept.
//
// The layout is fixed. A value that is longer than its field goes on into the fields that follow,
// so each group must lie where it does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace atdp {

inline constexpr std::uint32_t kTimeEntries = 4;          // kept of an stts or stsc table
inline constexpr std::uint32_t kChunkOffsets = 65'536;    // kept of an stco table
inline constexpr std::uint32_t kSampleSizes = 524'288;    // kept of an stsz table
inline constexpr std::uint32_t kConfigurationBytes = 40;  // kept of an alac configuration atom

// A tag: the body of the data atom in the item's atom. Its value follows the two words of the body.
template <std::size_t kDataBytes>
struct M4aTag {
    std::uint32_t count;
    std::uint32_t length;  // of the body, in bytes, the two words among them
    std::uint8_t data[kDataBytes];
};

struct M4aRecord {
    std::uint32_t currentType;  // native; the last atom's that is no data, mean or name atom
    struct {
        std::uint32_t count, majorBrand, minorVersion;
    } ftyp;
    struct {
        std::uint32_t count;
    } moov;
    struct {
        std::uint32_t count;
        std::uint32_t versionFlags, creationTime, modificationTime, timeScale, duration, rate;
        std::uint16_t volume;
        std::uint8_t matrix[36];
        std::uint32_t predefined[6];
        std::uint32_t nextTrackID;
    } mvhd;
    struct {
        std::uint32_t count;
    } trak;
    struct {
        std::uint32_t count;
        std::uint32_t versionFlags, creationTime, modificationTime, trackID;
        std::uint32_t duration;
        std::uint16_t layer, alternateGroup, volume;
        std::uint8_t matrix[36];
        std::uint32_t width, height;
    } tkhd;
    struct {
        std::uint32_t count;
    } mdia;
    struct {
        std::uint32_t count;
        std::uint32_t versionFlags, creationTime, modificationTime, timeScale, duration;
        std::uint32_t languageQuality;
    } mdhd;
    struct {
        std::uint32_t count;
        std::uint32_t words[7];
    } hdlr;
    struct {
        std::uint32_t count;
    } minf, smhd, dinf;
    struct {
        std::uint32_t count;
        std::uint32_t words[6];
    } dref;
    struct {
        std::uint32_t count;
    } stbl;
    struct {
        std::uint32_t count;
        std::uint32_t versionFlags, entryCount;
        std::uint32_t entrySize, entryFormat;  // of the first entry, as all that follows
        std::uint16_t dataReferenceIndex;
        std::uint32_t soundEntry[5];
    } stsd;
    struct {
        std::uint32_t count;  // of stsd atoms whose first entry is Apple Lossless
        std::uint32_t configurationSize, configurationType, versionFlags, frameLength;
        std::uint8_t compatibleVersion, bitDepth, pb, mb, kb, channels;
        std::uint16_t maxRun;
        std::uint32_t maxFrameBytes, averageBitRate, sampleRate;
        std::uint8_t configuration[kConfigurationBytes];  // the whole atom
    } alac;
    struct {
        std::uint32_t count, versionFlags, entryCount;
        struct {
            std::uint32_t sampleCount, sampleDelta;
        } entries[kTimeEntries];
    } stts;
    struct {
        std::uint32_t count, versionFlags, entryCount;
        struct {
            std::uint32_t firstChunk, samplesPerChunk, descriptionIndex;
        } entries[kTimeEntries];
    } stsc;
    struct {
        std::uint32_t count;
    } udta, meta, ilst;
    M4aTag<256> nam, ART, wrt, alb, day, too;
    M4aTag<128> gnre, trkn, disk, cpil, pgap;
    struct {
        std::uint32_t count;  // always 0
        std::uint32_t versionFlags, entryCount;
        std::uint32_t offsets[kChunkOffsets];
    } stco;
    struct {
        std::uint32_t count;
        std::uint32_t versionFlags, sampleSize, sampleCount;
        std::uint32_t sizes[kSampleSizes];
    } stsz;
};

// The record of the last file read; see atom_reader.h for who may touch it when.
extern M4aRecord m4a;

// Zeros the whole record.
void clearRecord();

// Copies bytes to a field of m4a and, where they are more than it holds, to the fields behind it.
// Bytes that the source lacks are zeros; those that would go beyond the record's end are left out.
// After 64 MB for one file nothing more is copied.
void copyToRecord(std::span<const std::uint8_t> source, std::size_t bytes, void* field);

// The record's bytes from a field of m4a to the record's end.
std::span<std::uint8_t> recordFrom(void* field);

static_assert(sizeof(M4aRecord) == 2'362'132);
static_assert(offsetof(M4aRecord, ftyp) == 4);
static_assert(offsetof(M4aRecord, moov) == 16);
static_assert(offsetof(M4aRecord, mvhd) == 20);
static_assert(offsetof(M4aRecord, trak) == 116);
static_assert(offsetof(M4aRecord, tkhd) == 120);
static_assert(offsetof(M4aRecord, mdia) == 196);
static_assert(offsetof(M4aRecord, mdhd) == 200);
static_assert(offsetof(M4aRecord, hdlr) == 228);
static_assert(offsetof(M4aRecord, minf) == 260);
static_assert(offsetof(M4aRecord, smhd) == 264);
static_assert(offsetof(M4aRecord, dinf) == 268);
static_assert(offsetof(M4aRecord, dref) == 272);
static_assert(offsetof(M4aRecord, stbl) == 300);
static_assert(offsetof(M4aRecord, stsd) == 304);
static_assert(offsetof(M4aRecord, alac) == 348);
static_assert(offsetof(M4aRecord, stts) == 428);
static_assert(offsetof(M4aRecord, stsc) == 472);
static_assert(offsetof(M4aRecord, udta) == 532);
static_assert(offsetof(M4aRecord, meta) == 536);
static_assert(offsetof(M4aRecord, ilst) == 540);
static_assert(offsetof(M4aRecord, nam) == 544);
static_assert(offsetof(M4aRecord, ART) == 808);
static_assert(offsetof(M4aRecord, wrt) == 1072);
static_assert(offsetof(M4aRecord, alb) == 1336);
static_assert(offsetof(M4aRecord, day) == 1600);
static_assert(offsetof(M4aRecord, too) == 1864);
static_assert(offsetof(M4aRecord, gnre) == 2128);
static_assert(offsetof(M4aRecord, trkn) == 2264);
static_assert(offsetof(M4aRecord, disk) == 2400);
static_assert(offsetof(M4aRecord, cpil) == 2536);
static_assert(offsetof(M4aRecord, pgap) == 2672);
static_assert(offsetof(M4aRecord, stco) == 2808);
static_assert(offsetof(M4aRecord, stsz) == 264'964);

}  // namespace atdp

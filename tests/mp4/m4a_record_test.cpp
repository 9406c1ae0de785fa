// What the analysis of atoms leaves in the record.
#include <numeric>
#include <tuple>

#include "tests/support/m4a_record_test.h"

namespace atdp {
namespace {

using test::atom;
using test::item;
using test::word;
using test::words;

TEST_F(M4aRecordTest, FieldsComeFromTheirPlaces) {
    std::string body(100, '\0');
    std::iota(body.begin(), body.end(), '\0');
    body.replace(12, 4, "alac");  // where stsd has its format
    const char types[][5] = {"ftyp", "mvhd", "tkhd", "hdlr", "dref", "stsd"};
    for (const auto& type : types) analyze(type, body);
    const struct {
        void* field;
        std::size_t from, bytes;
    } rows[] = {
        {&m4a.ftyp.majorBrand, 0, 8},
        {&m4a.mvhd.versionFlags, 0, 24},
        {&m4a.mvhd.volume, 24, 2},
        {&m4a.mvhd.matrix, 36, 36},
        {&m4a.mvhd.predefined, 72, 24},
        {&m4a.mvhd.nextTrackID, 96, 4},
        {&m4a.tkhd.versionFlags, 0, 16},
        {&m4a.tkhd.duration, 20, 4},
        {&m4a.tkhd.layer, 32, 6},
        {&m4a.tkhd.matrix, 40, 36},
        {&m4a.tkhd.width, 76, 8},
        {&m4a.hdlr.words, 0, 28},
        {&m4a.dref.words, 0, 24},
        {&m4a.stsd.versionFlags, 0, 16},
        {&m4a.stsd.dataReferenceIndex, 22, 2},
        {&m4a.stsd.soundEntry, 24, 20},
        {&m4a.alac.configurationSize, 44, 16},
        {&m4a.alac.compatibleVersion, 60, 6},
        {&m4a.alac.maxRun, 66, 2},
        {&m4a.alac.maxFrameBytes, 68, 12},
        {&m4a.alac.configuration, 44, 40},  // the size, 0x2C2D2E2F, is more
    };
    for (const auto& row : rows)
        EXPECT_EQ(textAt(row.field, row.bytes), body.substr(row.from, row.bytes)) << row.from;
    EXPECT_EQ(m4a.alac.count, 1U);
    EXPECT_EQ(m4a.trak.count, 0U);  // behind mvhd
    EXPECT_EQ(m4a.currentType, fourCharCode("stsd"));
}

TEST_F(M4aRecordTest, OnlyAppleLosslessHasAConfiguration) {
    read(test::sampleDescription("mp4a"));
    EXPECT_EQ(m4a.stsd.count, 1U);
    EXPECT_EQ(textAt(&m4a.stsd.entryFormat, 4), "mp4a");
    EXPECT_EQ(textAt(&m4a.alac, sizeof(m4a.alac)), std::string(sizeof(m4a.alac), '\0'));
}

// The two bytes that follow a whole mdhd atom are the first of the next atom's size.
TEST_F(M4aRecordTest, MediaHeaderRunsOverTheCounterBehindIt) {
    read(atom("hdlr") + atom("mdhd", words(1, 6)) + atom("free", std::string(0x10203, '\0')));
    EXPECT_EQ(dGet4bytes(&m4a.mdhd.languageQuality), 6U);
    EXPECT_EQ(textAt(&m4a.hdlr.count, 2), std::string("\0\1", 2));
}

TEST_F(M4aRecordTest, TagsKeepTheirLastDataAndAllAreCounted) {
    read(atom("ilst", item("\251nam", 1, "A longer one") + item("\251nam", 1, "Song")));
    EXPECT_EQ(m4a.nam.count, 2U);
    EXPECT_EQ(dGet4bytes(&m4a.nam.length), 12U);
    EXPECT_EQ(textAt(m4a.nam.data, 21), word(1) + word(0) + std::string("Songnger one\0", 13));
}

TEST_F(M4aRecordTest, OtherItemsAreIgnored) {
    const std::string data = atom("data", word(1) + word(0) + "text");
    read(atom("ilst",
              atom("----", atom("mean", "a") + atom("name", "b") + data) + atom("covr", data)));
    const auto tags = recordFrom(&m4a.nam).first(offsetof(M4aRecord, stco) - 544);
    EXPECT_EQ(std::accumulate(tags.begin(), tags.end(), 0), 0);
    vAnalizeAtomType(fourCharCode("----"));
    vAnalizeAtomType(fourCharCode("mean"));
    EXPECT_EQ(m4a.currentType, fourCharCode("----"));
}

TEST_F(M4aRecordTest, LongTagRunsOnAndStopsAtTheEnd) {
    const std::string text(300, 't');
    read(atom("ilst", item("\251nam", 1, text)));
    EXPECT_EQ(textAt(m4a.nam.data + 8, 300), text);
    EXPECT_EQ(m4a.ART.count, 0x74747474U);

    vAnalizeAtomType(fourCharCode("pgap"));
    analyze("data", std::string(3'000'000, 'e'));
    EXPECT_EQ(dGet4bytes(&m4a.pgap.length), 3'000'000U);
    EXPECT_EQ(m4a.stsz.sizes[kSampleSizes - 1], 0x65656565U);
}

TEST_F(M4aRecordTest, TablesKeepTheirFirstEntries) {
    analyze("stts", word(0) + word(7) + words(1, 14));
    EXPECT_EQ(textAt(m4a.stts.entries, 36), words(1, 8) + word(0));
    analyze("stsc", word(0) + word(7) + words(1, 21));
    EXPECT_EQ(textAt(m4a.stsc.entries, 52), words(1, 12) + word(0));
    for (const std::uint32_t none : {0U, 0x80000000U, 0xFFFFFFFFU}) {
        analyze("stts", word(0) + word(none) + words(9, 14));
        EXPECT_EQ(dGet4bytes(&m4a.stts.entries[0].sampleCount), 1U);
    }
    analyze("stco", word(0) + word(70'000) + words(1, 70'000));
    EXPECT_EQ(dGet4bytes(&m4a.stco.offsets[kChunkOffsets - 1]), 65'536U);
    EXPECT_EQ(m4a.stco.count, 0U);
    EXPECT_EQ(m4a.stsz.count, 0U);
    analyze("stsz", word(0) + word(0) + word(600'000) + words(1, 600'000));
    EXPECT_EQ(dGet4bytes(&m4a.stsz.sizes[kSampleSizes - 1]), 524'288U);
}

// What a table has less than its count comes from behind it, and from the end of moov on is zeros.
TEST_F(M4aRecordTest, ShortTableGoesOnBehindItsAtom) {
    read(atom("stsz", word(0) + word(0) + word(600'000) + words(1, 1000)));
    EXPECT_EQ(textAt(m4a.stsz.sizes, 4004), words(1, 1000) + word(0));
    read(atom("stsz", word(0) + word(0) + word(5) + word(11)) + atom("free"));
    EXPECT_EQ(textAt(m4a.stsz.sizes, 20), word(11) + atom("free") + word(0) + word(0));
    analyze("stsz", word(0) + word(0) + word(4) + word(12));
    EXPECT_EQ(textAt(m4a.stsz.sizes, 20), word(12) + std::string(16, '\0'));
}

TEST_F(M4aRecordTest, PositionOfASample) {
    analyze("stts", word(0) + word(1) + word(2'000'000) + word(4096));
    analyze("stsc", word(0) + word(1) + word(1) + word(5) + word(1));
    analyze("stco", word(0) + word(3) + word(1000) + word(5000) + word(9000));
    analyze("stsz", word(0) + word(0) + word(15) + words(100, 15));
    const struct {
        std::uint32_t time;
        std::tuple<long, std::uint32_t, std::uint32_t> found;  // position, sample, bytes
    } rows[] = {
        {0, {1000, 0, 100}},
        {3 * 4096, {1000 + 100 + 101 + 102, 3, 103}},
        {7 * 4096, {5000 + 105 + 106, 7, 107}},
        {7 * 4096 + 1, {-1, 99, 0}},
        {327'680U * 4096, {-1, 327'680, 0}},  // the chunk behind the table
    };
    for (const auto& row : rows) {
        std::uint32_t sample = 99, bytes = 99;
        const long position = lBitStreamPosition(row.time, &sample, &bytes);
        EXPECT_EQ(std::tuple(position, sample, bytes), row.found) << row.time;
    }
    std::uint32_t out = 0;
    analyze("stsc", word(0) + word(1) + word(1) + word(0xFFFFFFFF) + word(1));
    EXPECT_EQ(lBitStreamPosition(524'288U * 4096, &out, &out), -1);  // the size behind the table
    analyze("stsc", word(0) + word(1) + word(1) + word(0) + word(1));
    EXPECT_EQ(lBitStreamPosition(0, &out, &out), -1);
    analyze("stts", word(0) + word(1) + word(1) + word(0));
    EXPECT_EQ(lBitStreamPosition(0, &out, &out), -1);
}

}  // namespace
}  // namespace atdp

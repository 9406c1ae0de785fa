// MPEG-4 and QuickTime files in every layout that writers have, and in those that none has.
#include <gtest/gtest.h>

#include "tests/support/lossless_track.h"
#include "tests/support/mpeg4_layouts.h"
#include "tests/support/mpeg_builder.h"

namespace atdp::test {
namespace {

using services::Failure;

constexpr const char* kUsual = "a100 b50 c30 : 0, 9192";

TEST(Mpeg4Container, DescribesLosslessSoundByItsConfiguration) {
    for (const auto& [bits, flags] : {std::pair{16, "1"}, {20, "2"}, {24, "3"}, {32, "4"}}) {
        const std::string entry = losslessEntry(losslessConfig(bits, 6, 192000, 1024));
        EXPECT_EQ(descriptionOf(replaced(&Mpeg4Builder::description, sampleDescription(entry))),
                  std::string("m4af alac ") + flags + " 0 0 1024 6 192000 0");
    }
}

TEST(Mpeg4Container, FindsThePacketsInEveryLayout) {
    for (const std::string& file : filesOfEveryLayout()) EXPECT_EQ(summary(file), kUsual);
    for (const std::string& description : sampleDescriptionsOfEveryVersion())
        EXPECT_EQ(summary(replaced(&Mpeg4Builder::description, description)), kUsual);
    Mpeg4Builder oneSize;
    oneSize.sizes = fullAtom("stsz", big32(60) + big32(3));
    oneSize.chunkRuns = table("stsc", {{1, 3, 1}});
    EXPECT_EQ(summary(oneSize.bytes()), "a60 a60 b60 : 0, 9192");
}

TEST(Mpeg4Container, CountsTheFramesByTablesHeadersAndEdits) {
    const std::string whole = table("stts", {{3, 4096}});
    const struct {
        std::string edits, mediaHeader, movieHeader, durations;
        const char* frames;
    } cases[] = {
        {"", "", "", "", "0, 9192"},
        {"", "", "", whole, "0, 9192"},  // the media header knows better
        {"", header("mdhd", 44100, 0), "", whole, "0, 12288"},
        {"", header("mdhd", 44100, 9000, 1), "", "", "0, 9000"},
        {"", header("mdhd", 44100, 999999), "", table("stts", {{1, 0xFFFFFFFF}}), "0, 12288"},
        {"", header("mdhd", 22050, 0), "", table("stts", {{2, 2048}, {1, 500}}), "0, 9192"},
        {"", header("mdhd", 0, 5), "", "", "0, 12288"},
        {"", " ", "", "", "0, 12288"},
        {editList(0, {{8000, 1000}}), "", "", "", "1000, 8000"},
        {editList(1, {{8000, 1000}}), "", header("mvhd", 44100, 0, 1), "", "1000, 8000"},
        {editList(0, {{300, -1}, {8000, 1000}}), "", "", "", "1000, 8000"},
        {editList(0, {{4000, 1000}, {4000, 5000}}), "", "", "", "1000, 8000"},
        {editList(0, {{0, 192}}), "", "", "", "192, 9000"},
        {editList(0, {{208, 0}}), "", header("mvhd", 1000, 0), "", "0, 9192"},
        {editList(0, {{209, 0}}), "", header("mvhd", 1000, 0), "", "0, 9192"},
        {editList(0, {{200, 0}}), "", header("mvhd", 1000, 0), "", "0, 8820"},
        {editList(1, {{~0ULL, 92}, {~0ULL, 92}}), "", "", "", "92, 9100"},
        {editList(0, {{8000, 9192}}), "", "", "", "0, 9192"},
        {editList(1, {{8000, 1LL << 62}}), "", "", "", "0, 9192"},
        {editList(0, {{8000, 1000}}), "", " ", "", "1000, 8192"},
        {editList(0, {}), "", "", "", "0, 9192"},
    };
    for (const auto& expected : cases) {
        Mpeg4Builder file{.edits = expected.edits};
        file.replace(&Mpeg4Builder::mediaHeader, expected.mediaHeader);
        file.replace(&Mpeg4Builder::movieHeader, expected.movieHeader);
        file.replace(&Mpeg4Builder::durations, expected.durations);
        EXPECT_EQ(summary(file.bytes()), std::string("a100 b50 c30 : ") + expected.frames)
            << &expected - cases;
    }
}

TEST(Mpeg4Container, NamesEveryEncodingAndDecodesMpegAudioOnly) {
    const auto noPackets = fullAtom("stsz", big32(0) + big32(0));
    const std::string sound = silentLayer3Packet();
    const auto mp4a = [](unsigned type) { return sampleEntry("mp4a", elementaryStream(type)); };
    const struct {
        std::string entry, packets;
        const char* format;
        std::uint32_t framesPerPacket;
    } cases[] = {
        {mp4a(0x40), "", "aac ", 0},
        {mp4a(0x67), "", "aac ", 0},
        {sampleEntry("mp4a", atom("wave", elementaryStream(0x40)), 1, zeros(16)), "", "aac ", 0},
        {mp4a(0xA5), "", "mp4a", 0},
        {sampleEntry("mp4a", ""), "", "mp4a", 0},
        {sampleEntry("fLaC", ""), "", "fLaC", 0},
        {mp4a(0x6B), sound, ".mp3", 1152},
        {mp4a(0x69), sound, ".mp3", 1152},
        {mp4a(0x6B), std::string("\xFF\xFD\x90\x00", 4), ".mp2", 1152},
        {mp4a(0x6B), std::string("\xFF\xFF\x90\x00", 4), ".mp1", 384},
        {mp4a(0x6B), "no packet", "mp4a", 0},
        {sampleEntry(".mp3", "", 1, zeros(16)), sound, ".mp3", 1152},
        {sampleEntry(std::string_view("ms\0U", 4), "", 1, zeros(16)), sound, ".mp3", 1152},
    };
    for (const auto& expected : cases) {
        Mpeg4Builder file;
        file.description = sampleDescription(expected.entry);
        file.packets = expected.packets;
        EXPECT_EQ(descriptionOf(file.bytes()).substr(5, 4), expected.format);
        EXPECT_EQ(describe(file.bytes())->format.mFramesPerPacket, expected.framesPerPacket);
    }
}

TEST(Mpeg4Container, FindsThePacketsOfMpegAudio) {
    Mpeg4Builder file;
    file.description = sampleDescription(sampleEntry("mp4a", elementaryStream(0x6B)));
    const std::string sound = silentLayer3Packet();
    file.packets = sound + sound + std::string(417, 'x') + sound;
    file.sizes = fullAtom("stsz", big32(417) + big32(4));
    file.chunkRuns = table("stsc", {{1, 4, 1}});
    const auto source = std::make_shared<MemorySource>(file.bytes());
    const auto packets = services::readMpegTrack(source);
    ASSERT_TRUE(packets);
    ASSERT_EQ(packets->packets.size(), 3U);
    EXPECT_EQ(packets->packets[2].offset(), file.offset() + 3 * 417);
    EXPECT_FALSE(packets->hasGaplessCounts);
}

TEST(Mpeg4Container, TellsTheKindByItsBrands) {
    const auto kind = [](const std::string& brands) {
        const auto sound = describe(replaced(&Mpeg4Builder::start, atom("ftyp", brands)));
        return sound ? sound->fileType : 0;
    };
    constexpr std::uint32_t kM4a = fourCharCode("m4af"), kMp4 = fourCharCode("mp4f");
    EXPECT_EQ(kind("M4A " + zeros(4)), kM4a);
    EXPECT_EQ(kind("M4B " + zeros(4) + "isom"), kM4a);
    EXPECT_EQ(kind("mp42" + zeros(4) + "isomM4A "), kM4a);
    EXPECT_EQ(kind("mp42M4A isom"), kMp4);  // a version, not a brand
    EXPECT_EQ(kind("qt  " + zeros(4)), kMp4);
    EXPECT_EQ(describe(replaced(&Mpeg4Builder::start, ""))->fileType, kMp4);
}

TEST(Mpeg4Container, RefusesWhatItCannotUse) {
    const Mpeg4Builder usual;
    const auto entry = [&](const std::string& config) {
        return replaced(&Mpeg4Builder::description, sampleDescription(losslessEntry(config)));
    };
    EXPECT_EQ(refusal(usual.start + atom("mdat", usual.packets)), Failure::kDamaged);
    EXPECT_EQ(refusal(atom("mdat", usual.packets)), Failure::kUnknownFileType);
    EXPECT_EQ(refusal(std::string("\0\0\0\x01", 4) + "ftyp" + zeros(90)),
              Failure::kUnknownFileType);
    EXPECT_EQ(refusal(replaced(&Mpeg4Builder::handler, "")), Failure::kDamaged);
    EXPECT_EQ(refusal(replaced(&Mpeg4Builder::description, "")), Failure::kDamaged);
    EXPECT_EQ(refusal(entry("")), Failure::kDamaged);
    EXPECT_EQ(refusal(entry(losslessConfig(17))), Failure::kDamaged);
    EXPECT_EQ(refusal(entry(losslessConfig(16, 0))), Failure::kDamaged);
    EXPECT_EQ(refusal(entry(losslessConfig(16, 9))), Failure::kDamaged);
    EXPECT_EQ(refusal(entry(losslessConfig(16, 2, 0))), Failure::kDamaged);
    EXPECT_EQ(refusal(entry(losslessConfig(16, 2, 44100, 0))), Failure::kDamaged);
    EXPECT_EQ(refusal(entry(losslessConfig(16, 2, 44100, 1 << 30))), Failure::kDamaged);
}

// Packets that lie outside of the file are not counted at its end, and are silent within it.
TEST(Mpeg4Container, BelievesNoCountThatTheFileDoesNotBearOut) {
    constexpr std::uint64_t kMany = 0xFFFF'FFFF;
    const Mpeg4Builder usual;
    const auto with = [](std::string Mpeg4Builder::*part, const std::string& value) {
        return summary(replaced(part, value));
    };
    const auto sizes = [&](const std::string& body) {
        return with(&Mpeg4Builder::sizes, fullAtom("stsz", body));
    };
    EXPECT_EQ(sizes(big32(0) + big32(kMany) + big32(100) + big32(50)), "a100 b50 : 0, 8192");
    EXPECT_EQ(sizes(big32(0) + big32(3) + big32(kMany) + big32(kMany) + big32(30)),
              "0 0 c30 : 0, 9192");
    EXPECT_EQ(sizes(big32(0) + big32(0)), ": 0, 0");
    EXPECT_EQ(sizes(big32(1) + big32(kMany)), ": 0, 0");
    EXPECT_EQ(with(&Mpeg4Builder::chunkRuns, table("stsc", {})), ": 0, 0");
    EXPECT_EQ(with(&Mpeg4Builder::chunkRuns, table("stsc", {{9, kMany, 1}})), kUsual);
    EXPECT_EQ(with(&Mpeg4Builder::chunkRuns, table("stsc", {{kMany, 1, 1}, {0, 0, 0}, {1, 2, 1}})),
              "a100 b50 c30 : 0, 9192");
    EXPECT_EQ(summary(usual.bytes(
                  fullAtom("co64", big32(kMany) + big64(~0ULL) + big64(usual.offset() + 150)))),
              "0 0 c30 : 0, 9192");
    EXPECT_EQ(summary(usual.bytes("")), ": 0, 0");
    // As many packets as a common size allows in a file of a megabyte, and no more.
    Mpeg4Builder large;
    large.packets = std::string(1 << 20, 'p');
    large.sizes = fullAtom("stsz", big32(8) + big32(kMany));
    large.chunkRuns = table("stsc", {{1, kMany, 1}});
    EXPECT_LE(lossless(large.bytes())->packets.size(), (1U << 17) + 1000);
}

TEST(Mpeg4Container, IsPlayedUpToItsLastWholePacketWhereItWasCut) {
    const Mpeg4Builder usual;
    const std::uint64_t first = usual.movie(usual.chunkOffsets()).size() + usual.offset();
    const std::string movieFirst = usual.start +
                                   usual.movie(table("stco", {{first}, {first + 150}})) +
                                   atom("mdat", usual.packets);
    for (std::size_t missing = 1; missing <= 80; ++missing)
        EXPECT_EQ(summary(movieFirst.substr(0, movieFirst.size() - missing)),
                  missing <= 30 ? "a100 b50 : 0, 8192" : "a100 : 0, 4096");
}

TEST(Mpeg4Container, SurvivesDeepNestingAndManyAtoms) {
    summary(Mpeg4Builder{}.start + repeated(big32(0) + "moov", 20'000));
    summary(repeated(big32(0) + "moov", 20'000));
    summary(atom("moov", repeated(atom("trak", ""), 100'000)));
    for (const std::uint64_t size : {0ULL, 15ULL, 16ULL, 1ULL << 63, ~0ULL})
        summary(big32(1) + "moov" + big64(size) + Mpeg4Builder{}.bytes());
}

}  // namespace
}  // namespace atdp::test

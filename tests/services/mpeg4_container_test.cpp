// MPEG-4 and QuickTime files in every layout that writers have, and in those that none has.
#include <gtest/gtest.h>

#include <cstdlib>

#include "services/containers/mpeg4_packets.h"
#include "tests/support/described_sound.h"
#include "tests/support/mpeg4_builder.h"
#include "tests/support/mpeg_builder.h"

namespace atdp::test {
namespace {

using services::Failure;
using services::LosslessTrack;

services::Result<LosslessTrack> lossless(const std::string& file) {
    MemorySource source(file);
    return services::readLosslessTrack(source);
}

// "bytes of packets: priming, valid", so that a whole track is compared at once.
std::string summary(const std::string& file) {
    const auto described = describe(file);
    if (!described) return "not described";
    const auto track = lossless(file);
    if (!track) return "not read";
    std::string text;
    for (const auto& packet : track->packets)
        text += file.substr(packet.offset(), packet.bytes() ? 1 : 0) +
                std::to_string(packet.bytes()) + " ";
    return text + ": " + std::to_string(track->primingFrames) + ", " +
           std::to_string(track->validFrames);
}

constexpr const char* kUsual = "a100 b50 c30 : 0, 9192";

TEST(Mpeg4Container, DescribesLosslessSoundByItsConfiguration) {
    for (const int bits : {16, 20, 24, 32}) {
        const auto sound = describe(
            replaced(&Mpeg4Builder::description,
                     sampleDescription(losslessEntry(losslessConfig(bits, 6, 192000, 1024)))));
        ASSERT_TRUE(sound);
        EXPECT_EQ(sound->fileType, fourCharCode("m4af"));
        EXPECT_EQ(sound->format.mFormatID, fourCharCode("alac"));
        EXPECT_EQ(sound->format.mFormatFlags,
                  bits == 32 ? 4U : static_cast<unsigned>(bits) / 4 - 3);
        EXPECT_EQ(sound->format.mSampleRate, 192000);
        EXPECT_EQ(sound->format.mFramesPerPacket, 1024U);
        EXPECT_EQ(sound->format.mChannelsPerFrame, 6U);
        EXPECT_EQ(sound->format.mBitsPerChannel, 0U);
        EXPECT_EQ(sound->format.mBytesPerPacket, 0U);
        EXPECT_EQ(sound->format.mBytesPerFrame, 0U);
    }
}

TEST(Mpeg4Container, FindsThePacketsInEveryLayout) {
    const Mpeg4Builder usual;
    Mpeg4Builder movieFirst;
    movieFirst.start += usual.movie(table("stco", {{0}, {0}}));
    const std::string offsets = movieFirst.chunkOffsets();
    const std::string movie = usual.movie(offsets);
    const std::string packets = atom("mdat", usual.packets);
    const std::string largePackets = largeAtom("mdat", usual.packets);
    const auto at = [](std::uint64_t offset) { return table("stco", {{offset}, {offset + 150}}); };
    const auto sizes = [](const std::string& body) {
        return replaced(&Mpeg4Builder::sizes, fullAtom("stz2", body));
    };
    Mpeg4Builder wide = usual;
    const std::string wideOffsets =
        fullAtom("co64", big32(2) + big64(usual.offset()) + big64(usual.offset() + 150));
    Mpeg4Builder video = usual;
    video.otherTracks = atom("trak", atom("mdia", fullAtom("hdlr", zeros(4) + "vide")));
    Mpeg4Builder oneSize = usual;
    oneSize.sizes = fullAtom("stsz", big32(60) + big32(3));
    oneSize.chunkRuns = table("stsc", {{1, 3, 1}});
    const std::string cases[] = {
        usual.bytes(),
        usual.start + movie + packets,
        usual.start + largePackets + usual.movie(at(usual.start.size() + 16)),
        packets + usual.movie(at(8)),
        atom("wide", "") + packets + usual.movie(at(16)),
        atom("free", zeros(50)) + packets + usual.movie(at(66)),
        atom("skip", "") + atom("uuid", zeros(16)) + packets + usual.movie(at(40)),
        usual.movie(at(movie.size() + 8)) + big32(0) + "mdat" + usual.packets,  // to the end
        wide.bytes(wideOffsets),
        video.bytes(),
        sizes(big32(16) + big32(3) + big16(100) + big16(50) + big16(30)),
        sizes(big32(8) + big32(3) + "\x64\x32\x1E"),
    };
    for (const std::string& file : cases) EXPECT_EQ(summary(file), kUsual) << &file - cases;
    EXPECT_EQ(summary(oneSize.bytes()), "a60 a60 b60 : 0, 9192");
}

TEST(Mpeg4Container, ReadsEveryVersionOfTheSampleDescription) {
    const std::string config = losslessConfig();
    const std::string wrapped = atom("frma", "alac") + fullAtom("alac", config);
    const std::string inWave = atom("wave", wrapped + zeros(8));
    const std::string version2 = big32(72) + big64(0x40E5'8880'0000'0000) + big32(2) + zeros(20);
    const std::string cases[] = {
        sampleDescription(losslessEntry()),
        sampleDescription(losslessEntry(), 1),
        sampleDescription(sampleEntry("alac", fullAtom("alac", config), 1), 1),
        sampleDescription(sampleEntry("alac", fullAtom("alac", config), 1, zeros(16))),
        sampleDescription(sampleEntry("alac", inWave, 1, zeros(16))),
        sampleDescription(sampleEntry("alac", inWave, 2, version2)),
        sampleDescription(sampleEntry("alac", atom("chan", zeros(12)) + inWave)),
        sampleDescription(sampleEntry("alac", atom("alac", config))),
        sampleDescription(sampleEntry("alac", fullAtom("alac", wrapped))),
        sampleDescription(sampleEntry("alac", atom("alac", wrapped))),
        sampleDescription(losslessEntry(config + zeros(24))),
    };
    for (const std::string& description : cases)
        EXPECT_EQ(summary(replaced(&Mpeg4Builder::description, description)), kUsual)
            << &description - cases;
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
        Mpeg4Builder file;
        file.edits = expected.edits;
        const auto replace = [](std::string& part, const std::string& other) {
            if (!other.empty()) part = other == " " ? "" : other;
        };
        replace(file.mediaHeader, expected.mediaHeader);
        replace(file.movieHeader, expected.movieHeader);
        replace(file.durations, expected.durations);
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
        std::uint32_t format, framesPerPacket;
    } cases[] = {
        {mp4a(0x40), "", fourCharCode("aac "), 0},
        {mp4a(0x67), "", fourCharCode("aac "), 0},
        {sampleEntry("mp4a", atom("wave", elementaryStream(0x40)), 1, zeros(16)), "",
         fourCharCode("aac "), 0},
        {mp4a(0xA5), "", fourCharCode("mp4a"), 0},
        {sampleEntry("mp4a", ""), "", fourCharCode("mp4a"), 0},
        {sampleEntry("fLaC", ""), "", fourCharCode("fLaC"), 0},
        {mp4a(0x6B), sound, fourCharCode(".mp3"), 1152},
        {mp4a(0x69), sound, fourCharCode(".mp3"), 1152},
        {mp4a(0x6B), std::string("\xFF\xFD\x90\x00", 4), fourCharCode(".mp2"), 1152},
        {mp4a(0x6B), std::string("\xFF\xFF\x90\x00", 4), fourCharCode(".mp1"), 384},
        {mp4a(0x6B), "no packet", fourCharCode("mp4a"), 0},
        {sampleEntry(".mp3", "", 1, zeros(16)), sound, fourCharCode(".mp3"), 1152},
        {sampleEntry(std::string_view("ms\0U", 4), "", 1, zeros(16)), sound, fourCharCode(".mp3"),
         1152},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(&expected - cases);
        Mpeg4Builder file;
        file.description = sampleDescription(expected.entry);
        file.packets = expected.packets;
        const auto described = describe(file.bytes());
        ASSERT_TRUE(described);
        EXPECT_EQ(described->format.mFormatID, expected.format);
        EXPECT_EQ(described->format.mFramesPerPacket, expected.framesPerPacket);
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

// A file that was cut plays up to its last whole packet; nothing is read outside of it.
TEST(Mpeg4Container, SurvivesACutAtEveryByte) {
    const Mpeg4Builder usual;
    const std::string offsets =
        table("stco", {{usual.movie(usual.chunkOffsets()).size() + usual.offset()},
                       {usual.movie(usual.chunkOffsets()).size() + usual.offset() + 150}});
    const std::string movieFirst = usual.start + usual.movie(offsets) + atom("mdat", usual.packets);
    for (std::size_t bytes = 0; bytes < movieFirst.size(); ++bytes) {
        const std::string cut = movieFirst.substr(0, bytes);
        const std::size_t missing = movieFirst.size() - bytes;
        const std::string found = summary(cut);
        if (missing <= 80) {
            EXPECT_EQ(found, missing <= 30 ? "a100 b50 : 0, 8192" : "a100 : 0, 4096");
        }
        summary(usual.bytes().substr(0, bytes));
    }
}

TEST(Mpeg4Container, SurvivesEverySizeAndCount) {
    const std::string whole = Mpeg4Builder{.edits = editList(0, {{8000, 1000}})}.bytes();
    for (std::size_t offset = 0; offset + 4 <= whole.size(); ++offset)
        for (const std::uint64_t value : {0ULL, 1ULL, 7ULL, 8ULL, 0x7FFFFFFFULL, 0xFFFFFFFFULL}) {
            std::string file = whole;
            file.replace(offset, 4, big32(value));
            summary(file);
        }
    std::string nested;
    for (int depth = 0; depth < 20'000; ++depth) nested += big32(0) + "moov";
    summary(nested);
    summary(Mpeg4Builder{}.start + nested);
    std::string empty;
    for (int count = 0; count < 100'000; ++count) empty += atom("trak", "");
    summary(atom("moov", empty));
    for (const std::uint64_t size : {0ULL, 15ULL, 16ULL, 1ULL << 63, ~0ULL})
        summary(big32(1) + "moov" + big64(size) + Mpeg4Builder{}.bytes());
}

}  // namespace
}  // namespace atdp::test

// One lossless track in every layout that writers have.
#pragma once

#include <string>
#include <vector>

#include "tests/support/mpeg4_builder.h"

namespace atdp::test {

inline std::vector<std::string> filesOfEveryLayout() {
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
    return {
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
}

inline std::vector<std::string> sampleDescriptionsOfEveryVersion() {
    const std::string config = losslessConfig();
    const std::string wrapped = atom("frma", "alac") + fullAtom("alac", config);
    const std::string inWave = atom("wave", wrapped + zeros(8));
    const std::string version2 = big32(72) + big64(0x40E5'8880'0000'0000) + big32(2) + zeros(20);
    return {
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
}

}  // namespace atdp::test

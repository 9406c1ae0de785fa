// MPEG-4 and QuickTime files, as nested calls: atom("moov", atom("trak", ...)).
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/byte_builder.h"

namespace atdp::test {

inline std::string big16(std::uint32_t value) {
    return bigEndian(static_cast<std::uint16_t>(value));
}
inline std::string big32(std::uint64_t value) {
    return bigEndian(static_cast<std::uint32_t>(value));
}
inline std::string big64(std::uint64_t value) {
    return bigEndian(value);
}
inline std::string zeros(std::size_t count) {
    return std::string(count, '\0');
}

inline std::string atom(std::string_view type, const std::string& body) {
    return big32(8 + body.size()) + std::string(type) + body;
}
inline std::string largeAtom(std::string_view type, const std::string& body) {
    return big32(1) + std::string(type) + big64(16 + body.size()) + body;
}
// With version and flags.
inline std::string fullAtom(std::string_view type, const std::string& body, unsigned version = 0) {
    return atom(type, big32(version << 24) + body);
}

// A table: a count and so many entries, each of numbers of 32 bits.
inline std::string table(std::string_view type,
                         const std::vector<std::vector<std::uint64_t>>& entries) {
    std::string body = big32(entries.size());
    for (const auto& entry : entries)
        for (const std::uint64_t number : entry) body += big32(number);
    return fullAtom(type, body);
}

inline std::string losslessConfig(int bits = 16, int channels = 2, std::uint32_t rate = 44100,
                                  std::uint32_t framesPerPacket = 4096) {
    return big32(framesPerPacket) + '\0' + static_cast<char>(bits) + "\x28\x0A\x0E" +
           static_cast<char>(channels) + big16(255) + big32(0) + big32(0) + big32(rate);
}

// A sample entry of version 0, or with `more` after its fields that of another version.
inline std::string sampleEntry(std::string_view code, const std::string& extensions,
                               unsigned version = 0, const std::string& more = "",
                               std::uint32_t rate = 44100) {
    return atom(code, zeros(6) + big16(1) + big16(version) + zeros(6) + big16(2) + big16(16) +
                          zeros(4) + big32(std::uint64_t{rate} << 16) + more + extensions);
}
inline std::string sampleDescription(const std::string& entry, unsigned version = 0) {
    return fullAtom("stsd", big32(1) + entry, version);
}
inline std::string losslessEntry(const std::string& config = losslessConfig()) {
    return sampleEntry("alac", fullAtom("alac", config));
}

// What an 'mp4a' entry holds.
inline std::string elementaryStream(unsigned objectType) {
    const std::string decoder = std::string("\x04\x0D") + static_cast<char>(objectType) + zeros(12);
    return fullAtom("esds", "\x03\x80\x80\x12" + big16(1) + '\0' + decoder);
}

inline std::string header(std::string_view type, std::uint64_t scale, std::uint64_t duration,
                          unsigned version = 0) {
    if (version == 1)
        return fullAtom(type, zeros(16) + big32(scale) + big64(duration) + zeros(8), 1);
    return fullAtom(type, zeros(8) + big32(scale) + big32(duration) + zeros(8));
}

// The part of a movie that is played: lengths and starts of the edits.
inline std::string editList(unsigned version,
                            std::initializer_list<std::pair<std::uint64_t, std::int64_t>> edits) {
    std::string body = big32(edits.size());
    for (const auto& [length, start] : edits) {
        const auto time = static_cast<std::uint64_t>(start);
        body += (version == 1 ? big64(length) + big64(time) : big32(length) + big32(time)) +
                big32(0x10000);
    }
    return atom("edts", fullAtom("elst", body, version));
}

// What the items of a tag list hold: a value of a type, or text.
inline std::string data(std::uint32_t type, const std::string& value) {
    return atom("data", big32(type) + zeros(4) + value);
}

inline std::string text(std::string_view item, const std::string& value) {
    return atom(item, data(1, value));
}

// A file whose media data come first: their packets, and the tables about them. Each part can be
// replaced.
struct Mpeg4Builder {
    std::string start = atom("ftyp", "M4A " + big32(0) + "M4A mp42");
    std::string packets = std::string(100, 'a') + std::string(50, 'b') + std::string(30, 'c');
    std::string mediaHeader = header("mdhd", 44100, 2 * 4096 + 1000);
    std::string movieHeader = header("mvhd", 44100, 2 * 4096 + 1000);
    std::string handler = fullAtom("hdlr", zeros(4) + "soun" + zeros(13));
    std::string edits;
    std::string description = sampleDescription(losslessEntry());
    std::string durations = table("stts", {{2, 4096}, {1, 1000}});
    std::string chunkRuns = table("stsc", {{1, 2, 1}, {2, 1, 1}});
    std::string sizes = fullAtom("stsz", big32(0) + big32(3) + big32(100) + big32(50) + big32(30));
    std::string otherTracks;  // before the sound
    std::string userData;

    // Nothing leaves the part as it is; a blank removes it.
    void replace(std::string Mpeg4Builder::*part, const std::string& other) {
        if (!other.empty()) this->*part = other == " " ? "" : other;
    }

    // Where the packets start.
    std::uint64_t offset() const { return start.size() + 8; }

    std::string chunkOffsets() const { return table("stco", {{offset()}, {offset() + 150}}); }

    std::string media(const std::string& offsets) const {
        return atom("mdia", mediaHeader + handler +
                                atom("minf", atom("stbl", description + durations + chunkRuns +
                                                              sizes + offsets)));
    }
    std::string movie(const std::string& offsets) const {
        return atom("moov",
                    movieHeader + otherTracks + atom("trak", edits + media(offsets)) + userData);
    }
    std::string bytes(const std::string& offsets) const {
        return start + atom("mdat", packets) + movie(offsets);
    }
    std::string bytes() const { return bytes(chunkOffsets()); }
};

// A usual file, but for that part.
inline std::string replaced(std::string Mpeg4Builder::*part, const std::string& value) {
    Mpeg4Builder file;
    file.*part = value;
    return file.bytes();
}

}  // namespace atdp::test

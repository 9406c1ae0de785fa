// The atoms of MPEG-4 files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tests/support/byte_builder.h"

namespace atdp::test {

inline std::string word(std::uint32_t value) {
    return bigEndian(value);
}

// As many words, each one more than the last.
inline std::string words(std::uint32_t first, std::uint32_t count) {
    std::string bytes;
    for (std::uint32_t i = 0; i < count; ++i) bytes += word(first + i);
    return bytes;
}

// An atom that says that it has that size, whatever it has.
inline std::string atomOfSize(std::uint32_t size, std::string_view type, const std::string& body) {
    return word(size) + std::string(type) + body;
}

inline std::string atom(std::string_view type, const std::string& body = "") {
    return atomOfSize(static_cast<std::uint32_t>(body.size() + 8), type, body);
}

// An item of a tag list. Its type may start with the copyright sign, '\251'.
inline std::string item(std::string_view type, std::uint32_t indicator, const std::string& value) {
    return atom(type, atom("data", word(indicator) + word(0) + value));
}

inline std::string trackItem(std::uint16_t track, std::uint32_t indicator = 0) {
    return item("trkn", indicator, word(track) + word(0));
}

inline std::string sampleDescription(const std::string& format) {
    return atom("stsd", word(0) + word(1) + atom(format, std::string(28, '\0')));
}

// A moov atom with one track of that format, and tags.
inline std::string movie(const std::string& format, const std::string& items) {
    const std::string table = atom("stbl", sampleDescription(format));
    const std::string track = atom("trak", atom("mdia", atom("minf", table)));
    return atom("moov", track + atom("udta", atom("meta", word(0) + atom("ilst", items))));
}

}  // namespace atdp::test

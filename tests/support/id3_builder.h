// The bytes of ID3v2, ID3v1 and APE tags.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <string>

#include "tests/support/byte_builder.h"

namespace atdp::test {

// For literals with NULs in them.
template <std::size_t kSize>
std::string raw(const char (&literal)[kSize]) {
    return {literal, kSize - 1};
}

inline std::string synchsafe(std::size_t value) {
    std::string bytes;
    for (int shift = 21; shift >= 0; shift -= 7) bytes += static_cast<char>(value >> shift & 0x7F);
    return bytes;
}

inline std::string unsynchronised(const std::string& bytes) {
    std::string result;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        result += bytes[i];
        const bool isMark = bytes[i] == '\xFF';
        const auto next = i + 1 < bytes.size() ? static_cast<unsigned char>(bytes[i + 1]) : 0U;
        if (isMark && (next == 0 || next >= 0xE0)) result += '\0';
    }
    return result;
}

// UTF-16 of text in ASCII, without a mark.
inline std::string utf16Little(const std::string& text) {
    std::string bytes;
    for (const char character : text) bytes += std::string{character, '\0'};
    return bytes;
}

// As zlib packs it.
inline std::string compressed(const std::string& plain) {
    uLongf size = compressBound(plain.size());
    std::string bytes(size, '\0');
    compress(reinterpret_cast<Bytef*>(bytes.data()), &size,
             reinterpret_cast<const Bytef*>(plain.data()), plain.size());
    return bytes.substr(0, size);
}

// A frame of the version; `flags` are the format flags.
inline std::string id3Frame(int version, const std::string& identifier, const std::string& content,
                            int flags = 0) {
    const auto size = static_cast<std::uint32_t>(content.size());
    if (version == 2) return identifier + bigEndian(size).substr(1) + content;
    return identifier + (version == 4 ? synchsafe(size) : bigEndian(size)) + '\0' +
           static_cast<char>(flags) + content;
}

// A comment of version 2.3.
inline std::string comment(const std::string& description, const std::string& text) {
    return id3Frame(3, "COMM", raw("\0eng") + description + '\0' + text);
}

inline std::string id3Tag(int version, const std::string& body, int flags = 0) {
    return "ID3" + std::string{static_cast<char>(version), '\0', static_cast<char>(flags)} +
           synchsafe(body.size()) + body;
}

inline std::string id3v1Tag(std::string title, std::string artist = "", char track = 0) {
    title.resize(30);
    artist.resize(30);
    const std::string comment = std::string(28, '\0') + '\0' + track;
    return "TAG" + title + artist + std::string(30, '\0') + "1987" + comment + '\x11';
}

inline std::string apeItem(const std::string& key, const std::string& value,
                           std::uint32_t flags = 0) {
    return littleEndian(static_cast<std::uint32_t>(value.size())) + littleEndian(flags) + key +
           '\0' + value;
}

inline std::string apeTag(const std::string& items, std::uint32_t count = 1) {
    return items + "APETAGEX" + littleEndian(std::uint32_t{2000}) +
           littleEndian(static_cast<std::uint32_t>(items.size() + 32)) + littleEndian(count) +
           std::string(12, '\0');
}

// All that can stand around MPEG audio, one behind the other.
inline std::string tagsOfEveryKind() {
    std::string tags;
    for (const int version : {2, 3, 4})
        tags += id3Tag(version, id3Frame(version, version == 2 ? "TT2" : "TIT2", "\3Title") +
                                    id3Frame(version, version == 2 ? "COM" : "COMM",
                                             "\1eng" + utf16Little(raw("d\0t"))));
    return tags + apeTag(apeItem("Title", "Ape")) + id3v1Tag("Old");
}

}  // namespace atdp::test

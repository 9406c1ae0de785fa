#include "services/containers/mpeg_tags.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

#include "services/limits.h"

namespace atdp::services {
namespace {

constexpr std::uint64_t kId3v1Bytes = 128;
constexpr std::uint64_t kId3v1ExtensionBytes = 227;
constexpr std::uint64_t kId3v2HeaderBytes = 10;  // and as many for a footer, in 2.4
constexpr std::uint64_t kApeHeaderBytes = 32;    // and as many for a footer
constexpr std::uint64_t kMaxOldLyricsBytes = 5120;

std::string_view textOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// An ID3v2 size: 28 bits, seven a byte (id3.org, ID3v2.4 structure, 6.2); none when it is not one.
std::optional<std::uint32_t> synchsafe(Bytes bytes) {
    std::uint32_t value = 0;
    for (const std::byte byte : bytes.first(4)) {
        if (std::to_integer<unsigned>(byte) >= 0x80) return std::nullopt;
        value = value << 7 | std::to_integer<std::uint32_t>(byte);
    }
    return value;
}

// The size of an ID3v2 tag by its header or footer, without either; none when it is neither.
std::optional<std::uint32_t> id3v2BodyBytes(Bytes head, std::string_view mark) {
    if (head.size() < kId3v2HeaderBytes || !textOf(head).starts_with(mark)) return std::nullopt;
    if (head[3] == std::byte{0xFF} || head[4] == std::byte{0xFF}) return std::nullopt;
    return synchsafe(head.subspan(6));
}

// The end of a file, in memory.
class Tail {
 public:
    Tail(ByteSource& source, std::uint64_t start, std::uint64_t end)
        : source_(source), start_(start), end_(end) {}

    std::uint64_t bytes() const { return end_ - start_; }
    std::uint64_t end() const { return end_; }
    void shorten(std::uint64_t count) { end_ -= std::min(count, bytes()); }

    // The last `count` bytes before the end; none when there are not as many.
    Result<Bytes> last(std::uint64_t count) {
        if (count > bytes() || count > buffer_.size()) return Bytes();
        const auto got = source_.readAt(end_ - count, std::span(buffer_).first(count));
        if (!got) return got.failure();
        return *got == count ? Bytes(buffer_).first(count) : Bytes();
    }

 private:
    ByteSource& source_;
    std::uint64_t start_;
    std::uint64_t end_;
    std::array<std::byte, kMaxOldLyricsBytes> buffer_;
};

// A tag at the end of a file.
struct TailTag {
    std::uint64_t bytes = 0;         // as it claims; 0 when there is no tag
    std::uint64_t visibleBytes = 0;  // the mark by which it was found
};

// Each looks for its kind of tag at the end of `bytes`.
TailTag id3v1(Bytes bytes) {
    if (bytes.size() < kId3v1Bytes || !textOf(bytes.last(kId3v1Bytes)).starts_with("TAG"))
        return {};
    const std::uint64_t extended = kId3v1Bytes + kId3v1ExtensionBytes;
    const bool isExtended =
        bytes.size() >= extended && textOf(bytes.last(extended)).starts_with("TAG+");
    return {isExtended ? extended : kId3v1Bytes, kId3v1Bytes};
}

TailTag ape(Bytes bytes) {
    if (bytes.size() < kApeHeaderBytes) return {};
    const Bytes footer = bytes.last(kApeHeaderBytes);
    if (!textOf(footer).starts_with("APETAGEX")) return {};
    const auto size = loadLittleEndian<std::uint32_t>(footer.data() + 12);  // with the footer
    const auto flags = loadLittleEndian<std::uint32_t>(footer.data() + 20);
    const bool hasHeader = (flags >> 31) != 0;
    return {std::max<std::uint64_t>(size, kApeHeaderBytes) + (hasHeader ? kApeHeaderBytes : 0),
            kApeHeaderBytes};
}

TailTag lyrics(Bytes bytes) {
    constexpr std::size_t kSizeDigits = 6;
    constexpr std::size_t kMarkBytes = 9;
    const std::string_view text = textOf(bytes);
    if (text.ends_with("LYRICS200") && text.size() >= kMarkBytes + kSizeDigits) {
        const std::string_view digits =
            text.substr(text.size() - kMarkBytes - kSizeDigits, kSizeDigits);
        std::uint64_t size = 0;
        std::from_chars(digits.data(), digits.data() + digits.size(), size);
        return {size + kSizeDigits + kMarkBytes, kSizeDigits + kMarkBytes};
    }
    const std::size_t begin = text.rfind("LYRICSBEGIN");
    if (!text.ends_with("LYRICSEND") || begin == std::string_view::npos) return {};
    return {text.size() - begin, kMarkBytes};
}

TailTag appendedId3v2(Bytes bytes) {
    if (bytes.size() < kId3v2HeaderBytes) return {};
    const auto body = id3v2BodyBytes(bytes.last(kId3v2HeaderBytes), "3DI");
    if (!body) return {};
    return {*body + 2 * kId3v2HeaderBytes, kId3v2HeaderBytes};
}

}  // namespace

std::uint64_t bytesOfTagAt(Bytes head) {
    if (const auto body = id3v2BodyBytes(head, "ID3")) {
        const bool hasFooter =
            head[3] == std::byte{4} && (std::to_integer<unsigned>(head[5]) & 0x10) != 0;
        return *body + kId3v2HeaderBytes * (hasFooter ? 2 : 1);
    }
    if (head.size() >= kApeHeaderBytes && textOf(head).starts_with("APETAGEX"))
        return kApeHeaderBytes + loadLittleEndian<std::uint32_t>(head.data() + 12);
    return textOf(head).starts_with("TAG") ? kId3v1Bytes : 0;
}

Result<std::uint64_t> endBeforeTags(ByteSource& source, std::uint64_t start, std::uint64_t end) {
    Tail tail(source, start, end);
    for (std::size_t tags = 0; tags < kMaxTagsInARow; ++tags) {
        const auto bytes = tail.last(std::min(tail.bytes(), kMaxOldLyricsBytes));
        if (!bytes) return bytes.failure();
        TailTag tag;
        for (const auto find : {id3v1, ape, lyrics, appendedId3v2})
            if (tag.bytes == 0) tag = find(*bytes);
        if (tag.bytes == 0) break;
        tail.shorten(tag.bytes <= tail.bytes() ? tag.bytes : tag.visibleBytes);
    }
    return tail.end();
}

}  // namespace atdp::services
